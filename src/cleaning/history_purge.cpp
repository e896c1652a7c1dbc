#include "cleaning/history_purge.hpp"

#include <sqlite3.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "base/log.hpp"
#include "cleaning/held_database.hpp"

namespace tidewell {

namespace {

struct StatementFinalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

Statement prepare(sqlite3* db, const std::string& sql, int& rc) {
    sqlite3_stmt* statement = nullptr;
    rc = sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr);
    if (rc != SQLITE_OK) {
        sqlite3_finalize(statement);
        return nullptr;
    }
    return Statement(statement);
}

int run(sqlite3* db, const char* sql) {
    return sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
}

// Whether LIKE finds anything in a BLOB with this SQLite (builds differ): a BLOB URL matches as LIKE would have
// matched it.
bool likeMatchesBlobs(sqlite3* db) {
    int rc = SQLITE_OK;
    const Statement probe = prepare(db, "SELECT x'61' LIKE '%a%'", rc);
    return probe && sqlite3_step(probe.get()) == SQLITE_ROW && sqlite3_column_int(probe.get(), 0) == 1;
}

// The journal mode the database keeps in its file ("wal"), or the one this connection starts with.
std::expected<bool, int> isWalDatabase(sqlite3* db) {
    int rc = SQLITE_OK;
    const Statement mode = prepare(db, "PRAGMA journal_mode", rc);
    if (!mode) {
        return std::unexpected(rc);
    }
    rc = sqlite3_step(mode.get());
    if (rc != SQLITE_ROW) {
        return std::unexpected(rc);
    }
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(mode.get(), 0));
    return text != nullptr && sqlite3_stricmp(text, "wal") == 0;
}

struct Purged {
    std::int64_t rows = 0;
    bool stillReadable = false;
};

// The rows of the table whose URL holds a word, by their 64-bit row ids; an error code when the table cannot be
// read to its end.
std::expected<std::vector<std::int64_t>, int> matchingRows(sqlite3* db, const HistorySchema& history,
                                                           const WordMatcher& matcher) {
    const bool blobs = likeMatchesBlobs(db);
    int rc = SQLITE_OK;
    const Statement rows = prepare(db, "SELECT rowid, url FROM " + std::string(history.table), rc);
    if (!rows) {
        return std::unexpected(rc);
    }
    std::vector<std::int64_t> found;
    while ((rc = sqlite3_step(rows.get())) == SQLITE_ROW) {
        const int type = sqlite3_column_type(rows.get(), 1);
        if (type == SQLITE_NULL || (type == SQLITE_BLOB && !blobs)) {
            continue;
        }
        // As LIKE reads a value: its text up to the first NUL.
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(rows.get(), 1));
        if (text != nullptr && matcher.matchesAny(std::string_view(text, std::strlen(text)))) {
            found.push_back(sqlite3_column_int64(rows.get(), 0));
        }
    }
    if (rc != SQLITE_DONE) {
        return std::unexpected(rc);
    }
    return found;
}

// The purge of one open database, all or nothing: any step that fails rolls the transaction back and says why.
std::expected<Purged, DatabaseFailure> purgeOpenDatabase(const HeldDatabase& held, const HistorySchema& history,
                                                         const WordMatcher& matcher) {
    sqlite3* db = held.get();
    // A history database is another program's file: no longer than this is waited for while it holds a lock.
    sqlite3_busy_timeout(db, static_cast<int>(kHistoryBusyTimeout.count()));
    // Removed rows are overwritten, not just unlinked from the table's pages; nothing is written to temporary
    // files outside the database's folder.
    if (const int rc = run(db, "PRAGMA secure_delete=ON; PRAGMA temp_store=MEMORY"); rc != SQLITE_OK) {
        return std::unexpected(held.failure(rc));
    }
    if (sqlite3_db_readonly(db, "main") == 1) {
        return std::unexpected(DatabaseFailure{LeftReason::ReadOnly, "opened read-only", false});
    }
    const std::expected<bool, int> wal = isWalDatabase(db);
    if (!wal) {
        return std::unexpected(held.failure(wal.error()));
    }
    // Without WAL the old pages go to a rollback journal, which this connection removes at the commit rather than
    // keeping it (as PERSIST or TRUNCATE would, with the removed visits inside).
    if (!*wal) {
        if (const int rc = run(db, "PRAGMA journal_mode=DELETE"); rc != SQLITE_OK) {
            return std::unexpected(held.failure(rc));
        }
    }
    // The write lock is taken first, so a browser holding the database costs one short wait and changes nothing.
    if (const int rc = run(db, "BEGIN IMMEDIATE"); rc != SQLITE_OK) {
        return std::unexpected(held.failure(rc));
    }
    const auto rollBack = [&](int rc) {
        DatabaseFailure failure = held.failure(rc);
        run(db, "ROLLBACK");
        return std::unexpected(std::move(failure));
    };
    const std::expected<std::vector<std::int64_t>, int> found = matchingRows(db, history, matcher);
    if (!found) {
        return rollBack(found.error());
    }
    Purged purged;
    if (!found->empty()) {
        int rc = SQLITE_OK;
        const Statement remove = prepare(db, "DELETE FROM " + std::string(history.table) + " WHERE rowid = ?1", rc);
        if (!remove) {
            return rollBack(rc);
        }
        for (const std::int64_t row : *found) {
            sqlite3_bind_int64(remove.get(), 1, row);
            if (rc = sqlite3_step(remove.get()); rc != SQLITE_DONE) {
                return rollBack(rc);
            }
            purged.rows += sqlite3_changes64(db);
            sqlite3_reset(remove.get());
        }
    }
    if (const int rc = run(db, "COMMIT"); rc != SQLITE_OK) {
        return rollBack(rc);
    }
    if (purged.rows > 0 && *wal) {
        // Old copies of the removed rows' pages stay in the log, and in the database's own pages, until the log is
        // copied back and cut to nothing; a reader's open snapshot holds that off.
        int logFrames = 0;
        int copiedFrames = 0;
        const int rc = sqlite3_wal_checkpoint_v2(db, "main", SQLITE_CHECKPOINT_TRUNCATE, &logFrames, &copiedFrames);
        purged.stillReadable = rc != SQLITE_OK || logFrames != 0;
    }
    return purged;
}

