// tidewell-history-traces chrome|firefox|safari HISTORY ICONS WORD...
//
// Removes from a browser's history database the pages whose address holds any of the words, with every row that
// refers to them, then their icons from the favicon database ("" for none), each in one transaction as the purge
// makes it, and prints the rows each database lost. For the check that runs the real browsers on a profile purged
// so, until the purge itself calls the removal.

#include <fmt/format.h>
#include <sqlite3.h>

#include <cstdio>
#include <string>
#include <vector>

#include "cleaning/history_traces.hpp"

namespace {

using namespace tidewell;

// Runs a removal in one write transaction with the purge's settings, then cuts a WAL to nothing.
template <typename Remove> bool purge(const std::string& path, Remove remove, TraceRemoval& removal) {
    sqlite3* db = nullptr;
    sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr);
    std::expected<TraceRemoval, std::string> result = std::unexpected(std::string(sqlite3_errmsg(db)));
    if (sqlite3_exec(db, "PRAGMA secure_delete=ON; PRAGMA temp_store=MEMORY; BEGIN IMMEDIATE", nullptr, nullptr,
                     nullptr) == SQLITE_OK) {
        result = remove(db);
        sqlite3_exec(db, result ? "COMMIT; PRAGMA wal_checkpoint(TRUNCATE)" : "ROLLBACK", nullptr, nullptr, nullptr);
    }
    sqlite3_close(db);
    if (!result) {
        std::fprintf(stderr, "%s: %s\n", path.c_str(), result.error().c_str());
        return false;
    }
    removal = *result;
    std::string tables;
    for (const auto& [table, rows] : removal.removed) {
        tables += fmt::format("{} {}, ", rows, table);
    }
    std::printf("%s: %s%lld kept for a bookmark\n", path.c_str(), tables.c_str(),
                static_cast<long long>(removal.keptBookmarked));
    return true;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 5) {
        std::fprintf(stderr, "usage: tidewell-history-traces chrome|firefox|safari HISTORY ICONS WORD...\n");
        return 2;
    }
    const std::string kind = argv[1];
    const auto layout = kind == "firefox"  ? HistoryLayout::Firefox
                        : kind == "safari" ? HistoryLayout::Safari
                                           : HistoryLayout::Chrome;
    const char* table = kind == "firefox" ? "moz_places" : kind == "safari" ? "history_items" : "urls";
    const std::vector<std::string> words(argv + 4, argv + argc);
    TraceRemoval pages;
    TraceRemoval icons;
    const bool purged = purge(
        argv[2],
        [&](sqlite3* db) {
            std::vector<std::int64_t> ids;
            sqlite3_stmt* find = nullptr;
            sqlite3_prepare_v2(db, fmt::format("SELECT id FROM {} WHERE instr(url, ?1)", table).c_str(), -1, &find,
                               nullptr);
            for (const std::string& word : words) {
                sqlite3_bind_text(find, 1, word.c_str(), -1, SQLITE_TRANSIENT);
                while (sqlite3_step(find) == SQLITE_ROW) {
                    ids.push_back(sqlite3_column_int64(find, 0));
                }
                sqlite3_reset(find);
            }
            sqlite3_finalize(find);
            return removeVisitedPages(db, layout, ids);
        },
        pages);
    return purged && (std::string(argv[3]).empty() ||
                      purge(
                          argv[3], [&](sqlite3* db) { return removePageIcons(db, layout, pages.removedUrls); }, icons))
               ? 0
               : 1;
}
