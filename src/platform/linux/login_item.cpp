#include "platform/login_item.hpp"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "catalogue/folders.hpp"
#include "platform/file_access.hpp"

namespace tidewell {

namespace {

std::string homeFolder() {
    if (const char* home = std::getenv("HOME"); home != nullptr && home[0] == '/') {
        return home;
    }
    if (const passwd* entry = ::getpwuid(::getuid()); entry != nullptr && entry->pw_dir != nullptr) {
        return entry->pw_dir;
    }
    return "/";
}

bool writeAll(int fd, const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = ::write(fd, text.data() + done, text.size() - done);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        done += static_cast<std::size_t>(written);
    }
    return true;
}

// The entry is written beside its final name and renamed over it, so the session never reads half an entry.
bool writeEntry(const std::string& folder, const std::string& text) {
    if (!makeFolders(folder)) {
        return false;
    }
    const std::string target = folder + "/" + std::string(kLoginItemFileName);
    std::string temporary = target + ".XXXXXX";
    const UniqueFd fd(::mkstemp(temporary.data()));
    if (fd.get() < 0) {
        return false;
    }
    const bool written = writeAll(fd.get(), text) && ::fchmod(fd.get(), 0644) == 0 && ::fsync(fd.get()) == 0;
    if (!written || ::rename(temporary.c_str(), target.c_str()) != 0) {
        ::unlink(temporary.c_str());
        return false;
    }
    return true;
}

} // namespace

std::string defaultAutostartFolder() {
    if (const char* config = std::getenv("XDG_CONFIG_HOME"); config != nullptr && config[0] == '/') {
        return std::string(config) + "/autostart";
    }
    return homeFolder() + "/.config/autostart";
}

bool setLoginItemEnabled(const LoginItemPlace& place, bool on) {
    if (on) {
        return writeEntry(place.autostartFolder, loginItemEntry(place.program));
    }
    const std::string target = place.autostartFolder + "/" + std::string(kLoginItemFileName);
    return ::unlink(target.c_str()) == 0 || errno == ENOENT;
}

} // namespace tidewell
