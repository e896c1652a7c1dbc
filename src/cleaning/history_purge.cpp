#include "cleaning/history_purge.hpp"

#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "cleaning/word_matcher.hpp"
#include "platform/log.hpp"

namespace tidewell {

namespace {

struct HistoryTable {
    const char* table;
    const char* logFromWindow;
    const char* logFromHourlyPurge;
    bool sessionFiles;  // Chrome keeps its open tabs beside the database
    bool readsUrlTexts; // the Firefox routine reads the url and the second column of each row it finds
};

constexpr HistoryTable kSafariHistory{"history_items", "Safari Deleted", "Safari Deleted", false, false};
constexpr HistoryTable kChromeHistory{"urls", "Chrome Deleted", "Chrome Deleted", true, false};
constexpr HistoryTable kFirefoxHistory{"moz_places", "Chrome Deleted", "Firefox Deleted", false, true};

struct DatabaseCloser {
    void operator()(sqlite3* db) const { sqlite3_close_v2(db); }
};
using Database = std::unique_ptr<sqlite3, DatabaseCloser>;

struct StatementFinalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

Statement prepare(sqlite3* db, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    // Prepared from the NUL-terminated text, so a word holding a NUL cuts the statement short there.
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
        sqlite3_finalize(statement);
        return nullptr;
    }
    return Statement(statement);
}

bool run(sqlite3* db, const char* sql) {
    return sqlite3_exec(db, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

// The row ids found, as 32-bit values, each kept once in the order first found.
class FoundIds {
public:
    void add(int id) {
        if (m_seen.insert(id).second) {
            m_ids.push_back(id);
        }
    }
    [[nodiscard]] const std::vector<int>& ids() const { return m_ids; }

private:
    std::unordered_set<int> m_seen;
    std::vector<int> m_ids;
};

// Whether a word can be looked for by the one-pass matcher with the very result its own LIKE query gives: text
// that the query would take as a pattern ("%", "_"), that breaks or changes the statement ("'", NUL), that LIKE
// compares by decoded character rather than by byte (anything outside ASCII), the empty word and a word over
// the pattern length limit all go through the query itself instead.
bool isPlainWord(const std::string& word, std::size_t likePatternLimit) {
    if (word.empty() || word.size() + 2 > likePatternLimit) {
        return false;
    }
    return std::ranges::all_of(word, [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte != 0 && byte < 0x80 && c != '%' && c != '_' && c != '\'';
    });
}

// Whether LIKE finds anything in a BLOB with this SQLite (builds differ).
bool likeMatchesBlobs(sqlite3* db) {
    const Statement probe = prepare(db, "SELECT x'61' LIKE '%a%'");
    return probe && sqlite3_step(probe.get()) == SQLITE_ROW && sqlite3_column_int(probe.get(), 0) == 1;
}

// One pass over the table for every plain word. LIKE sees a value as its text up to the first NUL (numbers as
// their text, BLOBs as their bytes where they match at all, NULL as no match), and so does this.
void findPlainWords(sqlite3* db, const HistoryTable& history, const std::vector<std::string>& words, FoundIds& found) {
    const WordMatcher matcher(words);
    if (matcher.empty()) {
        return;
    }
    const bool blobs = likeMatchesBlobs(db);
    // Column 0 of "SELECT *" is what the per-word query reads as the row's id; "url" is the column it compares.
    const Statement rows = prepare(db, std::string("SELECT *, url FROM ") + history.table);
    if (!rows) {
        return;
    }
    const int urlColumn = sqlite3_column_count(rows.get()) - 1;
    while (sqlite3_step(rows.get()) == SQLITE_ROW) {
        const int type = sqlite3_column_type(rows.get(), urlColumn);
        if (type == SQLITE_NULL || (type == SQLITE_BLOB && !blobs)) {
            continue;
        }
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(rows.get(), urlColumn));
        if (text != nullptr && matcher.matchesAny(std::string_view(text, std::strlen(text)))) {
            found.add(sqlite3_column_int(rows.get(), 0));
        }
    }
}

int columnNamed(sqlite3_stmt* statement, const char* name) {
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
        const char* columnName = sqlite3_column_name(statement, i);
        if (columnName != nullptr && sqlite3_stricmp(columnName, name) == 0) {
            return i;
        }
    }
    return -1;
}

// The word's own query, its text made by putting the word between the pattern's two '%' as it is.
void findByQuery(sqlite3* db, const HistoryTable& history, const std::string& word, FoundIds& found) {
    const Statement rows =
        prepare(db, std::string("SELECT * FROM ") + history.table + " WHERE url LIKE '%" + word + "%'");
    if (!rows) {
        return; // a word that breaks the statement finds nothing
    }
    const int urlColumn = history.readsUrlTexts ? columnNamed(rows.get(), "url") : -1;
    while (sqlite3_step(rows.get()) == SQLITE_ROW) {
        if (urlColumn >= 0) {
            static_cast<void>(sqlite3_column_text(rows.get(), urlColumn));
        }
        found.add(sqlite3_column_int(rows.get(), 0));
        if (history.readsUrlTexts) {
            static_cast<void>(sqlite3_column_text(rows.get(), 1));
        }
    }
}

bool isWalDatabase(sqlite3* db) {
    const Statement mode = prepare(db, "PRAGMA journal_mode");
    if (!mode || sqlite3_step(mode.get()) != SQLITE_ROW) {
        return false;
    }
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(mode.get(), 0));
    return text != nullptr && sqlite3_stricmp(text, "wal") == 0;
}

