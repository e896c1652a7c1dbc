// What the benchmarks share: running a command as a child and timing it with its peak memory, dropping the page
// cache before a cold run, writing many cache files, and medians.
#pragma once

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace tidewell::bench {

/// One run of a child: its wall time, the CPU time it spent (user and system, so cpu / seconds tells how many
/// cores it kept busy) and its peak resident memory, as wait4 reports them.
struct Sample {
    double seconds = 0;
    double cpuSeconds = 0;
    long peakKiB = 0;
};

inline double seconds(const timeval& t) {
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6;
}

/// Runs argv with its standard output thrown away and times it; a child that fails ends the benchmark, since a
/// ratio against a failed run means nothing.
inline Sample timeCommand(const std::vector<std::string>& argv) {
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
        std::string line;
        for (const std::string& arg : argv) {
            line += arg + " ";
        }
        std::fprintf(stderr, "failed: %s\n", line.c_str());
        std::exit(1);
    }
    return {elapsed.count(), seconds(usage.ru_utime) + seconds(usage.ru_stime), usage.ru_maxrss};
}

/// Whether this process may drop the page cache (it runs as root and the kernel offers the switch).
inline bool canDropCaches() {
    return ::geteuid() == 0 && ::access("/proc/sys/vm/drop_caches", W_OK) == 0;
}

/// Writes dirty pages out and drops the page cache, dentries and inodes, so the next run reads the disk.
inline void dropCaches() {
    ::sync();
    const int fd = ::open("/proc/sys/vm/drop_caches", O_WRONLY);
    if (fd < 0 || ::write(fd, "3\n", 2) != 2) {
        std::perror("drop_caches");
        std::exit(1);
    }
    ::close(fd);
}

inline double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values.empty() ? 0.0 : values[values.size() / 2];
}

/// Writes `count` files below `base`, a hundred to a folder in two levels of folders as caches keep them, with
/// sizes from empty to just under `maxBytes` drawn from `seed`.
inline void writeCacheFiles(const std::string& base, std::size_t count, unsigned& seed, std::size_t maxBytes = 9000) {
    const std::string bytes(maxBytes, 'c');
    for (std::size_t i = 0; i < count; ++i) {
        const std::string folder = fmt::format("{}/{:02x}/{:04x}", base, (i / 100) % 256, i / 100);
        if (i % 100 == 0) {
            std::filesystem::create_directories(folder);
        }
        seed = seed * 1103515245U + 12345U;
        const std::size_t size = (seed >> 16U) % bytes.size();
        const int fd = ::open(fmt::format("{}/f{}", folder, i).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (fd < 0) {
            std::perror("open");
            std::exit(1);
        }
        if (::write(fd, bytes.data(), size) < 0) {
            std::perror("write");
        }
        ::close(fd);
    }
}

inline std::string verdict(bool met) {
    return met ? "met" : "NOT met";
}

} // namespace tidewell::bench
