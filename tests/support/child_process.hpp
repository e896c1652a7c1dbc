#pragma once

#include <grp.h>
#include <signal.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <functional>
#include <string>

namespace tidewell::testing {

/// How a child process ended.
struct ChildEnd {
    bool exited = false; // ended by returning or exiting, not by a signal
    int status = -1;     // its exit status when it exited
    int signal = 0;      // the signal that ended it otherwise

    /// "exit 0", "signal 9 (Killed)": for failure messages.
    [[nodiscard]] std::string text() const {
        return exited ? "exit " + std::to_string(status)
                      : "signal " + std::to_string(signal) + " (" + ::strsignal(signal) + ")";
    }
};

/// Waits for a child process to end.
inline ChildEnd waitForChild(pid_t pid) {
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) {
            return {};
        }
    }
    return WIFEXITED(status) ? ChildEnd{true, WEXITSTATUS(status), 0} : ChildEnd{false, -1, WTERMSIG(status)};
}

/// Runs fn in a child process and returns how the child ended: with fn's result as its exit status when fn
/// returns, by a signal when it crashed. A child still running after `limit` is ended by SIGALRM, so a hang shows
/// as that signal rather than as a test that never ends. With unprivileged, the child gives up the super-user's
/// rights first (it runs as "nobody"), so permissions hold for it. Call it while this process runs no other
/// thread.
inline ChildEnd runInChild(const std::function<int()>& fn, std::chrono::seconds limit, bool unprivileged = false) {
    const pid_t pid = ::fork();
    if (pid < 0) {
        return {};
    }
    if (pid == 0) {
        ::alarm(static_cast<unsigned>(limit.count()));
        if (unprivileged && ::geteuid() == 0 &&
            (::setgroups(0, nullptr) != 0 || ::setgid(65534) != 0 || ::setuid(65534) != 0)) {
            ::_exit(125);
        }
        ::_exit(fn());
    }
    return waitForChild(pid);
}

} // namespace tidewell::testing
