#pragma once

#include <dirent.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <vector>

#include "base/folders.hpp"

namespace tidewell {

/// One walk down a folder tree, depth first, as measuring, removal and the application search take it. The walk
/// holds the open folders from its first one down to the one being read. It keeps at most `maxOpen` of them
/// open: shallower ones are closed on the way down and found again through ".." on the way back up, checked to
/// be the very folder left there, so a tree of any depth fits within the process's descriptor limit and a
/// folder moved meanwhile is never mistaken for the one left. Folders are entered only through descriptors
/// opened without following a link (see openFolderLookedAt), so a walk never leaves the tree it started in.
///
/// The walk decides nothing about entries: its owner reads them with `next`, and enters the folders it chooses.
class FolderWalk {
public:
    /// The open folders a walk keeps by default.
    static constexpr std::size_t kMaxOpenFolders = 32;

    /// How a folder closed for depth is read once found again: on from the entry where the walk left it (a walk
    /// that only reads), or from its start (a walk that removes what it read: what went is gone, and the owner
    /// passes over what it kept).
    enum class Reread { OnFromWhereLeft, FromStart };

    explicit FolderWalk(Reread reread, std::size_t maxOpen = kMaxOpenFolders);
    /// Closes every folder still open.
    ~FolderWalk();
    FolderWalk(const FolderWalk&) = delete;
    FolderWalk& operator=(const FolderWalk&) = delete;

    /// Goes into a folder: the walk's first, or a folder of the entry `next` gave last. `folder` is open (for a
    /// folder below the first, by openFolderLookedAt) and `seen` is its identity. False when it cannot be read;
    /// the descriptor is closed then.
    bool enter(UniqueFd folder, const struct stat& seen);

    /// What `next` came to.
    enum class Step {
        /// An entry of the deepest folder ("." and ".." are passed over): `name` in the folder open at `folderFd`,
        /// both good until the next call.
        Entry,
        /// The deepest folder was read to its end (`complete`) or up to an entry it could not give (not
        /// `complete`), and is closed. `folderFd` is the folder above it, open again, or -1 when it was the walk's
        /// first folder: the walk is then over.
        Left,
        /// A folder closed for depth could not be found again (it was moved or removed meanwhile): the walk
        /// is over, and what is still open is closed with the walk.
        Failed,
    };
    struct Event {
        Step step = Step::Failed;
        int folderFd = -1;
        const char* name = nullptr;
        bool complete = true;
    };

    /// The next entry of the deepest folder, or the end of that folder. Only while `depth()` is not 0.
    [[nodiscard]] Event next();

    /// How many folders the walk is in (0 before the first is entered and once it has been left).
    [[nodiscard]] std::size_t depth() const { return m_levels.size(); }

private:
    struct Level {
        DIR* dir = nullptr; // null while closed to spare descriptors
        dev_t dev = 0;
        ino_t ino = 0;
        std::size_t consumed = 0; // entries read so far, to find the place again after reopening
    };

    Event leave(bool complete);
    bool reopen(int childFd, Level& level);

    Reread m_reread;
    std::size_t m_maxOpen;
    std::vector<Level> m_levels;
    std::size_t m_open = 0;
};

/// Opens the folder `name` of the folder open at folderFd without following a link, and only when it is still
/// the folder `seen` describes (a look at it a moment before). Otherwise the descriptor is not valid and `error`
/// holds why: the open's errno, or ESTALE when another folder stands there now.
[[nodiscard]] UniqueFd openFolderLookedAt(int folderFd, const char* name, const struct stat& seen, int& error);

} // namespace tidewell
