#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace tidewell::cli {

/// The streams of one run of the command-line tool: the catalogue goes to `out`, log lines and errors to `err`,
/// and answers to questions are read from `in` when `interactive` says a person is there.
struct CliIo {
    std::ostream& out;
    std::ostream& err;
    std::istream& in;
    bool interactive = false;
};

/// Exit statuses of tidewell-cli.
enum ExitCode : int {
    kExitOk = 0,
    kExitFailure = 1,
    kExitUsage = 2,
};

/// Runs `tidewell-cli` with its arguments (without the program name) and returns its exit status.
int runCli(const std::vector<std::string>& args, CliIo& io);

} // namespace tidewell::cli
