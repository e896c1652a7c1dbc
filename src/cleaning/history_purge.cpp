#include "cleaning/history_purge.hpp"

#include <sqlite3.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/log.hpp"
#include "cleaning/held_database.hpp"
#include "cleaning/history_traces.hpp"

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

// The name the favicon database is attached under beside the history database.
constexpr const char* kIcons = "tidewell_icons";

// The journal mode the database keeps in its file ("wal"), or the one this connection starts with.
std::expected<bool, int> isWalDatabase(sqlite3* db, const std::string& database = "main") {
    int rc = SQLITE_OK;
    const Statement mode = prepare(db, "PRAGMA " + database + ".journal_mode", rc);
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

// Without WAL the old pages go to a rollback journal, which this connection removes at the commit rather than
// keeping it (as PERSIST or TRUNCATE would, with the removed visits inside).
std::expected<bool, int> useDeletedJournal(sqlite3* db, const std::string& database) {
    const std::expected<bool, int> wal = isWalDatabase(db, database);
    if (wal && !*wal) {
        if (const int rc = run(db, ("PRAGMA " + database + ".journal_mode=DELETE").c_str()); rc != SQLITE_OK) {
            return std::unexpected(rc);
        }
    }
    return wal;
}

// Old copies of a WAL database's changed pages stay in its log, and in its own pages, until the log is copied back
// and cut to nothing; a reader's open snapshot holds that off. Whether it was.
bool truncateLog(sqlite3* db, const char* database) {
    int logFrames = 0;
    int copiedFrames = 0;
    const int rc = sqlite3_wal_checkpoint_v2(db, database, SQLITE_CHECKPOINT_TRUNCATE, &logFrames, &copiedFrames);
    return rc == SQLITE_OK && logFrames == 0;
}

// The size of the main database, as SQLite counts its pages.
std::expected<std::int64_t, int> databaseBytes(sqlite3* db) {
    int rc = SQLITE_OK;
    const Statement size =
        prepare(db, "SELECT page_count * page_size FROM pragma_page_count(), pragma_page_size()", rc);
    if (!size) {
        return std::unexpected(rc);
    }
    if (rc = sqlite3_step(size.get()); rc != SQLITE_ROW) {
        return std::unexpected(rc);
    }
    return sqlite3_column_int64(size.get(), 0);
}

HistoryLayout layoutOf(const HistorySchema& history) {
    switch (history.format) {
    case BrowserFamily::Chrome:
        return HistoryLayout::Chrome;
    case BrowserFamily::Firefox:
        return HistoryLayout::Firefox;
    case BrowserFamily::Safari:
    case BrowserFamily::Mail:
        break;
    }
    return HistoryLayout::Safari;
}

struct Purged {
    std::int64_t rows = 0;
    bool stillReadable = false;
    bool iconsStillReadable = false;
    // Why the favicon database beside was left as it was, when it was.
    std::optional<DatabaseFailure> iconsLeft;
};

// Attaches the favicon database beside the history database for the purge's transaction, when there is one. One
// that cannot be used is left as it was, and said so, and the history is purged all the same. Whether it was
// attached, and whether it keeps a WAL.
struct AttachedIcons {
    bool attached = false;
    bool wal = false;
};

AttachedIcons attachIcons(const HeldDatabase& held, const HistorySchema& history, Purged& purged) {
    if (history.iconDatabase.empty()) {
        return {};
    }
    sqlite3* db = held.get();
    const std::expected<bool, DatabaseFailure> attached = held.attach(history.iconDatabase, kIcons);
    if (!attached) {
        purged.iconsLeft = attached.error();
        return {};
    }
    if (!*attached) {
        return {};
    }
    // SQLite opens an attached file lazily: reading its schema is what shows a damaged one, before the purge's
    // transaction starts.
    int rc = SQLITE_OK;
    const std::string icons(kIcons);
    if (const Statement schema = prepare(db, "SELECT count(*) FROM " + icons + ".sqlite_master", rc);
        !schema || (rc = sqlite3_step(schema.get())) != SQLITE_ROW) {
        purged.iconsLeft = held.failure(rc);
    } else if (sqlite3_db_readonly(db, kIcons) == 1) {
        purged.iconsLeft = DatabaseFailure{LeftReason::ReadOnly, "opened read-only", false};
    } else if (const std::expected<bool, int> wal = useDeletedJournal(db, icons); !wal) {
        purged.iconsLeft = held.failure(wal.error());
    } else {
        return {true, *wal};
    }
    run(db, ("DETACH " + icons).c_str());
    return {};
}

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
// The matching pages go with every row that refers to them, and with their icons' mappings in the favicon database
// beside, in the one transaction.
std::expected<Purged, DatabaseFailure> purgeOpenDatabase(const HeldDatabase& held, const HistorySchema& history,
                                                         const WordMatcher& matcher) {
    sqlite3* db = held.get();
    // A history database is another program's file: no longer than this is waited for while it holds a lock.
    sqlite3_busy_timeout(db, static_cast<int>(kHistoryBusyTimeout.count()));
    if (sqlite3_db_readonly(db, "main") == 1) {
        return std::unexpected(DatabaseFailure{LeftReason::ReadOnly, "opened read-only", false});
    }
    const std::expected<bool, int> wal = useDeletedJournal(db, "main");
    if (!wal) {
        return std::unexpected(held.failure(wal.error()));
    }
    if (const std::expected<std::int64_t, int> bytes = databaseBytes(db); !bytes) {
        return std::unexpected(held.failure(bytes.error()));
    } else {
        const PurgeMemory memory = purgeMemoryFor(static_cast<std::uint64_t>(*bytes));
        const std::string sizes = "PRAGMA cache_size=-" + std::to_string(memory.pageCacheBytes / 1024) +
                                  "; PRAGMA mmap_size=" + std::to_string(memory.mmapBytes);
        if (const int rc = run(db, sizes.c_str()); rc != SQLITE_OK) {
            return std::unexpected(held.failure(rc));
        }
    }
    Purged purged;
    const AttachedIcons icons = attachIcons(held, history, purged);
    // Removed rows are overwritten, not just unlinked from the table's pages, in both databases; nothing is written
    // to temporary files outside the database's folder.
    if (const int rc = run(db, "PRAGMA secure_delete=ON; PRAGMA temp_store=MEMORY"); rc != SQLITE_OK) {
        return std::unexpected(held.failure(rc));
    }
    // The write lock is taken first, so a browser holding the database costs one short wait and changes nothing.
    if (const int rc = run(db, "BEGIN IMMEDIATE"); rc != SQLITE_OK) {
        return std::unexpected(held.failure(rc));
    }
    const auto rollBack = [&](DatabaseFailure failure) {
        run(db, "ROLLBACK");
        return std::unexpected(std::move(failure));
    };
    const auto rollBackWithMessage = [&](std::string message) {
        DatabaseFailure failure = held.failure(sqlite3_errcode(db));
        failure.detail = std::move(message);
        return rollBack(std::move(failure));
    };
    const std::expected<std::vector<std::int64_t>, int> found = matchingRows(db, history, matcher);
    if (!found) {
        return rollBack(held.failure(found.error()));
    }
    std::int64_t iconRows = 0;
    if (!found->empty()) {
        const HistoryLayout layout = layoutOf(history);
        const std::expected<TraceRemoval, std::string> pages = removeVisitedPages(db, layout, *found);
        if (!pages) {
            return rollBackWithMessage(pages.error());
        }
        purged.rows = pages->rowsOf(history.table);
        if (icons.attached && !pages->removedUrls.empty()) {
            const std::expected<TraceRemoval, std::string> mappings =
                removePageIcons(db, layout, pages->removedUrls, kIcons);
            if (!mappings) {
                return rollBackWithMessage(mappings.error());
            }
            iconRows = mappings->total();
        }
    }
    if (const int rc = run(db, "COMMIT"); rc != SQLITE_OK) {
        return rollBack(held.failure(rc));
    }
    if (!found->empty() && *wal) {
        purged.stillReadable = !truncateLog(db, "main");
    }
    if (iconRows > 0 && icons.wal) {
        purged.iconsStillReadable = !truncateLog(db, kIcons);
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

PurgeMemory purgeMemoryFor(std::uint64_t databaseBytes) {
    const auto bytes = static_cast<std::int64_t>(std::min<std::uint64_t>(databaseBytes, std::uint64_t{1} << 62));
    return {std::clamp(bytes, kPurgePageCacheLeast, kPurgePageCacheBound), std::min(bytes, kPurgeMmapBound)};
}

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
            const std::string icons = joinPath(folderOf(path.path), history.iconDatabase);
            if (purged->iconsLeft) {
                outcome.left.push_back({icons, purged->iconsLeft->reason, purged->iconsLeft->detail});
            }
            if (purged->iconsStillReadable) {
                outcome.left.push_back({icons, LeftReason::StillReadable, {}});
            }
        }
    }
    // The open tabs hold the addresses too: they go once the history they belong to is purged, and stay with a
    // history that was left as it was, so the two never tell different stories.
    if (history.sessionFiles && done) {
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
