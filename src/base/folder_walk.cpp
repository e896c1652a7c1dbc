#include "base/folder_walk.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace tidewell {

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

bool isDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

bool isFolder(int fd, dev_t dev, ino_t ino) {
    struct stat st {};
    return ::fstat(fd, &st) == 0 && S_ISDIR(st.st_mode) && st.st_dev == dev && st.st_ino == ino;
}

} // namespace

UniqueFd openFolderLookedAt(int folderFd, const char* name, const struct stat& seen, int& error) {
    UniqueFd fd(::openat(folderFd, name, kFolderFlags));
    if (!fd.valid()) {
        error = errno;
        return fd;
    }
    if (!isFolder(fd.get(), seen.st_dev, seen.st_ino)) {
        error = ESTALE;
        return {};
    }
    error = 0;
    return fd;
}

FolderWalk::FolderWalk(Reread reread, std::size_t maxOpen) : m_reread(reread), m_maxOpen(maxOpen) {}

FolderWalk::~FolderWalk() {
    for (Level& level : m_levels) {
        if (level.dir != nullptr) {
            ::closedir(level.dir);
        }
    }
}

bool FolderWalk::enter(UniqueFd folder, const struct stat& seen) {
    DIR* dir = ::fdopendir(folder.get());
    if (dir == nullptr) {
        return false;
    }
    folder.release();
    if (m_open == m_maxOpen) {
        // The shallowest open folder is closed; it is found again from its child on the way back up.
        for (Level& level : m_levels) {
            if (level.dir != nullptr) {
                ::closedir(level.dir);
                level.dir = nullptr;
                --m_open;
                break;
            }
        }
    }
    m_levels.push_back(Level{dir, seen.st_dev, seen.st_ino, 0});
    ++m_open;
    return true;
}

FolderWalk::Event FolderWalk::next() {
    Level& top = m_levels.back();
    while (true) {
        errno = 0;
        const dirent* entry = ::readdir(top.dir);
        if (entry == nullptr) {
            return leave(errno == 0);
        }
        ++top.consumed;
        if (!isDotOrDotDot(entry->d_name)) {
            return Event{Step::Entry, ::dirfd(top.dir), entry->d_name, true};
        }
    }
}

FolderWalk::Event FolderWalk::leave(bool complete) {
    const Level finished = m_levels.back();
    m_levels.pop_back();
    Event event{Step::Left, -1, nullptr, complete};
    if (!m_levels.empty()) {
        Level& parent = m_levels.back();
        if (parent.dir == nullptr && !reopen(::dirfd(finished.dir), parent)) {
            event.step = Step::Failed;
        } else {
            event.folderFd = ::dirfd(parent.dir);
        }
    }
    ::closedir(finished.dir);
    --m_open;
    return event;
}

bool FolderWalk::reopen(int childFd, Level& level) {
    UniqueFd fd(::openat(childFd, "..", kFolderFlags));
    if (!fd.valid() || !isFolder(fd.get(), level.dev, level.ino)) {
        return false;
    }
    DIR* dir = ::fdopendir(fd.get());
    if (dir == nullptr) {
        return false;
    }
    fd.release();
    if (m_reread == Reread::OnFromWhereLeft) {
        std::size_t skipped = 0;
        while (skipped < level.consumed && ::readdir(dir) != nullptr) {
            ++skipped;
        }
    } else {
        level.consumed = 0;
    }
    level.dir = dir;
    ++m_open;
    return true;
}

} // namespace tidewell
