// Times `tidewell-cli scan --json` against `du -s` of the same home on a disk with many cache files, side by
// side, and reports the medians, their ratio and tidewell-cli's peak memory.
//
//   tidewell-bench-scan --cli PATH [--disk DIR] [--files N] [--runs N]
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/disk_builder.hpp"

namespace {

struct Options {
    std::string cli;
    std::string disk = "build/bench-disk";
    std::size_t files = 300000;
    int runs = 5;
};

struct Sample {
    double seconds = 0;
    long peakKiB = 0;
};

// Spreads the files over the browsers' caches and other applications' caches, a hundred to a folder, with sizes
// from empty to a few blocks.
void buildDisk(const Options& options) {
    tidewell::testing::removeTree(options.disk);
    tidewell::testing::DiskBuilder d(options.disk);
    d.allApps();
    d.chromeLocalState({{"Default", "Person 1"}});
    d.folder("Library/Application Support/Firefox/Profiles/ab12.default-release");
    const std::vector<std::pair<std::string, double>> caches{{"Library/Caches/com.apple.Safari", 0.25},
                                                             {"Library/Caches/Google/Chrome/Default/Cache", 0.25},
                                                             {"Library/Caches/Firefox/Profiles/ab12/cache2", 0.15},
                                                             {"Library/Caches/com.example.editor", 0.20},
                                                             {"Library/Caches/com.example.music/blobs", 0.15}};
    std::size_t made = 0;
    unsigned seed = 12345;
    for (std::size_t c = 0; c < caches.size(); ++c) {
        const std::size_t count = c + 1 == caches.size()
                                      ? options.files - made
                                      : static_cast<std::size_t>(static_cast<double>(options.files) * caches[c].second);
        const std::string base = d.at(caches[c].first);
        for (std::size_t i = 0; i < count; ++i) {
            const std::string folder = fmt::format("{}/{:02x}/{:04x}", base, (i / 100) % 256, i / 100);
            if (i % 100 == 0) {
                std::filesystem::create_directories(folder);
            }
            seed = seed * 1103515245U + 12345U;
            const std::size_t size = (seed >> 16U) % 9000;
            const int fd = ::open(fmt::format("{}/f{}", folder, i).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            if (fd >= 0) {
                const std::string bytes(size, 'c');
                if (::write(fd, bytes.data(), bytes.size()) < 0) {
                    std::perror("write");
                }
                ::close(fd);
            }
        }
        made += count;
    }
    d.file("Library/Logs/system.log", 40000);
    std::ofstream(options.disk + "/.complete") << options.files << '\n';
}

bool diskIsReady(const Options& options) {
    std::ifstream marker(options.disk + "/.complete");
    std::size_t files = 0;
    return static_cast<bool>(marker >> files) && files == options.files;
}

Sample timeCommand(const std::vector<std::string>& argv) {
    const auto start = std::chrono::steady_clock::now();
    const pid_t pid = ::fork();
    if (pid == 0) {
        const int devNull = ::open("/dev/null", O_WRONLY);
        ::dup2(devNull, STDOUT_FILENO);
        std::vector<char*> args;
        for (const std::string& arg : argv) {
            args.push_back(const_cast<char*>(arg.c_str()));
        }
        args.push_back(nullptr);
        ::execvp(args[0], args.data());
        ::_exit(127);
    }
    int status = 0;
    rusage usage{};
    ::wait4(pid, &status, 0, &usage);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "%s failed\n", argv[0].c_str());
        std::exit(1);
    }
    return {elapsed.count(), usage.ru_maxrss};
}

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
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
    if (options.cli.empty()) {
        std::fprintf(stderr, "usage: tidewell-bench-scan --cli PATH [--disk DIR] [--files N] [--runs N]\n");
        return 2;
    }
    options.disk = std::filesystem::absolute(options.disk).string();
    if (!diskIsReady(options)) {
        fmt::print("building a disk with {} cache files under {} ...\n", options.files, options.disk);
        std::fflush(stdout);
        buildDisk(options);
    }
    const std::string home = options.disk + "/Users/ann";
    const std::vector<std::string> du{"du", "-s", home};
    const std::vector<std::string> scan{options.cli, "--root", options.disk, "--user", "ann", "scan", "--json"};

    timeCommand(du); // warm the caches of both
    timeCommand(scan);
    std::vector<double> duTimes;
    std::vector<double> scanTimes;
    long peakKiB = 0;
    for (int run = 0; run < options.runs; ++run) {
        duTimes.push_back(timeCommand(du).seconds);
        const Sample sample = timeCommand(scan);
        scanTimes.push_back(sample.seconds);
        peakKiB = std::max(peakKiB, sample.peakKiB);
    }
    const double duMedian = median(duTimes);
    const double scanMedian = median(scanTimes);
    const double ratio = scanMedian / duMedian;
    fmt::print("scan bench: {} cache files, median of {} warm runs\n", options.files, options.runs);
    fmt::print("  du -s                  {:8.3f} s\n", duMedian);
    fmt::print("  tidewell-cli scan      {:8.3f} s\n", scanMedian);
    fmt::print("  ratio (tidewell / du)  {:8.2f}x   target <= 1.00x: {}\n", ratio, ratio <= 1.0 ? "met" : "NOT met");
    fmt::print("  peak memory            {:8.1f} MiB target <= 64 MiB: {}\n", static_cast<double>(peakKiB) / 1024.0,
               peakKiB <= 64 * 1024 ? "met" : "NOT met");
    return 0;
}
