#include "cleaning/safe_remove.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <set>
#include <span>

#include "base/folders.hpp"

namespace tidewell {

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

// Open folders kept while emptying a tree; shallower ones are closed and found again through ".." on the way up,
// so a tree of any depth fits within the process's descriptor limit.
constexpr std::size_t kMaxOpenLevels = 32;

bool isDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

bool sameFolder(int fd, dev_t dev, ino_t ino) {
    struct stat st {};
    return ::fstat(fd, &st) == 0 && S_ISDIR(st.st_mode) && st.st_dev == dev && st.st_ino == ino;
}

RemovalRaceHook& raceHook() {
    static RemovalRaceHook hook;
    return hook;
}

void betweenCheckAndOpen(int parentFd, const std::string& name) {
    if (const RemovalRaceHook& hook = raceHook()) {
        hook(parentFd, name);
    }
}

// Empties a folder depth first and removes it. The folder is entered only through descriptors opened without
// following links, each checked to be the folder that was looked at, and never on another file system or mount
// than the granted folder's.
class TreeRemover {
public:
    TreeRemover(int parentFd, const HeldFolder& mount) : m_parentFd(parentFd), m_mount(mount) {}
    TreeRemover(const TreeRemover&) = delete;
    TreeRemover& operator=(const TreeRemover&) = delete;
    ~TreeRemover() {
        for (Level& level : m_levels) {
            if (level.dir != nullptr) {
                ::closedir(level.dir);
            }
        }
    }

    bool remove(const std::string& name, const struct stat& seen) {
        betweenCheckAndOpen(m_parentFd, name);
        const int fd = ::openat(m_parentFd, name.c_str(), kFolderFlags);
        if (fd < 0) {
            // A folder that cannot be read may still be empty and removable.
            return ::unlinkat(m_parentFd, name.c_str(), AT_REMOVEDIR) == 0;
        }
        if (!sameFolder(fd, seen.st_dev, seen.st_ino) || !m_mount.onHeldMount(fd) ||
            !push(fd, seen.st_dev, seen.st_ino, name)) {
            ::close(fd);
            return false;
        }
        while (!m_levels.empty()) {
            if (!step()) {
                return false;
            }
        }
        return m_removedTop;
    }

private:
    struct Level {
        DIR* dir = nullptr; // null while closed to spare descriptors
        dev_t dev = 0;
        ino_t ino = 0;
        std::string name;           // its name in the folder above
        std::set<std::string> kept; // entries that could not be removed, passed over when read again
    };

