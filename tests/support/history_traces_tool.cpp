// tidewell-history-traces chrome|firefox|safari HISTORY ICONS ID...
//
// Removes from a browser's history database the URL rows with these ids, with every row that refers to them, then
// their icons from the favicon database ("" for none), each in one transaction as the purge makes it, and prints
// the rows each database lost. For the check that runs the real browsers on a profile purged so, until the purge
// itself calls the removal.

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
    if (argc < 4) {
        std::fprintf(stderr, "usage: tidewell-history-traces chrome|firefox|safari HISTORY ICONS ID...\n");
        return 2;
    }
    const std::string kind = argv[1];
    const auto layout = kind == "firefox"  ? HistoryLayout::Firefox
                        : kind == "safari" ? HistoryLayout::Safari
                                           : HistoryLayout::Chrome;
    std::vector<std::int64_t> ids;
    for (int i = 4; i < argc; ++i) {
        ids.push_back(std::stoll(argv[i]));
    }
    TraceRemoval pages;
    TraceRemoval icons;
    const bool purged = purge(
        argv[2], [&](sqlite3* db) { return removeVisitedPages(db, layout, ids); }, pages);
    return purged && (std::string(argv[3]).empty() ||
                      purge(
                          argv[3], [&](sqlite3* db) { return removePageIcons(db, layout, pages.removedUrls); }, icons))
               ? 0
               : 1;
}
