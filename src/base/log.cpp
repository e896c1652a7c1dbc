#include "base/log.hpp"

#include <fmt/format.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <mutex>

namespace tidewell {

namespace {

std::mutex& sinkMutex() {
    static std::mutex mutex;
    return mutex;
}

LogSink& currentSink() {
    static LogSink sink;
    return sink;
}

} // namespace

std::string formatLogLine(std::string_view text) {
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto millis = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    std::tm local{};
    ::localtime_r(&seconds, &local);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", &local);
    return fmt::format("{}.{:03} {}[{}:{}] {}", stamp, millis, program_invocation_short_name, ::getpid(),
                       static_cast<long>(::syscall(SYS_gettid)), text);
}

void logLine(std::string_view text) {
    const std::string line = formatLogLine(text);
    std::lock_guard lock(sinkMutex());
    if (const LogSink& sink = currentSink()) {
        sink(line);
    } else {
        std::fprintf(stderr, "%s\n", line.c_str());
        std::fflush(stderr);
    }
}

LogSink setLogSink(LogSink sink) {
    std::lock_guard lock(sinkMutex());
    LogSink previous = std::move(currentSink());
    currentSink() = std::move(sink);
    return previous;
}

} // namespace tidewell
