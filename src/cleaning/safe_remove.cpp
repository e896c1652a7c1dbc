#include "cleaning/safe_remove.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <set>
#include <span>

#include "base/folder_walk.hpp"

namespace tidewell {

namespace {

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

    bool remove(const std::string& name, const struct stat& seen) {
        betweenCheckAndOpen(m_parentFd, name);
        int error = 0;
        UniqueFd fd = openFolderLookedAt(m_parentFd, name.c_str(), seen, error);
        if (!fd.valid()) {
            // A folder that cannot be read may still be empty and removable.
            return error != ESTALE && ::unlinkat(m_parentFd, name.c_str(), AT_REMOVEDIR) == 0;
        }
        if (!m_mount.onHeldMount(fd.get()) || !m_walk.enter(std::move(fd), seen)) {
            return false;
        }
        m_levels.push_back(Level{name, {}});
        while (m_walk.depth() > 0) {
            const FolderWalk::Event event = m_walk.next();
            switch (event.step) {
            case FolderWalk::Step::Entry:
                removeEntry(event.folderFd, event.name);
                break;
            case FolderWalk::Step::Left:
                // Read to its end or not, the folder is removed if it can be: what stays in it keeps it.
                removeLeftFolder(event.folderFd);
                break;
            case FolderWalk::Step::Failed:
                return false; // a folder could not be found again
            }
        }
        return m_removedTop;
    }

private:
    struct Level {
        std::string name;           // its name in the folder above
        std::set<std::string> kept; // entries that could not be removed, passed over when read again
    };

    void removeEntry(int fd, const std::string& name) {
        std::set<std::string>& kept = m_levels.back().kept;
        if (kept.contains(name)) {
            return;
        }
        struct stat st {};
        if (::fstatat(fd, name.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0) {
            if (errno != ENOENT) {
                kept.insert(name);
            }
            return;
        }
        if (!S_ISDIR(st.st_mode)) {
            if (::unlinkat(fd, name.c_str(), 0) != 0 && errno != ENOENT) {
                kept.insert(name);
            }
            return;
        }
        if (st.st_dev != m_mount.device()) {
            kept.insert(name); // a mount point: what lies beyond is not ours to remove
            return;
        }
        betweenCheckAndOpen(fd, name);
        int error = 0;
        UniqueFd child = openFolderLookedAt(fd, name.c_str(), st, error);
        if (!child.valid()) {
            if (error == ESTALE || (error != ENOENT && ::unlinkat(fd, name.c_str(), AT_REMOVEDIR) != 0)) {
                kept.insert(name);
            }
            return;
        }
        if (!m_mount.onHeldMount(child.get()) || !m_walk.enter(std::move(child), st)) {
            kept.insert(name);
            return;
        }
        m_levels.push_back(Level{name, {}});
    }

    // The deepest folder has been left: remove it from the folder above (open at aboveFd, or the first folder's
    // parent when it was the first).
    void removeLeftFolder(int aboveFd) {
        const Level finished = std::move(m_levels.back());
        m_levels.pop_back();
        const bool removed = ::unlinkat(aboveFd >= 0 ? aboveFd : m_parentFd, finished.name.c_str(), AT_REMOVEDIR) == 0;
        if (m_levels.empty()) {
            m_removedTop = removed;
        } else if (!removed) {
            m_levels.back().kept.insert(finished.name);
        }
    }

    int m_parentFd;
    const HeldFolder& m_mount;
    // Read from the start again when found again: what went is gone, and what stayed is in its level's kept set.
    FolderWalk m_walk{FolderWalk::Reread::FromStart};
    std::vector<Level> m_levels; // beside the walk's open folders, one for one
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
        outcome.removed.push_back({location.path, 0}); // the bytes are not counted yet
    }
}

void setRemovalRaceHook(RemovalRaceHook hook) {
    raceHook() = std::move(hook);
}

} // namespace tidewell
