#pragma once

#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "base/log.hpp"

namespace tidewell::testing {

/// Collects the texts of the log lines written while it lives (from any thread), without their time and process
/// prefix, and which thread wrote each. It can also hold a thread at a line, to look at the rest of the program
/// while that thread is known to be mid-way.
class LogCapture {
public:
    LogCapture()
        : m_previous(setLogSink([this](std::string_view line) {
              const std::size_t end = line.find("] ");
              std::unique_lock lock(m_mutex);
              m_lines.emplace_back(end == std::string_view::npos ? line : line.substr(end + 2));
              m_writers.push_back(std::this_thread::get_id());
              if (!m_holdAt.empty() && m_lines.back() == m_holdAt && std::this_thread::get_id() != m_maker) {
                  m_holding = true;
                  m_released.wait(lock, [this] { return !m_holding; });
              }
          })) {}
    ~LogCapture() {
        release();
        setLogSink(std::move(m_previous));
    }
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

    /// A thread other than the capture's maker that writes a line of this text waits in the log until release(),
    /// and with it every other writer of a log line: hold only where nothing else logs meanwhile.
    void holdAt(std::string text) {
        const std::lock_guard lock(m_mutex);
        m_holdAt = std::move(text);
    }
    /// Whether a thread waits at the held line now.
    [[nodiscard]] bool holding() const {
        const std::lock_guard lock(m_mutex);
        return m_holding;
    }
    /// Lets the held thread go on; no line is held any more.
    void release() {
        {
            const std::lock_guard lock(m_mutex);
            m_holdAt.clear();
            m_holding = false;
        }
        m_released.notify_all();
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_released;
    std::thread::id m_maker = std::this_thread::get_id();
    std::string m_holdAt;
    bool m_holding = false;
    std::vector<std::string> m_lines;
    std::vector<std::thread::id> m_writers;
    LogSink m_previous;
};

} // namespace tidewell::testing
