#include "cleaning/held_database.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <mutex>
#include <optional>
#include <set>

#include "base/file_url.hpp"

namespace tidewell {

namespace {

constexpr std::string_view kFolderPrefix = "/proc/self/fd/";
constexpr const char* kVfsName = "tidewell-held-folder";

// A name this VFS gives out: the held folder's descriptor and one entry in it.
struct HeldName {
    int folder = -1;
    std::string entry;
};

std::optional<HeldName> parseHeldName(std::string_view name) {
    if (!name.starts_with(kFolderPrefix)) {
        return std::nullopt;
    }
    name.remove_prefix(kFolderPrefix.size());
    const std::size_t slash = name.find('/');
    if (slash == std::string_view::npos) {
        return std::nullopt;
    }
    int folder = -1;
    const auto [end, error] = std::from_chars(name.data(), name.data() + slash, folder);
    const std::string_view entry = name.substr(slash + 1);
    if (error != std::errc() || end != name.data() + slash || folder < 0 || !isSingleComponent(entry)) {
        return std::nullopt;
    }
    return HeldName{folder, std::string(entry)};
}

// The folders that connections are open in right now. Only names under these get the plain-file check, so the
// default VFS, which shares SQLite's table of system calls, is otherwise untouched.
class HeldFolders {
public:
    void add(int fd) {
        const std::lock_guard lock(m_mutex);
        m_folders.insert(fd);
    }
    void remove(int fd) {
        const std::lock_guard lock(m_mutex);
        if (const auto found = m_folders.find(fd); found != m_folders.end()) {
            m_folders.erase(found);
        }
    }
    [[nodiscard]] bool contains(int fd) const {
        const std::lock_guard lock(m_mutex);
        return m_folders.contains(fd);
    }

private:
    mutable std::mutex m_mutex;
    std::multiset<int> m_folders;
};

HeldFolders& heldFolders() {
    static HeldFolders folders;
    return folders;
}

// The file last refused under a held folder on this thread, and why. SQLite runs the open on the thread that made
// the call, which then asks why it failed.
thread_local std::string t_refused;

std::optional<std::string> notPlainFile(const std::string& entry, const struct stat& st) {
    if (S_ISLNK(st.st_mode)) {
        return entry + " is a link";
    }
    if (!S_ISREG(st.st_mode)) {
        return entry + " is not a regular file";
    }
    if (st.st_nlink != 1) {
        return fmt::format("{} has {} links", entry, st.st_nlink);
    }
    return std::nullopt;
}

using OpenCall = int (*)(const char*, int, int);
OpenCall g_systemOpen = nullptr;

// SQLite's own open, for every file its unix VFS opens. A name under a held folder is opened relative to that very
// folder (as the kernel would through the /proc name, but checked): without following a link, and kept only when
// it is a regular file with one link, looked at before the open and again on the descriptor itself, so a hard link
// swapped in between is caught too. Any other name goes to the system as before.
int openUnderHeldFolder(const char* path, int flags, int mode) {
    const std::optional<HeldName> held = parseHeldName(path);
    if (!held || !heldFolders().contains(held->folder)) {
        return g_systemOpen(path, flags, mode);
    }
    struct stat st {};
    if (::fstatat(held->folder, held->entry.c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0) {
        if (std::optional<std::string> refused = notPlainFile(held->entry, st)) {
            t_refused = std::move(*refused);
            errno = EPERM;
            return -1;
        }
    }
    const int fd =
        ::openat(held->folder, held->entry.c_str(), flags | O_NOFOLLOW | O_CLOEXEC, static_cast<mode_t>(mode));
    if (fd < 0) {
        return fd;
    }
    std::optional<std::string> refused =
        ::fstat(fd, &st) == 0 ? notPlainFile(held->entry, st) : std::optional<std::string>(held->entry);
    if (refused) {
        t_refused = std::move(*refused);
        ::close(fd);
        errno = EPERM;
        return -1;
    }
    return fd;
}

// The name is kept as given: resolving it, as the default VFS does, would turn the held folder back into a path.
int fullPathname(sqlite3_vfs* /*vfs*/, const char* name, int size, char* out) {
    const std::size_t length = std::strlen(name);
    if (!parseHeldName(name) || length + 1 > static_cast<std::size_t>(size)) {
        return SQLITE_CANTOPEN;
    }
    std::memcpy(out, name, length + 1);
    return SQLITE_OK;
}

sqlite3_vfs* systemVfs() {
    static sqlite3_vfs* const vfs = sqlite3_vfs_find("unix");
    return vfs;
}

int openFile(sqlite3_vfs* /*vfs*/, const char* name, sqlite3_file* file, int flags, int* outFlags) {
    // Temporary files (no name) are SQLite's own business; with temp_store=MEMORY there are none.
    if (name != nullptr) {
        const std::optional<HeldName> held = parseHeldName(name);
        if (!held || !heldFolders().contains(held->folder)) {
            return SQLITE_CANTOPEN;
        }
    }
    return systemVfs()->xOpen(systemVfs(), name, file, flags, outFlags);
}

int deleteFile(sqlite3_vfs* /*vfs*/, const char* name, int syncFolder) {
    const std::optional<HeldName> held = parseHeldName(name);
    if (!held || !heldFolders().contains(held->folder)) {
        return SQLITE_IOERR_DELETE;
    }
    if (::unlinkat(held->folder, held->entry.c_str(), 0) != 0) {
        return errno == ENOENT ? SQLITE_IOERR_DELETE_NOENT : SQLITE_IOERR_DELETE;
    }
    if ((syncFolder & 1) != 0 && ::fsync(held->folder) != 0 && errno != EINVAL) {
        return SQLITE_IOERR_DIR_FSYNC;
    }
    return SQLITE_OK;
}

int accessFile(sqlite3_vfs* /*vfs*/, const char* name, int flags, int* result) {
    *result = 0;
    const std::optional<HeldName> held = parseHeldName(name);
    if (!held || !heldFolders().contains(held->folder)) {
        return SQLITE_OK;
    }
    struct stat st {};
    if (::fstatat(held->folder, held->entry.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0) {
        return SQLITE_OK;
    }
    if (flags == SQLITE_ACCESS_EXISTS) {
        // As the default VFS answers: an empty journal is no journal.
        *result = !S_ISREG(st.st_mode) || st.st_size > 0 ? 1 : 0;
    } else if (!S_ISLNK(st.st_mode)) {
        const int wanted = flags == SQLITE_ACCESS_READWRITE ? R_OK | W_OK : R_OK;
        *result = ::faccessat(held->folder, held->entry.c_str(), wanted, 0) == 0 ? 1 : 0;
    }
    return SQLITE_OK;
}

// Registered once, beside the default VFS and never instead of it.
const char* heldFolderVfs() {
    static std::once_flag once;
    static sqlite3_vfs vfs{};
    std::call_once(once, [] {
        sqlite3_vfs* system = systemVfs();
        vfs = *system;
        vfs.zName = kVfsName;
        vfs.pNext = nullptr;
        vfs.xOpen = openFile;
        vfs.xDelete = deleteFile;
        vfs.xAccess = accessFile;
        vfs.xFullPathname = fullPathname;
        // The -shm file is opened by the unix VFS's own code, from the database's name, not through xOpen: its
        // system call is the one place every file of a held folder passes.
        g_systemOpen = reinterpret_cast<OpenCall>(system->xGetSystemCall(system, "open"));
        system->xSetSystemCall(system, "open", reinterpret_cast<sqlite3_syscall_ptr>(openUnderHeldFolder));
        sqlite3_vfs_register(&vfs, 0);
    });
    return kVfsName;
}

// Refuses a database that is not a regular file with one link, or whose journal, log or shared memory beside it is
// not, before SQLite makes or writes any of them. (SQLite's own open of each checks again, on the very descriptor.)
// Missing: `missing` set.
std::optional<DatabaseFailure> refusedInFolder(int folderFd, const std::string& entry) {
    if (!isSingleComponent(entry)) {
        return DatabaseFailure{LeftReason::CannotOpen, "not a file name", false};
    }
    struct stat st {};
    if (::fstatat(folderFd, entry.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno == ENOENT) {
            return DatabaseFailure{LeftReason::CannotOpen, {}, true};
        }
        return DatabaseFailure{LeftReason::CannotOpen, std::strerror(errno), false};
    }
    if (std::optional<std::string> refused = notPlainFile(entry, st)) {
        return DatabaseFailure{LeftReason::NotPlainFile, std::move(*refused), false};
    }
    for (const char* suffix : {"-journal", "-wal", "-shm"}) {
        const std::string beside = entry + suffix;
        if (::fstatat(folderFd, beside.c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0) {
            if (std::optional<std::string> refused = notPlainFile(beside, st)) {
                return DatabaseFailure{LeftReason::NotPlainFile, std::move(*refused), false};
            }
        }
    }
    return std::nullopt;
}

// A URI for SQLite of a name in a held folder: every byte beyond the unreserved ones is percent-encoded, and the
// database is opened for reading and writing, never made.
std::string writableUri(const std::string& heldName) {
    std::string uri = "file:";
    for (const char c : heldName) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') || c == '/' ||
            c == '-' || c == '.' || c == '_' || c == '~') {
            uri += c;
        } else {
            uri += fmt::format("%{:02X}", byte);
        }
    }
    return uri + "?mode=rw";
}

} // namespace

HeldDatabase::Registration::Registration(int folderFd) : m_folderFd(folderFd) {
    heldFolders().add(m_folderFd);
}

HeldDatabase::Registration::~Registration() {
    heldFolders().remove(m_folderFd);
}

namespace {

// A path as the path of a file: URI, the characters that URIs give a meaning written as "%XX".
std::string uriPath(const std::string& path) {
    std::string encoded;
    for (const char c : path) {
        if (c == '%' || c == '?' || c == '#') {
            encoded += fmt::format("%{:02X}", static_cast<unsigned char>(c));
        } else {
            encoded += c;
        }
    }
    return encoded;
}

} // namespace

std::expected<HeldDatabase, DatabaseFailure> HeldDatabase::open(int folderFd, std::string_view name, bool readOnly) {
    const std::string entry(name);
    if (std::optional<DatabaseFailure> refused = refusedInFolder(folderFd, entry)) {
        return std::unexpected(std::move(*refused));
    }
    HeldDatabase held;
    held.m_folder = UniqueFd(::fcntl(folderFd, F_DUPFD_CLOEXEC, 3));
    if (!held.m_folder.valid()) {
        return std::unexpected(DatabaseFailure{LeftReason::CannotOpen, std::strerror(errno), false});
    }
    held.m_registration = std::make_unique<Registration>(held.m_folder.get());
    const std::string heldName = fmt::format("{}{}/{}", kFolderPrefix, held.m_folder.get(), entry);
    t_refused.clear();
    sqlite3* db = nullptr;
    int rc = SQLITE_OK;
    if (readOnly) {
        // Read only ("mode=ro"). Without a log or shared memory beside it nothing else has the database open, and
        // it is read as it stands ("immutable"), so that not even those two files are made.
        struct stat st {};
        bool besideFiles = false;
        for (const char* suffix : {"-wal", "-shm"}) {
            besideFiles = besideFiles || ::fstatat(folderFd, (entry + suffix).c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0;
        }
        const std::string uri = fmt::format("file:{}?mode=ro{}", uriPath(heldName), besideFiles ? "" : "&immutable=1");
        rc = sqlite3_open_v2(uri.c_str(), &db, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, heldFolderVfs());
    } else {
        // URI names are understood for the databases attached later; this name is a plain one (it starts with "/").
        rc = sqlite3_open_v2(heldName.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_URI, heldFolderVfs());
    }
    held.m_db.reset(db);
    if (rc != SQLITE_OK) {
        return std::unexpected(held.failure(rc));
    }
    return held;
}

std::expected<bool, DatabaseFailure> HeldDatabase::attach(std::string_view name, std::string_view as) const {
    const std::string entry(name);
    if (std::optional<DatabaseFailure> refused = refusedInFolder(m_folder.get(), entry)) {
        if (refused->missing) {
            return false;
        }
        return std::unexpected(std::move(*refused));
    }
    sqlite3_stmt* raw = nullptr;
    const std::string sql = fmt::format("ATTACH ?1 AS {}", as);
    int rc = sqlite3_prepare_v2(m_db.get(), sql.c_str(), -1, &raw, nullptr);
    const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> attaching(raw, &sqlite3_finalize);
    if (rc == SQLITE_OK) {
        const std::string uri = writableUri(fmt::format("{}{}/{}", kFolderPrefix, m_folder.get(), entry));
        t_refused.clear();
        sqlite3_bind_text(raw, 1, uri.c_str(), -1, SQLITE_TRANSIENT);
        rc = sqlite3_step(raw);
    }
    if (rc != SQLITE_DONE) {
        DatabaseFailure failed = failure(rc);
        // The database vanished between the look and the open: there is nothing to attach.
        failed.missing = (rc & 0xFF) == SQLITE_CANTOPEN &&
                         ::faccessat(m_folder.get(), entry.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) != 0 && errno == ENOENT;
        if (failed.missing) {
            return false;
        }
        return std::unexpected(std::move(failed));
    }
    return true;
}

DatabaseFailure HeldDatabase::failure(int resultCode) const {
    if (!t_refused.empty()) {
        DatabaseFailure refused{LeftReason::NotPlainFile, std::move(t_refused), false};
        t_refused.clear();
        return refused;
    }
    std::string message = m_db ? sqlite3_errmsg(m_db.get()) : sqlite3_errstr(resultCode);
    switch (resultCode & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return {LeftReason::Locked, std::move(message), false};
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return {LeftReason::Damaged, std::move(message), false};
    case SQLITE_READONLY:
    case SQLITE_PERM:
        return {LeftReason::ReadOnly, std::move(message), false};
    default:
        return {LeftReason::CannotOpen, std::move(message), false};
    }
}

} // namespace tidewell