void purgeOpenDatabase(sqlite3* db, const HistoryTable& history, const std::vector<std::string>& words) {
    // A history database is another program's file: no longer than this is waited for while it holds a lock.
    sqlite3_busy_timeout(db, static_cast<int>(kHistoryBusyTimeout.count()));
    // Removed rows are overwritten, not just unlinked from the table's pages.
    run(db, "PRAGMA secure_delete=ON");
    // The write lock is taken first, so a browser holding the database costs one short wait and changes nothing.
    if (!run(db, "BEGIN IMMEDIATE")) {
        return;
    }
    const auto likeLimit = static_cast<std::size_t>(sqlite3_limit(db, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, -1));
    std::vector<std::string> plain;
    FoundIds found;
    for (const std::string& word : words) {
        if (isPlainWord(word, likeLimit)) {
            plain.push_back(word);
        }
    }
    findPlainWords(db, history, plain, found);
    for (const std::string& word : words) {
        if (!isPlainWord(word, likeLimit)) {
            findByQuery(db, history, word, found);
        }
    }
    if (!found.ids().empty()) {
        // The statement text the purge has always used, 39 blanks included, with the id as a parameter.
        const Statement remove =
            prepare(db, std::string("DELETE FROM ") + history.table + std::string(39, ' ') + "WHERE id = ?1");
        for (const int id : found.ids()) {
            if (!remove) {
                break;
            }
            sqlite3_bind_int(remove.get(), 1, id);
            sqlite3_step(remove.get());
            sqlite3_reset(remove.get());
        }
    }
    if (!run(db, "COMMIT")) {
        run(db, "ROLLBACK");
        return;
    }
    if (!found.ids().empty() && isWalDatabase(db)) {
        // Old copies of the removed rows' pages stay in the log until it is copied back and cut to nothing.
        run(db, "PRAGMA wal_checkpoint(TRUNCATE)");
    }
}

std::string joinComponents(const std::string& base, const std::vector<std::string>& components) {
    std::string path = base == "/" ? "" : base;
    for (const std::string& component : components) {
        path.push_back('/');
        path.append(component);
    }
    return path;
}

std::string folderOf(const std::string& path) {
    std::string folder = path;
    while (folder.size() > 1 && folder.back() == '/') {
        folder.pop_back();
    }
    const std::size_t slash = folder.rfind('/');
    return slash == std::string::npos ? std::string() : folder.substr(0, slash == 0 ? 1 : slash);
}

bool isFolder(const std::string& path) {
    struct stat st {};
    return ::lstat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool isMissing(const std::string& path) {
    struct stat st {};
    return ::lstat(path.c_str(), &st) != 0 && errno == ENOENT;
}

enum class Opening { Opened, Missing, Failed };

// Opens the database in place, by the file URL of its path, without creating it. The granted folder is written
// as the folder it really is and no link below it is followed, so the database changed is the one inside it.
Opening openInPlace(const FileUrl& path, const DeletionBoundary& boundary, Database& db) {
    const std::optional<std::vector<std::string>> inside = boundary.componentsInside(path.path);
    if (!inside) {
        return Opening::Failed;
    }
    char* real = ::realpath(boundary.grantedFolder().c_str(), nullptr);
    if (real == nullptr) {
        return Opening::Failed;
    }
    const std::string where = joinComponents(real, *inside);
    std::free(real); // NOLINT: realpath allocates with malloc
    sqlite3* opened = nullptr;
    const int rc = sqlite3_open_v2(FileUrl{where}.text().c_str(), &opened,
                                   SQLITE_OPEN_READWRITE | SQLITE_OPEN_URI | SQLITE_OPEN_NOFOLLOW, nullptr);
    db.reset(opened);
    if (rc == SQLITE_OK) {
        return Opening::Opened;
    }
    db.reset();
    // Opening with creation would have made an empty database here, which finds nothing.
    return isMissing(where) && isFolder(folderOf(where)) ? Opening::Missing : Opening::Failed;
}

void deleteAdultHistory(const HistoryTable& history, const FileUrl& path, const PurgeContext& context) {
    Database db;
    const Opening opening = openInPlace(path, context.boundary, db);
    if (opening == Opening::Failed) {
        return;
    }
    if (opening == Opening::Opened && context.words) {
        purgeOpenDatabase(db.get(), history, *context.words);
    }
    db.reset();
    if (history.sessionFiles) {
        const std::string folder = folderOf(path.path);
        removeItem(context.boundary, joinPath(folder, "Current Session"));
        removeItem(context.boundary, joinPath(folder, "Current Tabs"));
    }
    logLine(context.mode == CleanMode::Interactive ? history.logFromWindow : history.logFromHourlyPurge);
}

} // namespace

void deleteSafariAdultHistory(const FileUrl& path, const PurgeContext& context) {
    deleteAdultHistory(kSafariHistory, path, context);
}

void deleteChromeAdultHistory(const FileUrl& path, const PurgeContext& context) {
    deleteAdultHistory(kChromeHistory, path, context);
}

void deleteFireFoxAdultHistory(const FileUrl& path, const PurgeContext& context) {
    deleteAdultHistory(kFirefoxHistory, path, context);
}

} // namespace tidewell
