#include "platform/crash_report.hpp"

#include <cxxabi.h>
#include <execinfo.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <memory>
#include <string>

#include "platform/file_access.hpp"

namespace tidewell {

namespace {

// Everything the handler needs is laid out in static storage beforehand: in a signal handler only a short list
// of system calls is safe, and memory allocation is not among them.
char g_pathPrefix[PATH_MAX];
char g_version[64];
std::atomic<bool> g_reporting{false};
alignas(16) char g_alternateStack[64 * 1024];

constexpr std::array kFatalSignals{SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP, SIGSYS};

const char* signalName(int signo) {
    switch (signo) {
    case SIGSEGV:
        return "SIGSEGV";
    case SIGBUS:
        return "SIGBUS";
    case SIGILL:
        return "SIGILL";
    case SIGFPE:
        return "SIGFPE";
    case SIGABRT:
        return "SIGABRT";
    case SIGTRAP:
        return "SIGTRAP";
    case SIGSYS:
        return "SIGSYS";
    default:
        return "signal";
    }
}

// Appends text to a fixed buffer, cutting it short rather than overflowing.
class FixedText {
public:
    FixedText(char* buffer, std::size_t capacity) : m_buffer(buffer), m_capacity(capacity) { m_buffer[0] = '\0'; }

    FixedText& add(const char* text) {
        while (*text != '\0' && m_length + 1 < m_capacity) {
            m_buffer[m_length++] = *text++;
        }
        m_buffer[m_length] = '\0';
        return *this;
    }

    FixedText& add(unsigned long long number) {
        char digits[24];
        std::size_t count = 0;
        do {
            digits[count++] = static_cast<char>('0' + number % 10);
            number /= 10;
        } while (number != 0);
        char text[24];
        for (std::size_t i = 0; i < count; ++i) {
            text[i] = digits[count - 1 - i];
        }
        text[count] = '\0';
        return add(text);
    }

    [[nodiscard]] const char* text() const { return m_buffer; }
    [[nodiscard]] std::size_t length() const { return m_length; }

private:
    char* m_buffer;
    std::size_t m_capacity;
    std::size_t m_length = 0;
};

void writeText(int fd, const char* text, std::size_t length) {
    while (length > 0) {
        const ssize_t written = ::write(fd, text, length);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return;
        }
        text += written;
        length -= static_cast<std::size_t>(written);
    }
}

// Writes the report. Only async-signal-safe calls: time, getpid, open, write, close, and backtrace,
// which was called once at installation so that it does not load its unwinder (and allocate) here.
void writeReport(const char* reason) {
    const auto seconds = static_cast<unsigned long long>(::time(nullptr));
    const auto pid = static_cast<unsigned long long>(::getpid());

    char pathBuffer[PATH_MAX + 64];
    FixedText path(pathBuffer, sizeof pathBuffer);
    path.add(g_pathPrefix).add(seconds).add("-").add(pid).add(".crash");
    const int fd = ::open(path.text(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) {
        return;
    }
    char headBuffer[1024];
    FixedText head(headBuffer, sizeof headBuffer);
    head.add("Tidewell crash report\nVersion: ").add(g_version).add("\nProcess: ").add(pid);
    head.add("\nTime: ").add(seconds).add(" seconds since 1970\nReason: ").add(reason);
    head.add("\nBacktrace:\n");
    writeText(fd, head.text(), head.length());
    void* frames[64];
    const int count = ::backtrace(frames, 64);
    ::backtrace_symbols_fd(frames, count, fd);
    ::close(fd);
}

void onFatalSignal(int signo, siginfo_t* /*info*/, void* /*context*/) {
    if (!g_reporting.exchange(true)) {
        char reasonBuffer[64];
        FixedText reason(reasonBuffer, sizeof reasonBuffer);
        reason.add("signal ").add(static_cast<unsigned long long>(signo)).add(" (").add(signalName(signo)).add(")");
        writeReport(reason.text());
    }
    // SA_RESETHAND has put back the default action, so the signal raised again ends the process once this handler
    // returns, as it would have without Tidewell's handler (a fault simply happens again).
    ::raise(signo);
}

// Not a signal handler: it runs in the throwing thread, so it may demangle and ask the exception for its text.
void onTerminate() {
    std::string reason = "uncaught exception";
    if (const std::type_info* type = abi::__cxa_current_exception_type()) {
        int status = 0;
        const std::unique_ptr<char, decltype(&std::free)> name(
            abi::__cxa_demangle(type->name(), nullptr, nullptr, &status), &std::free);
        reason += " of type ";
        reason += status == 0 && name ? name.get() : type->name();
        try {
            std::rethrow_exception(std::current_exception());
        } catch (const std::exception& error) {
            reason += ": ";
            reason += error.what();
        } catch (...) {
        }
    } else {
        reason = "terminated without an exception";
    }
    if (!g_reporting.exchange(true)) {
        writeReport(reason.c_str());
    }
    ::signal(SIGABRT, SIG_DFL);
    std::abort();
}

} // namespace

bool installCrashReporter(const std::string& folder, std::string_view version, bool recordExceptions) {
    const std::string prefix = folder + "/" + std::string(kCrashReportPrefix);
    if (prefix.size() >= sizeof g_pathPrefix || !makeFolders(folder)) {
        return false;
    }
    std::memcpy(g_pathPrefix, prefix.c_str(), prefix.size() + 1);
    const std::size_t versionLength = std::min(version.size(), sizeof g_version - 1);
    std::memcpy(g_version, version.data(), versionLength);
    g_version[versionLength] = '\0';

    void* warmUp[4];
    ::backtrace(warmUp, 4);

    // A stack overflow leaves no stack to run the handler on; it gets a stack of its own.
    stack_t alternate{};
    alternate.ss_sp = g_alternateStack;
    alternate.ss_size = sizeof g_alternateStack;
    ::sigaltstack(&alternate, nullptr);

    struct sigaction action {};
    action.sa_sigaction = onFatalSignal;
    action.sa_flags = static_cast<int>(SA_SIGINFO | SA_ONSTACK | SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    for (const int signo : kFatalSignals) {
        ::sigaction(signo, &action, nullptr);
    }
    if (recordExceptions) {
        std::set_terminate(onTerminate);
    }
    return true;
}

} // namespace tidewell
