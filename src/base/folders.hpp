#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/file_url.hpp"

namespace tidewell {

/// An owned file descriptor, closed when it goes.
class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : m_fd(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : m_fd(other.release()) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept;
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    ~UniqueFd();

    [[nodiscard]] int get() const { return m_fd; }
    [[nodiscard]] bool valid() const { return m_fd >= 0; }
    int release() {
        const int fd = m_fd;
        m_fd = -1;
        return fd;
    }

private:
    int m_fd = -1;
};

/// The names in a folder, one level, hidden ones included, in the order the file system gives them ("." and ".."
/// left out). A folder that cannot be listed gives an empty list.
[[nodiscard]] std::vector<std::string> listFolderNames(const std::string& path);

/// The entries of a folder as locations (the folder joined with each name), in listFolderNames' order. Empty when
/// the folder cannot be listed, and when its path holds a NUL byte (cut short there it would name another folder).
[[nodiscard]] std::vector<FileUrl> listFolderUrls(const FileUrl& folder);

/// Whether anything exists at an absolute path, links followed (the presence test made before a location is
/// offered for cleaning). A path that is relative, empty or holds a NUL byte names nothing.
[[nodiscard]] bool fileExistsAt(std::string_view path);

/// A whole regular file, or nothing when it cannot be opened or read. Reads through a link, as any reader of a
/// browser's settings file would; a folder, FIFO or device is unreadable (never waited on), and so is a file
/// larger than maxBytes.
[[nodiscard]] std::optional<std::string> readWholeFile(const std::string& path,
                                                       std::size_t maxBytes = std::size_t{256} << 20U);

} // namespace tidewell
