#include "platform/running_apps.hpp"

#include <dirent.h>
#include <unistd.h>

#include <charconv>
#include <cstring>

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
            std::optional<std::string> name = readWholeFile(folder + "/comm", 4096);
            if (!name) {
                continue; // the process ended meanwhile
            }
            if (name->ends_with('\n')) {
                name->pop_back();
            }
            if (!processNames.contains(*name) || running.contains(*name)) {
                continue;
            }
            const std::optional<std::string> status = readWholeFile(folder + "/status", 65536);
            if (status && processUser(*status) == me) {
                running.insert(std::move(*name));
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
