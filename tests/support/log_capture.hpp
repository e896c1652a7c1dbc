#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/log.hpp"

namespace tidewell::testing {

/// Collects the texts of the log lines written while it lives (from any thread), without their time and process
/// prefix, and which thread wrote each.
class LogCapture {
public:
    LogCapture()
        : m_previous(setLogSink([this](std::string_view line) {
              const std::size_t end = line.find("] ");
              const std::lock_guard lock(m_mutex);
              m_lines.emplace_back(end == std::string_view::npos ? line : line.substr(end + 2));
              m_writers.push_back(std::this_thread::get_id());
          })) {}
    ~LogCapture() { setLogSink(std::move(m_previous)); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    [[nodiscard]] std::vector<std::string> lines() const {
        const std::lock_guard lock(m_mutex);
        return m_lines;
    }

    /// The thread that wrote the first line of that text; nothing while no such line was written.
    [[nodiscard]] std::optional<std::thread::id> writerOf(const std::string& text) const {
        const std::lock_guard lock(m_mutex);
        for (std::size_t i = 0; i < m_lines.size(); ++i) {
            if (m_lines[i] == text) {
                return m_writers[i];
            }
        }
        return std::nullopt;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_lines;
    std::vector<std::thread::id> m_writers;
    LogSink m_previous;
};

} // namespace tidewell::testing
