#include "support/tree_checksums.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace tidewell::testing {

namespace {

// FNV-1a: enough to tell changed bytes from unchanged ones in a test's tree.
std::uint64_t checksumOf(int fd) {
    std::uint64_t hash = 14695981039346656037ULL;
    char buffer[65536];
    ssize_t n = 0;
    while ((n = ::read(fd, buffer, sizeof buffer)) > 0) {
        for (ssize_t i = 0; i < n; ++i) {
            hash = (hash ^ static_cast<unsigned char>(buffer[i])) * 1099511628211ULL;
        }
    }
    return n < 0 ? 0 : hash;
}

std::string describe(int folderFd, const char* name, const struct stat& st) {
    const std::string owner =
        " " + std::to_string(st.st_mode & 07777) + " " + std::to_string(st.st_uid) + ":" + std::to_string(st.st_gid);
    switch (st.st_mode & S_IFMT) {
    case S_IFDIR:
        return "folder" + owner;
    case S_IFLNK: {
        std::string target(4096, '\0');
        const ssize_t n = ::readlinkat(folderFd, name, target.data(), target.size());
        target.resize(n < 0 ? 0 : static_cast<std::size_t>(n));
        return "link -> " + target;
    }
    case S_IFREG: {
        const int fd = ::openat(folderFd, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        const std::uint64_t sum = fd < 0 ? 0 : checksumOf(fd);
        if (fd >= 0) {
            ::close(fd);
        }
        return "file" + owner + " " + std::to_string(st.st_size) + " bytes, " + (fd < 0 ? "unreadable" : "sum ") +
               std::to_string(sum);
    }
    case S_IFCHR:
    case S_IFBLK:
        return std::string(S_ISCHR(st.st_mode) ? "character" : "block") + " device " +
               std::to_string(major(st.st_rdev)) + ":" + std::to_string(minor(st.st_rdev)) + owner;
    case S_IFIFO:
        return "fifo" + owner;
    case S_IFSOCK:
        return "socket" + owner;
    default:
        return "other" + owner;
    }
}

} // namespace

std::map<std::string, std::string> treeChecksums(const std::string& root, const SkipEntry& skip) {
    std::map<std::string, std::string> entries;
    struct Level {
        DIR* dir;
        std::string prefix;
    };
    const int rootFd = ::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* rootDir = rootFd < 0 ? nullptr : ::fdopendir(rootFd);
    if (rootDir == nullptr) {
        return entries;
    }
    std::vector<Level> levels{{rootDir, ""}};
    while (!levels.empty()) {
        const dirent* entry = ::readdir(levels.back().dir);
        if (entry == nullptr) {
            ::closedir(levels.back().dir);
            levels.pop_back();
            continue;
        }
        const char* name = entry->d_name;
        if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) {
            continue;
        }
        const std::string relative = levels.back().prefix + name;
        if (skip && skip(relative)) {
            continue;
        }
        const int folderFd = ::dirfd(levels.back().dir);
        struct stat st {};
        if (::fstatat(folderFd, name, &st, AT_SYMLINK_NOFOLLOW) != 0) {
            entries[relative] = "vanished while looked at";
            continue;
        }
        entries[relative] = describe(folderFd, name, st);
        if (S_ISDIR(st.st_mode)) {
            const int childFd = ::openat(folderFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            DIR* child = childFd < 0 ? nullptr : ::fdopendir(childFd);
            if (child == nullptr) {
                entries[relative] += ", unreadable";
                continue;
            }
            levels.push_back({child, relative + "/"});
        }
    }
    return entries;
}

std::string treeDifferences(const std::map<std::string, std::string>& before,
                            const std::map<std::string, std::string>& after) {
    std::string lines;
    for (const auto& [path, was] : before) {
        const auto now = after.find(path);
        if (now == after.end()) {
            lines += "gone: " + path + " (" + was + ")\n";
        } else if (now->second != was) {
            lines += "changed: " + path + " (" + was + " -> " + now->second + ")\n";
        }
    }
    for (const auto& [path, is] : after) {
        if (!before.contains(path)) {
            lines += "new: " + path + " (" + is + ")\n";
        }
    }
    return lines;
}

} // namespace tidewell::testing
