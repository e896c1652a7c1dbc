#include "platform/folder_grant.hpp"

#include <fmt/format.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "platform/file_access.hpp"

namespace tidewell {

std::expected<FolderGrant, std::string> createFolderGrant(std::string_view folder) {
    const std::optional<std::string> real = realPath(folder);
    if (!real) {
        return std::unexpected(fmt::format("{}: {}", folder, std::strerror(errno)));
    }
    struct stat info {};
    if (::lstat(real->c_str(), &info) != 0) {
        return std::unexpected(fmt::format("{}: {}", *real, std::strerror(errno)));
    }
    if (!S_ISDIR(info.st_mode)) {
        return std::unexpected(fmt::format("{}: not a folder", *real));
    }
    return FolderGrant{*real, static_cast<std::uint64_t>(info.st_dev), static_cast<std::uint64_t>(info.st_ino)};
}

std::expected<void, std::string> resolveFolderGrant(const FolderGrant& grant) {
    struct stat info {};
    // lstat: a link put where the folder was is not the folder, even if it points back to it.
    if (::lstat(grant.path.c_str(), &info) != 0) {
        return std::unexpected(fmt::format("{}: {}", grant.path, std::strerror(errno)));
    }
    if (!S_ISDIR(info.st_mode)) {
        return std::unexpected(fmt::format("{}: not a folder", grant.path));
    }
    if (static_cast<std::uint64_t>(info.st_dev) != grant.device ||
        static_cast<std::uint64_t>(info.st_ino) != grant.inode) {
        return std::unexpected(fmt::format("{}: not the granted folder", grant.path));
    }
    return {};
}

} // namespace tidewell
