#pragma once

#include <grp.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <functional>
#include <optional>

namespace tidewell::testing {

/// Runs fn in a child process without the super-user's right to read anything (as "nobody" when the tests run
/// as root), so that a folder with no permissions is really unreadable. Returns what fn returned, or nothing
/// when the child failed.
inline std::optional<std::int64_t> runUnprivileged(const std::function<std::int64_t()>& fn) {
    int pipeFds[2];
    if (::pipe(pipeFds) != 0) {
        return std::nullopt;
    }
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::close(pipeFds[0]);
        if (::geteuid() == 0 && (::setgroups(0, nullptr) != 0 || ::setgid(65534) != 0 || ::setuid(65534) != 0)) {
            ::_exit(3);
        }
        const std::int64_t value = fn();
        const bool written = ::write(pipeFds[1], &value, sizeof value) == static_cast<ssize_t>(sizeof value);
        ::_exit(written ? 0 : 4);
    }
    ::close(pipeFds[1]);
    std::int64_t value = 0;
    const bool read = pid > 0 && ::read(pipeFds[0], &value, sizeof value) == static_cast<ssize_t>(sizeof value);
    ::close(pipeFds[0]);
    int status = 0;
    if (pid > 0) {
        ::waitpid(pid, &status, 0);
    }
    if (!read || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        return std::nullopt;
    }
    return value;
}

} // namespace tidewell::testing
