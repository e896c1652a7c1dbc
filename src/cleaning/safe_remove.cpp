#include "cleaning/safe_remove.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <set>

#include "catalogue/folders.hpp"

namespace tidewell {

std::optional<std::vector<std::string>> normalisedComponents(std::string_view path) {
    if (path.empty() || path.front() != '/') {
        return std::nullopt;
    }
    std::vector<std::string> components;
    std::size_t start = 0;
    while (start <= path.size()) {
        const std::size_t slash = std::min(path.find('/', start), path.size());
        const std::string_view component = path.substr(start, slash - start);
        if (component == "..") {
            if (!components.empty()) {
                components.pop_back();
            }
        } else if (!component.empty() && component != ".") {
            components.emplace_back(component);
        }
        start = slash + 1;
    }
    return components;
}

DeletionBoundary::DeletionBoundary(std::string_view grantedFolder) {
    if (auto components = normalisedComponents(grantedFolder)) {
        m_grantedComponents = std::move(*components);
        m_valid = true;
    }
    for (const std::string& component : m_grantedComponents) {
        m_granted.push_back('/');
        m_granted.append(component);
    }
    if (m_valid && m_granted.empty()) {
        m_granted.push_back('/');
    }
}

std::optional<std::vector<std::string>> DeletionBoundary::componentsInside(std::string_view target) const {
    if (!m_valid) {
        return std::nullopt;
    }
    std::optional<std::vector<std::string>> components = normalisedComponents(target);
    if (!components || components->size() <= m_grantedComponents.size() ||
        !std::equal(m_grantedComponents.begin(), m_grantedComponents.end(), components->begin())) {
        return std::nullopt;
    }
    components->erase(components->begin(),
                      components->begin() + static_cast<std::ptrdiff_t>(m_grantedComponents.size()));
    return components;
}

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

// Where the granted folder lives: its file system and, where the system tells, the mount it is reached through.
// A folder of the same file system mounted a second time inside a ticked folder (a bind mount of a folder from
// elsewhere) has the same device but its own mount, and what lies there is not ours to remove.
class GrantedMount {
public:
    explicit GrantedMount(int grantedFd) {
        struct stat st {};
        m_valid = ::fstat(grantedFd, &st) == 0;
        m_dev = st.st_dev;
        m_mountId = mountIdOf(grantedFd);
    }

    [[nodiscard]] bool valid() const { return m_valid; }
    [[nodiscard]] dev_t device() const { return m_dev; }

    // Whether the folder open at fd is on the granted folder's own mount.
    [[nodiscard]] bool holds(int fd) const {
        struct stat st {};
        if (::fstat(fd, &st) != 0 || st.st_dev != m_dev) {
            return false;
        }
        return !m_mountId || mountIdOf(fd) == m_mountId;
    }

private:
    static std::optional<std::uint64_t> mountIdOf(int fd) {
        struct statx sx {};
        if (::statx(fd, "", AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW, STATX_MNT_ID, &sx) != 0 ||
            (sx.stx_mask & STATX_MNT_ID) == 0) {
            return std::nullopt;
        }
        return sx.stx_mnt_id;
    }

    bool m_valid = false;
    dev_t m_dev = 0;
    std::optional<std::uint64_t> m_mountId;
};

// Empties a folder depth first and removes it. The folder is entered only through descriptors opened without
// following links, each checked to be the folder that was looked at, and never on another file system or mount
// than the granted folder's.
class TreeRemover {
public:
    TreeRemover(int parentFd, const GrantedMount& mount) : m_parentFd(parentFd), m_mount(mount) {}
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
        if (!sameFolder(fd, seen.st_dev, seen.st_ino) || !m_mount.holds(fd) ||
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
        if (!sameFolder(childFd, st.st_dev, st.st_ino) || !m_mount.holds(childFd) ||
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
    const GrantedMount& m_mount;
    std::vector<Level> m_levels;
    std::size_t m_open = 0;
    bool m_removedTop = false;
};

} // namespace

bool removeItem(const DeletionBoundary& boundary, std::string_view target) {
    const std::optional<std::vector<std::string>> components = boundary.componentsInside(target);
    if (!components) {
        return false;
    }
    // The granted folder itself may be reached through a link (it is what the user granted); nothing below it is.
    UniqueFd folder(::open(boundary.grantedFolder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.valid()) {
        return false;
    }
    const GrantedMount granted(folder.get());
    if (!granted.valid()) {
        return false;
    }
    for (std::size_t i = 0; i + 1 < components->size(); ++i) {
        UniqueFd next(::openat(folder.get(), (*components)[i].c_str(), kFolderFlags));
        if (!next.valid() || !granted.holds(next.get())) {
            return false;
        }
        folder = std::move(next);
    }
    const std::string& last = components->back();
    struct stat st {};
    if (::fstatat(folder.get(), last.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0) {
        return false;
    }
    if (!S_ISDIR(st.st_mode)) {
        return ::unlinkat(folder.get(), last.c_str(), 0) == 0;
    }
    if (st.st_dev != granted.device()) {
        return false;
    }
    TreeRemover remover(folder.get(), granted);
    return remover.remove(last, st);
}

void setRemovalRaceHook(RemovalRaceHook hook) {
    raceHook() = std::move(hook);
}

} // namespace tidewell
