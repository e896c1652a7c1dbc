#include "platform/file_access.hpp"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>

#include "base/folders.hpp"

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

bool writeAll(int fd, std::string_view text) {
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

} // namespace

std::optional<std::string> realPath(std::string_view path) {
    const std::string copy(path);
    const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(copy.c_str(), nullptr), &std::free);
    if (!resolved) {
        return std::nullopt;
    }
    return std::string(resolved.get());
}

bool fileSystemAllowsWriting(const std::string& path) {
    // The effective ids decide what this process may do, as they do when it actually writes.
    return ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

bool makeFolders(const std::string& path) {
    for (std::size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        const std::string part = path.substr(0, slash);
        if (!part.empty() && ::mkdir(part.c_str(), 0700) != 0 && errno != EEXIST) {
            return false;
        }
        if (slash == std::string::npos) {
            break;
        }
    }
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

std::string userConfigFolder() {
    if (const char* config = std::getenv("XDG_CONFIG_HOME"); config != nullptr && config[0] == '/') {
        return config;
    }
    return homeFolder() + "/.config";
}

bool replaceFileWhole(const std::string& folder, std::string_view name, std::string_view text) {
    if (!makeFolders(folder)) {
        return false;
    }
    const std::string target = folder + "/" + std::string(name);
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

} // namespace tidewell
