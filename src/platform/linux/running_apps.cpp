#include "platform/running_apps.hpp"

#include <dirent.h>
#include <unistd.h>

#include <charconv>
#include <cstring>
#include <string_view>
#include <vector>

#include "base/folders.hpp"

namespace tidewell {

namespace {

// The real user id of a process, from the "Uid:" line of its status. The owner of /proc/<pid> is not used: a
// process that makes itself non-dumpable, as browsers' sandboxes do, shows as owned by root there.
std::optional<uid_t> processUser(const std::string& status) {
    const std::size_t line = status.find("\nUid:");
    if (line == std::string::npos) {
        return std::nullopt;
    }
    const char* first = status.c_str() + line + 5;
    const char* end = status.c_str() + status.size();
    while (first < end && (*first == ' ' || *first == '\t')) {
        ++first;
    }
    uid_t uid = 0;
    const auto [ptr, error] = std::from_chars(first, end, uid);
    if (error != std::errc{} || ptr == first) {
        return std::nullopt;
    }
    return uid;
}

std::string baseName(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

// The names a process goes by: the name the kernel keeps for it (comm, which a program may change, as Firefox
// does to "GeckoMain"), the base name of its executable, and the base name of its argv[0] (a wrapper script's
// exec keeps the program's own name there).
std::vector<std::string> processNamesOf(const std::string& folder) {
    std::vector<std::string> names;
    if (std::optional<std::string> comm = readWholeFile(folder + "/comm", 4096)) {
        if (comm->ends_with('\n')) {
            comm->pop_back();
        }
        names.push_back(std::move(*comm));
    }
    std::string exe(4096, '\0');
    const ssize_t length = ::readlink((folder + "/exe").c_str(), exe.data(), exe.size());
    if (length > 0) {
        exe.resize(static_cast<std::size_t>(length));
        // An executable replaced while it runs shows as "<path> (deleted)".
        constexpr std::string_view kDeleted = " (deleted)";
        if (exe.ends_with(kDeleted)) {
            exe.resize(exe.size() - kDeleted.size());
        }
        names.push_back(baseName(exe));
    }
    if (const std::optional<std::string> cmdline = readWholeFile(folder + "/cmdline", 65536)) {
        names.push_back(baseName(std::string_view(cmdline->c_str())));
    }
    return names;
}

class ProcRunningApplications final : public RunningApplications {
public:
    [[nodiscard]] std::set<std::string> runningAmong(const std::set<std::string>& processNames) const override {
        std::set<std::string> running;
        const uid_t me = ::getuid();
        for (const std::string& entry : listFolderNames("/proc")) {
            if (entry.empty() || entry.find_first_not_of("0123456789") != std::string::npos) {
                continue;
            }
            const std::string folder = "/proc/" + entry;
            std::vector<std::string> names = processNamesOf(folder);
            std::erase_if(names, [&](const std::string& name) {
                return !processNames.contains(name) || running.contains(name);
            });
            if (names.empty()) {
                continue; // none of the names looked for, or the process ended meanwhile
            }
            const std::optional<std::string> status = readWholeFile(folder + "/status", 65536);
            if (status && processUser(*status) == me) {
                running.insert(std::make_move_iterator(names.begin()), std::make_move_iterator(names.end()));
            }
        }
        return running;
    }
};

} // namespace

std::unique_ptr<RunningApplications> systemRunningApplications() {
    return std::make_unique<ProcRunningApplications>();
}

} // namespace tidewell
