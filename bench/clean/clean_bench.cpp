// Times the removal of a cache of many files against `rm -rf` of a copy of the same tree, side by side in
// alternating runs: the removal phase alone (the cleaning's removal of that one location, in this process) and
// the whole `tidewell-cli clean` (scan, removal and the scan after it). Both trees are fresh copies of one
// template made with `cp -a` and written out to the disk before each timing.
//
//   tidewell-bench-clean --cli PATH [--disk DIR] [--files N] [--runs N]
#include <fmt/format.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "cleaning/safe_remove.hpp"
#include "common/runs.hpp"
#include "support/disk_builder.hpp"

namespace {

using tidewell::bench::timeCommand;
using tidewell::bench::verdict;

constexpr double kRemovalTarget = 1.1;
constexpr double kCleanTarget = 1.5;

struct Options {
    std::string cli;
    std::string disk = "build/bench-disk";
    std::size_t files = 300000;
    int runs = 3;
};

// The template: a Linux home's ~/.cache of `files` files in several programs' folders, each file at most a
// block or so (the removal's cost is in the entries, not the bytes).
std::string readyTemplate(const Options& options) {
    const std::string root = options.disk + "/clean-template";
    std::size_t files = 0;
    if (std::ifstream marker(root + "/.complete"); marker >> files && files == options.files) {
        return root + "/.cache";
    }
    fmt::print("building a cache of {} files under {} ...\n", options.files, root);
    std::fflush(stdout);
    tidewell::testing::removeTree(root);
    unsigned seed = 777;
    const std::vector<std::string> programs{"google-chrome/Default/Cache/Cache_Data", "mozilla/firefox/x.default/cache2",
                                            "thumbnails/normal", "pip/http"};
    for (std::size_t p = 0; p < programs.size(); ++p) {
        const std::size_t count = p + 1 == programs.size() ? options.files - p * (options.files / programs.size())
                                                           : options.files / programs.size();
        tidewell::bench::writeCacheFiles(root + "/.cache/" + programs[p], count, seed, 4096);
    }
    std::ofstream(root + "/.complete") << options.files << '\n';
    return root + "/.cache";
}

void copyTree(const std::string& from, const std::string& to) {
    tidewell::testing::makeParents(to);
    timeCommand({"cp", "-a", from, to});
}

// Copies the template to both places and writes everything out, so neither timing pays for the other's writes.
void freshCopies(const std::string& cache, const std::string& a, const std::string& b) {
    copyTree(cache, a);
    copyTree(cache, b);
    ::sync();
}

double timeRemoval(const std::string& home) {
    const tidewell::DeletionBoundary boundary(home);
    const auto start = std::chrono::steady_clock::now();
    const tidewell::Removal removal = tidewell::removeItem(boundary, home + "/.cache");
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    if (!removal.removed || std::filesystem::exists(home + "/.cache")) {
        std::fprintf(stderr, "the cache was not removed\n");
        std::exit(1);
    }
    return elapsed.count();
}

void printRatio(const char* what, int runs, double rm, double tidewell, double target) {
    const double ratio = tidewell / rm;
    fmt::print("  {}, median of {}: rm -rf {:.3f} s, tidewell {:.3f} s, ratio {:.2f}x, target <= {:.2f}x: {}\n",
               what, runs, rm, tidewell, ratio, target, verdict(ratio <= target));
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string flag = argv[i];
        const std::string value = argv[i + 1];
        if (flag == "--cli") {
            options.cli = value;
        } else if (flag == "--disk") {
            options.disk = value;
        } else if (flag == "--files") {
            options.files = std::stoul(value);
        } else if (flag == "--runs") {
            options.runs = std::stoi(value);
        }
    }
    if (options.cli.empty() || options.runs < 1 || options.files < 4) {
        std::fprintf(stderr, "usage: tidewell-bench-clean --cli PATH [--disk DIR] [--files N] [--runs N]\n");
        return 2;
    }
    options.disk = std::filesystem::absolute(options.disk).string();
    const std::string cache = readyTemplate(options);
    const std::string root = options.disk + "/clean-disk";
    const std::string home = root + "/home/ann";
    const std::string copy = options.disk + "/clean-copy/.cache";
    tidewell::testing::removeTree(root);
    tidewell::testing::removeTree(options.disk + "/clean-copy");
    std::filesystem::create_directories(home);

    const std::vector<std::string> rm{"rm", "-rf", copy};
    const std::vector<std::string> clean{options.cli, "--root", root, "--user", "ann", "--layout", "linux", "clean",
                                         "--yes"};
    std::vector<double> rmForRemoval;
    std::vector<double> removal;
    std::vector<double> rmForClean;
    std::vector<double> wholeClean;
    for (int run = 0; run < options.runs; ++run) {
        // Which goes first alternates, so that neither always meets the disk the other left.
        const bool rmFirst = run % 2 == 0;
        freshCopies(cache, home + "/.cache", copy);
        if (rmFirst) {
            rmForRemoval.push_back(timeCommand(rm).seconds);
            ::sync();
        }
        removal.push_back(timeRemoval(home));
        ::sync();
        if (!rmFirst) {
            rmForRemoval.push_back(timeCommand(rm).seconds);
            ::sync();
        }

        freshCopies(cache, home + "/.cache", copy);
        if (rmFirst) {
            rmForClean.push_back(timeCommand(rm).seconds);
            ::sync();
        }
        wholeClean.push_back(timeCommand(clean).seconds);
        ::sync();
        if (std::filesystem::exists(home + "/.cache")) {
            std::fprintf(stderr, "tidewell-cli clean left the cache\n");
            return 1;
        }
        if (!rmFirst) {
            rmForClean.push_back(timeCommand(rm).seconds);
            ::sync();
        }
    }
    fmt::print("clean bench, a cache of {} files, warm:\n", options.files);
    printRatio("removal phase", options.runs, tidewell::bench::median(rmForRemoval),
               tidewell::bench::median(removal), kRemovalTarget);
    printRatio("whole clean  ", options.runs, tidewell::bench::median(rmForClean),
               tidewell::bench::median(wholeClean), kCleanTarget);
    tidewell::testing::removeTree(root);
    tidewell::testing::removeTree(options.disk + "/clean-copy");
    return 0;
}
