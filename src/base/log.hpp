#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace tidewell {

/// Where log lines go: standard error unless replaced (the command-line tool's tests give their own stream).
using LogSink = std::function<void(std::string_view line)>;

/// Writes one diagnostic line, shaped "2026-11-21 10:00:00.123 tidewell[4242:4243] Safari Deleted": local time
/// to the millisecond, the program's name, process and thread ids, then the fixed text. No levels. Safe to call
/// from any thread; lines never interleave.
void logLine(std::string_view text);

/// The whole line logLine writes for text, without its newline (for tests of the shape).
[[nodiscard]] std::string formatLogLine(std::string_view text);

/// Replaces the sink and returns the previous one; an empty sink restores standard error.
LogSink setLogSink(LogSink sink);

} // namespace tidewell