    // Handles one entry of the deepest open folder, or leaves that folder when it has been read to the end.
    // False ends the whole removal (a folder could not be found again).
    bool step() {
        Level& top = m_levels.back();
        errno = 0;
        const dirent* entry = ::readdir(top.dir);
        if (entry == nullptr) {
            return climb();
        }
        if (isDotOrDotDot(entry->d_name)) {
            return true;
        }
        const std::string name = entry->d_name;
        if (top.kept.contains(name)) {
            return true;
        }
        const int fd = ::dirfd(top.dir);
        struct stat st {};
        if (::fstatat(fd, name.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0) {
            if (errno != ENOENT) {
                top.kept.insert(name);
            }
            return true;
        }
        if (!S_ISDIR(st.st_mode)) {
            if (::unlinkat(fd, name.c_str(), 0) != 0 && errno != ENOENT) {
                top.kept.insert(name);
            }
            return true;
        }
        if (st.st_dev != m_mount.device()) {
            top.kept.insert(name); // a mount point: what lies beyond is not ours to remove
            return true;
        }
        betweenCheckAndOpen(fd, name);
        const int childFd = ::openat(fd, name.c_str(), kFolderFlags);
        if (childFd < 0) {
            if (errno != ENOENT && ::unlinkat(fd, name.c_str(), AT_REMOVEDIR) != 0) {
                top.kept.insert(name);
            }
            return true;
        }
        if (!sameFolder(childFd, st.st_dev, st.st_ino) || !m_mount.onHeldMount(childFd) ||
            !push(childFd, st.st_dev, st.st_ino, name)) {
            ::close(childFd);
            top.kept.insert(name);
        }
        return true;
    }

    bool push(int fd, dev_t dev, ino_t ino, const std::string& name) {
        DIR* dir = ::fdopendir(fd);
        if (dir == nullptr) {
            return false;
        }
        if (m_open == kMaxOpenLevels && closeShallowestFolder(m_levels)) {
            --m_open;
        }
        m_levels.push_back(Level{dir, dev, ino, name, {}});
        ++m_open;
        return true;
    }

    // The deepest folder has been read to the end: remove it from the folder above, finding that one again
    // through ".." when it was closed. A folder found there that is not the one left earlier ends the removal.
    bool climb() {
        Level finished = std::move(m_levels.back());
        m_levels.pop_back();
        int parentFd = m_parentFd;
        if (!m_levels.empty()) {
            Level& parent = m_levels.back();
            if (parent.dir == nullptr && !reopen(::dirfd(finished.dir), parent)) {
                ::closedir(finished.dir);
                --m_open;
                return false;
            }
            parentFd = ::dirfd(parent.dir);
        }
        ::closedir(finished.dir);
        --m_open;
        const bool removed = ::unlinkat(parentFd, finished.name.c_str(), AT_REMOVEDIR) == 0;
        if (m_levels.empty()) {
            m_removedTop = removed;
        } else if (!removed) {
            m_levels.back().kept.insert(finished.name);
        }
        return true;
    }

    // Reopens a closed folder from its child. It is read again from its start: what was removed is gone, and
    // what could not be removed is in its kept set.
    bool reopen(int childFd, Level& level) {
        DIR* dir = reopenFolderAbove(childFd, level.dev, level.ino);
        if (dir == nullptr) {
            return false;
        }
        level.dir = dir;
        ++m_open;
        return true;
    }

    int m_parentFd;
    const HeldFolder& m_mount;
    std::vector<Level> m_levels;
    std::size_t m_open = 0;
    bool m_removedTop = false;
};

} // namespace

LeftReason leftReasonFor(Reach reach, LeftReason otherwise) {
    switch (reach) {
    case Reach::Outside:
        return LeftReason::OutsideBoundary;
    case Reach::ThroughLink:
        return LeftReason::BehindLink;
    case Reach::OtherMount:
        return LeftReason::OtherMount;
    case Reach::Missing:
    case Reach::Unreadable:
        break;
    }
    return otherwise;
}

Removal removeItem(const DeletionBoundary& boundary, const FileUrl& location) {
    const auto leave = [](LeftReason reason) { return Removal{false, reason}; };
    const std::optional<std::vector<std::string>> components = boundary.componentsInside(location.path);
    if (!components) {
        return leave(LeftReason::OutsideBoundary);
    }
    if (!location.within.empty()) {
        // An extension's location goes only from inside its own extensions folder, never the folder itself.
        const std::optional<std::vector<std::string>> folder = boundary.componentsInside(location.within);
        if (!folder || components->size() <= folder->size() ||
            !std::equal(folder->begin(), folder->end(), components->begin())) {
            return leave(LeftReason::OutsideOwnFolder);
        }
    }
    Reach failure = Reach::Missing;
    const UniqueFd parent = boundary.openFolder(std::span(*components).first(components->size() - 1), failure);
    if (!parent.valid()) {
        return failure == Reach::Missing ? Removal{} : leave(leftReasonFor(failure, LeftReason::NotRemovable));
    }
    const std::string& last = components->back();
    struct stat st {};
    if (::fstatat(parent.get(), last.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno == ENOENT ? Removal{} : leave(LeftReason::NotRemovable);
    }
    if (!S_ISDIR(st.st_mode)) {
        if (::unlinkat(parent.get(), last.c_str(), 0) == 0 || errno == ENOENT) {
            return Removal{true, std::nullopt};
        }
        return leave(LeftReason::NotRemovable);
    }
    if (st.st_dev != boundary.device()) {
        return leave(LeftReason::OtherMount);
    }
    TreeRemover remover(parent.get(), boundary);
    return remover.remove(last, st) ? Removal{true, std::nullopt} : leave(LeftReason::NotRemovable);
}

Removal removeItem(const DeletionBoundary& boundary, std::string_view target) {
    return removeItem(boundary, FileUrl{std::string(target)});
}

void removeInto(CleanOutcome& outcome, const DeletionBoundary& boundary, const FileUrl& location) {
    const Removal removal = removeItem(boundary, location);
    if (removal.left) {
        outcome.left.push_back({location.path, *removal.left, {}});
    } else if (removal.removed) {
        outcome.removed.push_back(location.path);
    }
}

void setRemovalRaceHook(RemovalRaceHook hook) {
    raceHook() = std::move(hook);
}

} // namespace tidewell
