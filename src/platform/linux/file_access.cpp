#include "platform/file_access.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>

namespace tidewell {

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

} // namespace tidewell
