#pragma once

#include <sqlite3.h>

#include <expected>
#include <memory>
#include <string>
#include <string_view>

#include "base/folders.hpp"
#include "cleaning/clean_outcome.hpp"

namespace tidewell {

/// Why a database in a held folder was not opened, or a step on it failed.
struct DatabaseFailure {
    LeftReason reason = LeftReason::CannotOpen;
    std::string detail;
    bool missing = false; // nothing is there: not a failure to report, a database that was never made
};

/// A connection to another program's SQLite database, reached only through the folder that holds it, which is
/// held open for as long as the connection lives.
///
/// SQLite names the files beside a database (its "-journal", "-wal" and "-shm") after the database's name, and by
/// default makes that name absolute and resolves its links. Here it is given the name "/proc/self/fd/<held
/// folder>/<database>", which a small VFS registered beside the default one leaves as it is: every file SQLite
/// opens, makes or removes for the database is then reached through the held folder itself, so a folder swapped
/// for a link meanwhile changes nothing, and paths of any length work. SQLite itself opens every such file without
/// following a link; on top of that, each file opened under a held folder must be a regular file with a single
/// link (a hard link to a file elsewhere is never written through), or the step fails and says which file it was.
/// Everything else is SQLite's own unix VFS.
class HeldDatabase {
public:
    /// Opens `name` (one plain component) in the folder open at folderFd, for reading and writing, never creating
    /// it; with `readOnly`, for reading only (SQLite's "mode=ro"), as a preview looks. The folder is duplicated and
    /// held until the connection closes. Fails when the database is not there (`missing`), is not a plain file
    /// (NotPlainFile), or SQLite cannot open it.
    [[nodiscard]] static std::expected<HeldDatabase, DatabaseFailure> open(int folderFd, std::string_view name,
                                                                           bool readOnly = false);

    [[nodiscard]] sqlite3* get() const { return m_db.get(); }

    /// Attaches the database `name` of the same held folder under `as` (a plain SQL name), with the same checks as
    /// open: never created, and refused unless it and every journal beside it is a regular file with one link.
    /// Returns false, attaching nothing, when the database is not there. Call it outside a transaction; a write
    /// transaction begun afterwards covers both databases, and a commit makes both changes or neither.
    [[nodiscard]] std::expected<bool, DatabaseFailure> attach(std::string_view name, std::string_view as) const;

    /// What a failed SQLite call on this connection came to: a file refused under the held folder (NotPlainFile,
    /// naming it), or the reason SQLite's result code stands for (busy: Locked; damaged or not a database:
    /// Damaged; read-only: ReadOnly), with SQLite's message.
    [[nodiscard]] DatabaseFailure failure(int resultCode) const;

private:
    // Known to the VFS while a connection lives; let go after the connection has closed.
    class Registration {
    public:
        explicit Registration(int folderFd);
        ~Registration();
        Registration(const Registration&) = delete;
        Registration& operator=(const Registration&) = delete;

    private:
        int m_folderFd;
    };
    struct Closer {
        void operator()(sqlite3* db) const { sqlite3_close_v2(db); }
    };

    HeldDatabase() = default;

    // Members go in reverse order: the connection closes first, then the folder is let go and closed.
    UniqueFd m_folder;
    std::unique_ptr<Registration> m_registration;
    std::unique_ptr<sqlite3, Closer> m_db;
};

} // namespace tidewell