std::string folderOf(const std::string& path) {
    std::string folder = path;
    while (folder.size() > 1 && folder.back() == '/') {
        folder.pop_back();
    }
    const std::size_t slash = folder.rfind('/');
    return slash == std::string::npos ? std::string() : folder.substr(0, slash == 0 ? 1 : slash);
}

// Purges a database that opened; the connection closes when this returns. With no words there is nothing to look
// for, which is done at once.
std::expected<Purged, DatabaseFailure> purgeDatabase(HeldDatabase database, const HistorySchema& history,
                                                     const AdultWords& words) {
    if (!words || words->matcher().empty()) {
        return Purged{};
    }
    return purgeOpenDatabase(database, history, words->matcher());
}

} // namespace

CleanOutcome purgeHistory(const HistorySchema& history, const FileUrl& path, const PurgeContext& context) {
    CleanOutcome outcome;
    const std::optional<std::vector<std::string>> components = context.boundary.componentsInside(path.path);
    if (!components) {
        outcome.left.push_back({path.path, LeftReason::OutsideBoundary, {}});
        return outcome;
    }
    Reach failure = Reach::Missing;
    const UniqueFd folder = context.boundary.openFolder(std::span(*components).first(components->size() - 1), failure);
    if (!folder.valid()) {
        // A browser that never ran has no folder: there is nothing to purge, and nothing to say.
        if (failure != Reach::Missing) {
            outcome.left.push_back({path.path, leftReasonFor(failure, LeftReason::CannotOpen), {}});
        }
        return outcome;
    }
    std::expected<HeldDatabase, DatabaseFailure> opened = HeldDatabase::open(folder.get(), components->back());
    // A database missing from an existing folder counts as empty: the purge has nothing to do.
    bool done = !opened && opened.error().missing;
    if (!opened && !done) {
        outcome.left.push_back({path.path, opened.error().reason, std::move(opened.error().detail)});
        return outcome;
    }
    if (opened) {
        const std::expected<Purged, DatabaseFailure> purged = purgeDatabase(std::move(*opened), history, context.words);
        if (!purged) {
            outcome.left.push_back({path.path, purged.error().reason, purged.error().detail});
        } else {
            done = true;
            outcome.purged.push_back({path.path, purged->rows});
            if (purged->stillReadable) {
                outcome.left.push_back({path.path, LeftReason::StillReadable, {}});
            }
        }
    }
    if (history.sessionFiles) {
        const std::string profile = folderOf(path.path);
        for (const char* name : {"Current Session", "Current Tabs"}) {
            removeInto(outcome, context.boundary, FileUrl{joinPath(profile, name)});
        }
    }
    if (done) {
        logLine(context.mode == CleanMode::Interactive ? history.logFromWindow : history.logFromHourlyPurge);
    }
    return outcome;
}

PurgePreview previewPurge(const HistorySchema& history, const FileUrl& path, const PurgeContext& context) {
    PurgePreview preview;
    const std::optional<std::vector<std::string>> components = context.boundary.componentsInside(path.path);
    if (!components) {
        preview.left = LeftAsItWas{path.path, LeftReason::OutsideBoundary, {}};
        return preview;
    }
    Reach failure = Reach::Missing;
    const UniqueFd folder = context.boundary.openFolder(std::span(*components).first(components->size() - 1), failure);
    if (!folder.valid()) {
        if (failure != Reach::Missing) {
            preview.left = LeftAsItWas{path.path, leftReasonFor(failure, LeftReason::CannotOpen), {}};
        }
        return preview;
    }
    std::expected<HeldDatabase, DatabaseFailure> opened = HeldDatabase::open(folder.get(), components->back(), true);
    if (!opened) {
        if (!opened.error().missing) {
            preview.left = LeftAsItWas{path.path, opened.error().reason, std::move(opened.error().detail)};
        }
        return preview;
    }
    if (!context.words || context.words->matcher().empty()) {
        return preview;
    }
    sqlite3_busy_timeout(opened->get(), static_cast<int>(kHistoryBusyTimeout.count()));
    const std::expected<std::vector<std::int64_t>, int> found =
        matchingRows(opened->get(), history, context.words->matcher());
    if (!found) {
        const DatabaseFailure failed = opened->failure(found.error());
        preview.left = LeftAsItWas{path.path, failed.reason, failed.detail};
        return preview;
    }
    preview.matchingRows = static_cast<std::int64_t>(found->size());
    return preview;
}

} // namespace tidewell
