#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "base/log.hpp"

namespace tidewell::testing {

/// Collects the texts of the log lines written while it lives (from any thread), without their time and process
/// prefix.
class LogCapture {
public:
    LogCapture()
        : m_previous(setLogSink([this](std::string_view line) {
              const std::size_t end = line.find("] ");
              const std::lock_guard lock(m_mutex);
              m_lines.emplace_back(end == std::string_view::npos ? line : line.substr(end + 2));
          })) {}
    ~LogCapture() { setLogSink(std::move(m_previous)); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    [[nodiscard]] std::vector<std::string> lines() const {
        const std::lock_guard lock(m_mutex);
        return m_lines;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_lines;
    LogSink m_previous;
};

} // namespace tidewell::testing
