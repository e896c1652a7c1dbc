// Writes the sample disk that `make run` scans: tidewell-sample-disk DIR [LOGIN]. An existing DIR is replaced.
#include <cstdio>
#include <exception>
#include <string>

#include "support/sample_disk.hpp"

int main(int argc, char** argv) {
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "usage: tidewell-sample-disk DIR [LOGIN]\n");
        return 2;
    }
    try {
        const std::string root = argv[1];
        tidewell::testing::removeTree(root);
        tidewell::testing::writeSampleDisk(root, argc == 3 ? argv[2] : "ann");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tidewell-sample-disk: %s\n", error.what());
        return 1;
    }
    return 0;
}
