// Times `tidewell-cli scan --json` against `du -s` of the same home, side by side in alternating runs, on two
// homes of many cache files: a macOS home (the caches under ~/Library/Caches) and a Linux one (mostly under
// ~/.cache). Each is timed warm and, when the benchmark may drop the page cache (as root), cold; it reports the
// medians, their ratios, how many cores the scan kept busy and its peak memory.
//
//   tidewell-bench-scan --cli PATH [--disk DIR] [--files N] [--runs N] [--cold-runs N]
#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "common/runs.hpp"
#include "support/disk_builder.hpp"

namespace {

using tidewell::bench::Sample;
using tidewell::bench::timeCommand;
using tidewell::bench::verdict;

constexpr double kWarmTarget = 0.6;
constexpr double kColdTarget = 1.0;
constexpr long kPeakTargetKiB = 64 * 1024;

struct Options {
    std::string cli;
    std::string disk = "build/bench-disk";
    std::size_t files = 300000;
    int runs = 5;
    int coldRuns = 3;
};

// Where a home keeps its cache files, with the share of the files each holds.
using Shares = std::vector<std::pair<std::string, double>>;

void writeShares(tidewell::testing::DiskBuilder& d, const Shares& shares, std::size_t files) {
    std::size_t made = 0;
    unsigned seed = 12345;
    for (std::size_t c = 0; c < shares.size(); ++c) {
        const std::size_t count = c + 1 == shares.size()
                                      ? files - made
                                      : static_cast<std::size_t>(static_cast<double>(files) * shares[c].second);
        tidewell::bench::writeCacheFiles(d.at(shares[c].first), count, seed);
        made += count;
    }
}

void buildMacosDisk(const std::string& root, std::size_t files) {
    tidewell::testing::DiskBuilder d(root);
    d.allApps();
    d.chromeLocalState({{"Default", "Person 1"}});
    d.folder("Library/Application Support/Firefox/Profiles/ab12.default-release");
    writeShares(d, {{"Library/Caches/com.apple.Safari", 0.25},
                    {"Library/Caches/Google/Chrome/Default/Cache", 0.25},
                    {"Library/Caches/Firefox/Profiles/ab12/cache2", 0.15},
                    {"Library/Caches/com.example.editor", 0.20},
                    {"Library/Caches/com.example.music/blobs", 0.15}},
                files);
    d.file("Library/Logs/system.log", 40000);
}

// Nine tenths under ~/.cache (browsers, thumbnails, other programs), the rest in Chrome's service worker caches,
// which stay in its profile under ~/.config.
void buildLinuxDisk(const std::string& root, std::size_t files) {
    tidewell::testing::DiskBuilder d(root, "ann", tidewell::linuxLayout());
    d.chromeLocalState({{"Default", "Person 1"}}, ".config/google-chrome");
    d.text(".mozilla/firefox/profiles.ini",
           "[Profile0]\nName=default-release\nIsRelative=1\nPath=ab12.default-release\nDefault=1\n");
    d.folder(".mozilla/firefox/ab12.default-release");
    writeShares(d, {{".cache/google-chrome/Default/Cache/Cache_Data", 0.25},
                    {".cache/mozilla/firefox/ab12.default-release/cache2/entries", 0.15},
                    {".cache/thumbnails/normal", 0.10},
                    {".cache/pip/http", 0.20},
                    {".cache/com.example.music/blobs", 0.20},
                    {".config/google-chrome/Default/Service Worker/CacheStorage", 0.10}},
                files);
    d.file(".xsession-errors", 40000);
}

struct Layout {
    std::string name;
    std::string homes;
    void (*build)(const std::string&, std::size_t);
};

// A disk is kept between runs of the benchmark; the marker says how many files it was built with.
std::string readyDisk(const Options& options, const Layout& layout) {
    const std::string root = options.disk + "/" + layout.name;
    std::size_t files = 0;
    if (std::ifstream marker(root + "/.complete"); marker >> files && files == options.files) {
        return root;
    }
    fmt::print("building a {} disk with {} cache files under {} ...\n", layout.name, options.files, root);
    std::fflush(stdout);
    tidewell::testing::removeTree(root);
    layout.build(root, options.files);
    std::ofstream(root + "/.complete") << options.files << '\n';
    return root;
}

struct Figures {
    double du = 0;
    double scan = 0;
    double cores = 0;
    long peakKiB = 0;

