#include "base/folders.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

namespace tidewell {

UniqueFd& UniqueFd::operator=(UniqueFd&& other) noexcept {
    if (this != &other) {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
        m_fd = other.release();
    }
    return *this;
}

UniqueFd::~UniqueFd() {
    if (m_fd >= 0) {
        ::close(m_fd);
    }
}

std::vector<std::string> listFolderNames(const std::string& path) {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR*)> dir(::opendir(path.c_str()), ::closedir);
    if (!dir) {
        return names;
    }
    while (const dirent* entry = ::readdir(dir.get())) {
        // Every name a path is later built from passes the one check of names from outside data.
        if (isSingleComponent(entry->d_name)) {
            names.emplace_back(entry->d_name);
        }
    }
    return names;
}

std::vector<FileUrl> listFolderUrls(const FileUrl& folder) {
    std::vector<FileUrl> urls;
    if (folder.path.find('\0') != std::string::npos) {
        return urls;
    }
    for (const std::string& name : listFolderNames(folder.path)) {
        urls.push_back(folder.appending(name));
    }
    return urls;
}

bool fileExistsAt(std::string_view path) {
    if (path.empty() || path.front() != '/' || path.find('\0') != std::string_view::npos) {
        return false;
    }
    struct stat st {};
    return ::stat(std::string(path).c_str(), &st) == 0;
}

std::optional<std::string> readWholeFile(const std::string& path, std::size_t maxBytes) {
    const UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!fd.valid()) {
        return std::nullopt;
    }
    struct stat st {};
    if (::fstat(fd.get(), &st) != 0 || !S_ISREG(st.st_mode)) {
        return std::nullopt;
    }
    std::string contents;
    char buffer[65536];
    while (true) {
        const ssize_t n = ::read(fd.get(), buffer, sizeof buffer);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return std::nullopt;
        }
        if (n == 0) {
            return contents;
        }
        if (contents.size() + static_cast<std::size_t>(n) > maxBytes) {
            return std::nullopt;
        }
        contents.append(buffer, static_cast<std::size_t>(n));
    }
}

} // namespace tidewell
