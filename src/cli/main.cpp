#include <unistd.h>

#include <iostream>

#include "cli/cli.hpp"

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    tidewell::cli::CliIo io{std::cout, std::cerr, std::cin, ::isatty(STDIN_FILENO) == 1};
    return tidewell::cli::runCli(args, io);
}
