#pragma once

#include <string>
#include <string_view>

namespace tidewell {

/// Reports are files named "tidewell-crash-<seconds since 1970>-<process id>.crash".
inline constexpr std::string_view kCrashReportPrefix = "tidewell-crash-";
inline constexpr std::string_view kCrashReportSuffix = ".crash";

/// Starts crash reporting for this process. From then on a fatal signal (SIGSEGV, SIGBUS, SIGILL, SIGFPE,
/// SIGABRT, SIGTRAP, SIGSYS), and when recordExceptions is true an uncaught exception, makes the process write
/// one report into folder before it ends as it would have ended without the handler: the version, the process
/// id, the time, what ended it (the signal's number and name, or the exception's type and message) and the
/// backtrace. Reports stay on this computer; nothing is ever sent anywhere.
///
/// The folder (and its parents) is made now, since the handler itself can do nothing that is unsafe in a signal.
/// Returns false, installing nothing, when the folder cannot be made or its path is too long. A second call
/// replaces the folder and the version. A process that crashes again while writing its report writes no second
/// one.
bool installCrashReporter(const std::string& folder, std::string_view version, bool recordExceptions);

} // namespace tidewell
