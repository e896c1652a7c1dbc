// Writes the sample disk that `make run` scans: tidewell-sample-disk [--layout linux|macos] DIR [LOGIN]. An
// existing DIR is replaced. The layout is macOS unless named.
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "sample_disk/sample_disk.hpp"

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    const tidewell::DiskLayout* layout = &tidewell::macosLayout();
    if (args.size() >= 2 && args[0] == "--layout") {
        layout = tidewell::layoutNamed(args[1]);
        args.erase(args.begin(), args.begin() + 2);
    }
    if (layout == nullptr || args.empty() || args.size() > 2) {
        std::fprintf(stderr, "usage: tidewell-sample-disk [--layout linux|macos] DIR [LOGIN]\n");
        return 2;
    }
    try {
        tidewell::testing::removeTree(args[0]);
        tidewell::testing::writeSampleDisk(args[0], args.size() == 2 ? args[1] : "ann", *layout);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tidewell-sample-disk: %s\n", error.what());
        return 1;
    }
    return 0;
}