    [[nodiscard]] double ratio() const { return scan / du; }
};

// du and the scan in turn, `runs` times, each after a drop of the page cache when cold.
Figures timeSideBySide(const std::vector<std::string>& du, const std::vector<std::string>& scan, int runs,
                       bool cold, long& peakKiB) {
    std::vector<double> duTimes;
    std::vector<double> scanTimes;
    std::vector<double> cores;
    for (int run = 0; run < runs; ++run) {
        if (cold) {
            tidewell::bench::dropCaches();
        }
        duTimes.push_back(timeCommand(du).seconds);
        if (cold) {
            tidewell::bench::dropCaches();
        }
        const Sample sample = timeCommand(scan);
        scanTimes.push_back(sample.seconds);
        cores.push_back(sample.cpuSeconds / sample.seconds);
        peakKiB = std::max(peakKiB, sample.peakKiB);
    }
    return {tidewell::bench::median(duTimes), tidewell::bench::median(scanTimes), tidewell::bench::median(cores),
            peakKiB};
}

void printFigures(const char* what, int runs, const Figures& f, double target) {
    fmt::print("  {}, median of {}: du -s {:.3f} s, tidewell-cli scan {:.3f} s ({:.1f} cores busy), "
               "ratio {:.2f}x, target <= {:.2f}x: {}\n",
               what, runs, f.du, f.scan, f.cores, f.ratio(), target, verdict(f.ratio() <= target));
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
        } else if (flag == "--cold-runs") {
            options.coldRuns = std::stoi(value);
        }
    }
    if (options.cli.empty() || options.runs < 1) {
        std::fprintf(stderr, "usage: tidewell-bench-scan --cli PATH [--disk DIR] [--files N] [--runs N] "
                             "[--cold-runs N]\n");
        return 2;
    }
    options.disk = std::filesystem::absolute(options.disk).string();
    const bool cold = tidewell::bench::canDropCaches();

    const std::vector<Layout> layouts{{"macos", "/Users", buildMacosDisk}, {"linux", "/home", buildLinuxDisk}};
    std::vector<double> warmRatios;
    for (const Layout& layout : layouts) {
        const std::string root = readyDisk(options, layout);
        const std::string home = root + layout.homes + "/ann";
        const std::vector<std::string> du{"du", "-s", home};
        const std::vector<std::string> scan{options.cli, "--root", root, "--user", "ann",
                                            "--layout", layout.name, "scan", "--json"};
        timeCommand(du); // warms the caches for both
        timeCommand(scan);
        long peakKiB = 0;
        const Figures warm = timeSideBySide(du, scan, options.runs, false, peakKiB);
        fmt::print("scan bench, {} home of {} cache files:\n", layout.name, options.files);
        printFigures("warm", options.runs, warm, kWarmTarget);
        if (cold && options.coldRuns > 0) {
            const Figures coldFigures = timeSideBySide(du, scan, options.coldRuns, true, peakKiB);
            printFigures("cold", options.coldRuns, coldFigures, kColdTarget);
        }
        fmt::print("  peak memory of the scan {:.1f} MiB, target <= 64 MiB: {}\n",
                   static_cast<double>(peakKiB) / 1024.0, verdict(peakKiB <= kPeakTargetKiB));
        std::fflush(stdout);
        warmRatios.push_back(warm.ratio());
    }
    if (!cold) {
        fmt::print("  cold runs skipped: dropping the page cache needs root (/proc/sys/vm/drop_caches)\n");
    }
    fmt::print("  linux warm ratio {:.2f}x at or below the macos one {:.2f}x: {}\n", warmRatios[1], warmRatios[0],
               verdict(warmRatios[1] <= warmRatios[0]));
    return 0;
}
