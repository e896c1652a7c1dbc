#include "platform/child_program.hpp"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "base/folders.hpp"

extern char** environ; // NOLINT: the environment the program inherits, as POSIX names it

namespace tidewell {

namespace {

struct Pipe {
    UniqueFd read;
    UniqueFd write;
};

// Both ends close on exec, so no other child started meanwhile holds them open; the child's copies made by
// dup2 do not.
std::optional<Pipe> makePipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return std::nullopt;
    }
    return Pipe{UniqueFd(ends[0]), UniqueFd(ends[1])};
}

// Reads both streams as they come: a program that fills one pipe while its reader waits on the other would
// never end.
void collect(int outFd, int errFd, ProgramRun& run) {
    std::array<pollfd, 2> fds{pollfd{outFd, POLLIN, 0}, pollfd{errFd, POLLIN, 0}};
    std::array<std::string*, 2> sinks{&run.out, &run.err};
    std::array<char, 4096> buffer{};
    int open = 2;
    while (open > 0) {
        if (::poll(fds.data(), fds.size(), -1) < 0) {
            if (errno == EINTR) {
                continue;
            }
            return;
        }
        for (std::size_t i = 0; i < fds.size(); ++i) {
            if (fds[i].fd < 0 || fds[i].revents == 0) {
                continue;
            }
            const ssize_t got = ::read(fds[i].fd, buffer.data(), buffer.size());
            if (got > 0) {
                sinks[i]->append(buffer.data(), static_cast<std::size_t>(got));
            } else if (got == 0 || errno != EINTR) {
                fds[i].fd = -1; // poll leaves negative descriptors alone
                --open;
            }
        }
    }
}

} // namespace

std::optional<ProgramRun> runProgram(const std::vector<std::string>& command) {
    if (command.empty()) {
        return std::nullopt;
    }
    std::optional<Pipe> out = makePipe();
    std::optional<Pipe> err = makePipe();
    if (!out || !err) {
        return std::nullopt;
    }
    std::vector<char*> argv;
    argv.reserve(command.size() + 1);
    for (const std::string& argument : command) {
        argv.push_back(const_cast<char*>(argument.c_str())); // posix_spawn's type; it does not write to them
    }
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, out->write.get(), STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, err->write.get(), STDERR_FILENO);
    pid_t pid = 0;
    const int spawned = ::posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        return std::nullopt;
    }
    // Only the child writes now: the reads end when it closes its ends.
    out->write = UniqueFd();
    err->write = UniqueFd();

    ProgramRun run;
    collect(out->read.get(), err->read.get(), run);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) {
            return std::nullopt;
        }
    }
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return run;
}

} // namespace tidewell
