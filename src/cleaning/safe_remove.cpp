#include "cleaning/safe_remove.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
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

// The entry `name` of a folder's node in a place set, or null.
const PlaceSet::Node* placeBelow(const PlaceSet::Node* node, const std::string& name) {
    if (node == nullptr) {
        return nullptr;
    }
    const auto found = node->below.find(name);
    return found == node->below.end() ? nullptr : &found->second;
}

std::uint64_t allocatedBytes(const struct stat& st) {
    return static_cast<std::uint64_t>(st.st_blocks) * 512;
}

// Empties a folder depth first and removes it. The folder is entered only through descriptors opened without
// following links, each checked to be the folder that was looked at, and never on another file system or mount
// than the granted folder's. Kept places stay, with the folders on the way to them. A dry remover walks the same
// way and unlinks nothing: it counts what would go.
class TreeRemover {
public:
    TreeRemover(int parentFd, const HeldFolder& mount, bool dry)
        : m_parentFd(parentFd), m_mount(mount), m_dry(dry),
          m_walk(dry ? FolderWalk::Reread::OnFromWhereLeft : FolderWalk::Reread::FromStart) {}

    bool remove(const std::string& name, const struct stat& seen, const PlaceSet::Node* keep,
                const PlaceSet::Node* gone) {
        betweenCheckAndOpen(m_parentFd, name);
        int error = 0;
        UniqueFd fd = openFolderLookedAt(m_parentFd, name.c_str(), seen, error);
        if (!fd.valid()) {
            // A folder that cannot be read may still be empty and removable.
            return error != ESTALE && !m_dry && unlinkAt(m_parentFd, name.c_str(), AT_REMOVEDIR);
        }
        if (!m_mount.onHeldMount(fd.get()) || !m_walk.enter(std::move(fd), seen)) {
            return false;
        }
        m_levels.push_back(Level{name, {}, false, keep, gone});
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

    [[nodiscard]] std::uint64_t bytes() const { return m_bytes; }
    [[nodiscard]] bool anythingWent() const { return m_anythingWent; }
    [[nodiscard]] std::vector<std::string> takeKept() { return std::move(m_keptPlaces); }

private:
    struct Level {
        std::string name;                     // its name in the folder above
        std::set<std::string> kept;           // entries that stay, passed over when read again
        bool stays = false;                   // something in it stays (a dry walk's verdict on the folder)
        const PlaceSet::Node* keep = nullptr; // the kept places at or below it, or null
        const PlaceSet::Node* gone = nullptr; // for a dry walk, what it already counted as gone below it, or null
    };

    static void stay(Level& level, const std::string& name) {
        level.kept.insert(name);
        level.stays = true;
    }

    // Unlinks, or for a dry walk says it would.
    bool unlinkAt(int fd, const char* name, int flags) {
        if (!m_dry && ::unlinkat(fd, name, flags) != 0) {
            return false;
        }
        m_anythingWent = true;
        return true;
    }

    void removeEntry(int fd, const std::string& name) {
        Level& level = m_levels.back();
        if (level.kept.contains(name)) {
            return;
        }
        const PlaceSet::Node* keep = placeBelow(level.keep, name);
        if (keep != nullptr && keep->whole) {
            stay(level, name);
            m_keptPlaces.push_back(keep->location);
            return;
        }
        const PlaceSet::Node* gone = placeBelow(level.gone, name);
        if (gone != nullptr && gone->whole) {
            if (keep != nullptr) {
                stay(level, name); // counted already, but for the kept place inside, which keeps it
            }
            return;
        }
        struct stat st {};
        if (::fstatat(fd, name.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0) {
            if (errno != ENOENT) {
                stay(level, name);
            }
            return;
        }
        if (!S_ISDIR(st.st_mode)) {
            if (keep != nullptr) {
                stay(level, name); // it stands where the folder of a kept place would be: it is not ours
            } else if (unlinkAt(fd, name.c_str(), 0)) {
                m_bytes += allocatedBytes(st);
            } else if (errno != ENOENT) {
                stay(level, name);
            }
            return;
        }
        if (st.st_dev != m_mount.device()) {
            stay(level, name); // a mount point: what lies beyond is not ours to remove
            return;
        }
        betweenCheckAndOpen(fd, name);
        int error = 0;
        UniqueFd child = openFolderLookedAt(fd, name.c_str(), st, error);
        if (!child.valid()) {
            if (error == ESTALE || (error != ENOENT && (m_dry || !unlinkAt(fd, name.c_str(), AT_REMOVEDIR)))) {
                stay(level, name);
            }
            return;
        }
        if (!m_mount.onHeldMount(child.get()) || !m_walk.enter(std::move(child), st)) {
            stay(level, name);
            return;
        }
        m_levels.push_back(Level{name, {}, false, keep, gone});
    }

    // The deepest folder has been left: remove it from the folder above (open at aboveFd, or the first folder's
    // parent when it was the first).
    void removeLeftFolder(int aboveFd) {
        const Level finished = std::move(m_levels.back());
        m_levels.pop_back();
        // A dry walk counts a folder as going when nothing in it stays.
        const bool removed = m_dry ? !finished.stays
                                   : unlinkAt(aboveFd >= 0 ? aboveFd : m_parentFd, finished.name.c_str(), AT_REMOVEDIR);
        if (m_levels.empty()) {
            m_removedTop = removed;
        } else if (!removed) {
            stay(m_levels.back(), finished.name);
        }
    }

    int m_parentFd;
    const HeldFolder& m_mount;
    bool m_dry;
    // Removing, a folder found again is read from the start: what went is gone, and what stayed is in its level's
    // kept set. A dry walk goes on from where it left the folder.
    FolderWalk m_walk;
    std::vector<Level> m_levels; // beside the walk's open folders, one for one
    bool m_removedTop = false;
    bool m_anythingWent = false;
    std::uint64_t m_bytes = 0;
    std::vector<std::string> m_keptPlaces;
};

// Whether the file open at fd begins as a SQLite database does; an empty file is one as well, as SQLite sees it.
bool looksLikeDatabase(int fd, const struct stat& st) {
    if (st.st_size == 0) {
        return true;
    }
    static constexpr std::string_view kHeader("SQLite format 3\0", 16);
    std::array<char, 16> head{};
    return ::pread(fd, head.data(), head.size(), 0) == static_cast<ssize_t>(head.size()) &&
           std::string_view(head.data(), head.size()) == kHeader;
}

// Whether the plain file `name` in the folder open at parentFd is a SQLite database. It is opened without
// following a link, without blocking, and only when it is still the file looked at.
bool isDatabaseFile(int parentFd, const std::string& name, const struct stat& seen) {
    if (!S_ISREG(seen.st_mode)) {
        return false;
    }
    const UniqueFd fd(::openat(parentFd, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    struct stat st {};
    return fd.valid() && ::fstat(fd.get(), &st) == 0 && st.st_dev == seen.st_dev && st.st_ino == seen.st_ino &&
           looksLikeDatabase(fd.get(), st);
}

// The files SQLite keeps beside a database, which may hold what the database held.
constexpr std::array<std::string_view, 3> kCompanionSuffixes{"-wal", "-shm", "-journal"};

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

namespace {

// Whether a preview counted the place as gone already: it lies at or in a place counted, and no kept place lies
// between that one and it.
bool countedAsGone(const std::vector<std::string>& components, const PlaceSet& kept, const PlaceSet& gone) {
    const PlaceSet::Node* keep = kept.find({});
    const PlaceSet::Node* went = gone.find({});
    bool counted = false;
    for (const std::string& component : components) {
        keep = placeBelow(keep, component);
        went = placeBelow(went, component);
        if (keep != nullptr && keep->whole) {
            counted = false;
        } else if (went != nullptr && went->whole) {
            counted = true;
        }
    }
    return counted;
}

Removal removeOrPreview(const DeletionBoundary& boundary, const FileUrl& location, const PlaceSet& kept,
                        const PlaceSet& gone, bool dry) {
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
    if (dry && countedAsGone(*components, kept, gone)) {
        return Removal{};
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
    const PlaceSet::Node* keep = kept.find(*components);
    if (keep != nullptr && (keep->whole || !S_ISDIR(st.st_mode))) {
        Removal removal = leave(LeftReason::UntickedInside);
        removal.kept.push_back(keep->whole ? keep->location : location.path);
        return removal;
    }
    if (!S_ISDIR(st.st_mode)) {
        const bool database = isDatabaseFile(parent.get(), last, st);
        if (!dry && ::unlinkat(parent.get(), last.c_str(), 0) != 0) {
            return errno == ENOENT ? Removal{} : leave(LeftReason::NotRemovable);
        }
        Removal removal{true, std::nullopt};
        removal.bytes = allocatedBytes(st);
        if (database) {
            for (const std::string_view suffix : kCompanionSuffixes) {
                const std::string companion = last + std::string(suffix);
                struct stat beside {};
                if (::fstatat(parent.get(), companion.c_str(), &beside, AT_SYMLINK_NOFOLLOW) != 0 ||
                    S_ISDIR(beside.st_mode)) {
                    continue;
                }
                std::vector<std::string> companionPath = *components;
                companionPath.back() = companion;
                if (const PlaceSet::Node* keptCompanion = kept.find(companionPath);
                    keptCompanion != nullptr && keptCompanion->whole) {
                    continue;
                }
                if (dry && countedAsGone(companionPath, kept, gone)) {
                    continue;
                }
                if (dry || ::unlinkat(parent.get(), companion.c_str(), 0) == 0) {
                    removal.bytes += allocatedBytes(beside);
                    removal.companions.push_back(location.path + std::string(suffix));
                } else if (errno != ENOENT) {
                    removal.left = LeftReason::NotRemovable; // the database went, but not all of what held its data
                }
            }
        }
        return removal;
    }
    if (st.st_dev != boundary.device()) {
        return leave(LeftReason::OtherMount);
    }
    TreeRemover remover(parent.get(), boundary, dry);
    const bool removedAll = remover.remove(last, st, keep, dry ? gone.find(*components) : nullptr);
    Removal removal{removedAll, std::nullopt};
    removal.bytes = remover.bytes();
    removal.kept = remover.takeKept();
    if (!removedAll) {
        removal.left = removal.kept.empty() ? LeftReason::NotRemovable : LeftReason::UntickedInside;
        removal.someWent = remover.anythingWent();
    }
    return removal;
}

} // namespace

PlaceSet::PlaceSet(const DeletionBoundary& boundary, const UrlList& places) {
    for (const FileUrl& place : places) {
        add(boundary, place.path);
    }
}

void PlaceSet::add(const DeletionBoundary& boundary, const std::string& place) {
    const std::optional<std::vector<std::string>> components = boundary.componentsInside(place);
    if (!components) {
        return; // nothing outside the boundary is ever removed: there is nothing to keep there
    }
    Node* node = &m_root;
    for (const std::string& component : *components) {
        node = &node->below[component];
    }
    if (!node->whole) {
        node->whole = true;
        node->location = place;
    }
}

const PlaceSet::Node* PlaceSet::find(const std::vector<std::string>& components) const {
    const Node* node = &m_root;
    for (const std::string& component : components) {
        const auto found = node->below.find(component);
        if (found == node->below.end()) {
            return nullptr;
        }
        node = &found->second;
    }
    return node;
}

Removal removeItem(const DeletionBoundary& boundary, const FileUrl& location, const PlaceSet& kept) {
    return removeOrPreview(boundary, location, kept, {}, false);
}

bool countedAsGone(const DeletionBoundary& boundary, const std::string& place, const PlaceSet& kept,
                   const PlaceSet& gone) {
    const std::optional<std::vector<std::string>> components = boundary.componentsInside(place);
    return components && countedAsGone(*components, kept, gone);
}

Removal removeItem(const DeletionBoundary& boundary, std::string_view target) {
    return removeItem(boundary, FileUrl{std::string(target)});
}

Removal previewRemoval(const DeletionBoundary& boundary, const FileUrl& location, const PlaceSet& kept,
                       const PlaceSet& gone) {
    return removeOrPreview(boundary, location, kept, gone, true);
}

void removeInto(CleanOutcome& outcome, const DeletionBoundary& boundary, const FileUrl& location,
                const PlaceSet& kept) {
    const Removal removal = removeItem(boundary, location, kept);
    noteRemoval(outcome, location, removal);
}

void noteRemoval(CleanOutcome& outcome, const FileUrl& location, const Removal& removal) {
    if (removal.removed) {
        outcome.removed.push_back({location.path, removal.bytes});
    }
    if (!removal.left) {
        return;
    }
    if (*removal.left != LeftReason::UntickedInside) {
        if (removal.someWent) {
            outcome.removed.push_back({location.path, removal.bytes, false});
        }
        outcome.left.push_back({location.path, *removal.left, {}});
        return;
    }
    if (removal.someWent) {
        // Emptied around what stays: the rest went.
        outcome.removed.push_back({location.path, removal.bytes, false});
    }
    for (const std::string& place : removal.kept) {
        outcome.left.push_back(
            {place, LeftReason::UntickedInside, place == location.path ? std::string() : "inside " + location.path});
    }
}

void setRemovalRaceHook(RemovalRaceHook hook) {
    raceHook() = std::move(hook);
}

} // namespace tidewell
