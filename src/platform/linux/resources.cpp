#include "platform/resources.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <array>

#include "install_dirs.hpp"

namespace tidewell {

std::optional<std::string> executablePath() {
    std::array<char, 4096> buffer{};
    const ssize_t length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (length <= 0 || static_cast<std::size_t>(length) >= buffer.size()) {
        return std::nullopt;
    }
    return std::string(buffer.data(), static_cast<std::size_t>(length));
}

std::optional<std::string> executableFolder() {
    std::optional<std::string> found = executablePath();
    if (!found) {
        return std::nullopt;
    }
    std::string path = std::move(*found);
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
        return std::nullopt;
    }
    path.resize(slash == 0 ? 1 : slash);
    return path;
}

std::optional<std::string> locateResource(std::string_view fileName) {
    const std::optional<std::string> folder = executableFolder();
    if (!folder) {
        return std::nullopt;
    }
    const std::string base = *folder == "/" ? "" : *folder;
    for (const std::string& candidate : {base + "/" + std::string(fileName),
                                         base + "/" + kDataFolderFromProgramFolder + "/" + std::string(fileName)}) {
        struct stat st {};
        if (::stat(candidate.c_str(), &st) == 0 && S_ISREG(st.st_mode)) {
            return candidate;
        }
    }
    return std::nullopt;
}

} // namespace tidewell
