#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "base/log.hpp"
#include "cleaning/history_purge.hpp"
#include "cleaning/history_traces.hpp"
#include "support/disk_builder.hpp"
#include "support/history_schemas.hpp"
#include "support/literal_purge.hpp" // treeContents

namespace tidewell {
namespace {

namespace fs = std::filesystem;

// A fixture file of tests/fixtures: a schema captured from a browser, or rows with the outcome marked on them.
struct Fixture {
    std::string before;               // its SQL
    std::string after;                // the SQL of what is left: no line marked "-- goes", each "-- after:" line
    std::vector<std::int64_t> remove; // "-- remove:" the url rows to remove
    std::vector<std::string> gone;    // "-- gone:" texts that no file may hold afterwards
    std::string older;                // "-- older:" what an older browser version lacks, as SQL
};

Fixture readFixture(const std::string& name) {
    Fixture f;
    std::ifstream in(fs::path(TIDEWELL_FIXTURES) / name);
    EXPECT_TRUE(in) << name;
    for (std::string line; std::getline(in, line);) {
        if (line.starts_with("-- remove:")) {
            std::istringstream ids(line.substr(10));
            for (std::int64_t id = 0; ids >> id;) {
                f.remove.push_back(id);
            }
        } else if (line.starts_with("-- gone: ")) {
            f.gone.push_back(line.substr(9));
        } else if (line.starts_with("-- after: ")) {
            f.after += line.substr(10) + "\n";
        } else if (line.starts_with("-- older: ")) {
            f.older += line.substr(10) + "\n";
        } else if (!line.starts_with("--")) {
            f.before += line + "\n";
            f.after += line.ends_with("-- goes") ? "" : line + "\n";
        }
    }
    return f;
}

struct Db {
    explicit Db(const std::string& path) { sqlite3_open(path.c_str(), &db); }
    ~Db() { sqlite3_close(db); }
    Db(const Db&) = delete;
    Db& operator=(const Db&) = delete;
    sqlite3* db = nullptr;
};

// Runs each statement of sql. With `older`, one that names a table or column this schema lacks is passed over, as
// such rows cannot exist in it.
void runScript(sqlite3* db, const std::string& sql, bool older = false) {
    std::istringstream lines(sql);
    std::string statement;
    for (std::string line; std::getline(lines, line);) {
        statement += line + "\n";
        if (sqlite3_complete(statement.c_str()) == 0) {
            continue;
        }
        if (sqlite3_exec(db, statement.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
            const std::string error = sqlite3_errmsg(db);
            EXPECT_TRUE(older && std::regex_search(error, std::regex("no such (table|column)|has no column named")))
                << error << " in " << statement;
        }
        statement.clear();
    }
}

// The rows a query gives, each as its typed values.
std::vector<std::string> answers(sqlite3* db, const std::string& sql) {
    std::vector<std::string> rows;
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(db, sql.c_str(), -1, &s, nullptr);
    while (sqlite3_step(s) == SQLITE_ROW) {
        std::string row;
        for (int i = 0; i < sqlite3_column_count(s); ++i) {
            const auto* bytes = static_cast<const char*>(sqlite3_column_blob(s, i));
            row += std::to_string(sqlite3_column_type(s, i)) + ":" +
                   std::string(bytes != nullptr ? bytes : "", static_cast<std::size_t>(sqlite3_column_bytes(s, i))) +
                   "|";
        }
        rows.push_back(std::move(row));
    }
    sqlite3_finalize(s);
    return rows;
}

// Every row of every table of the database.
std::map<std::string, std::multiset<std::string>> everyRow(sqlite3* db) {
    std::map<std::string, std::multiset<std::string>> rows;
    for (const std::string& table :
         answers(db, "SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite_%'")) {
        const std::string name = table.substr(2, table.size() - 3); // "3:name|"
        const std::vector<std::string> all = answers(db, "SELECT * FROM \"" + name + "\"");
        rows[name] = std::multiset<std::string>(all.begin(), all.end());
    }
    return rows;
}

// The browsers whose schemas are captured: their history database, and their favicon database if they have one.
struct Family {
    std::string name;
    HistoryLayout layout;
    std::vector<std::string> files;
};

const std::vector<Family> kFamilies{{"chromium", HistoryLayout::Chrome, {"History", "Favicons"}},
                                    {"firefox", HistoryLayout::Firefox, {"places.sqlite", "favicons.sqlite"}},
                                    {"safari", HistoryLayout::Safari, {"History.db"}}};

// A browser version of tests/fixtures: "chromium-156" for "chromium-156-History.sql" and "chromium-156-Favicons.sql",
// whose rows are in "chromium-History.rows.sql" and "chromium-Favicons.rows.sql".
struct Browser {
    const Family& family;
    std::string version;
};

std::vector<Browser> capturedBrowsers() {
    std::vector<Browser> browsers;
    for (const Family& family : kFamilies) {
        const std::string suffix = "-" + family.files.front() + ".sql";
        for (const auto& entry : fs::directory_iterator(TIDEWELL_FIXTURES)) {
            const std::string name = entry.path().filename().string();
            if (name.starts_with(family.name + "-") && name.ends_with(suffix)) {
                browsers.push_back({family, name.substr(0, name.size() - suffix.size())});
            }
        }
    }
    return browsers;
}

// Writes one database of the browser as its rows say it is before (or, with `after`, as they say it must be left),
// or as an older version of the browser made it.
void build(const std::string& folder, const Browser& browser, const std::string& file, bool older, bool after) {
    const Db out(folder + "/" + file);
    const Fixture rows = readFixture(browser.family.name + "-" + file + ".rows.sql");
    runScript(out.db, readFixture(browser.version + "-" + file + ".sql").before + (older ? rows.older : ""));
    runScript(out.db, after ? rows.after : rows.before, older);
}

// Removes the rows file's pages from the history database, or their icons from the favicon database.
std::expected<TraceRemoval, std::string> removeFrom(sqlite3* db, const Browser& browser, const std::string& file,
                                                    const std::vector<std::string>& removedUrls) {
    return file == browser.family.files.front()
               ? removeVisitedPages(db, browser.family.layout,
                                    readFixture(browser.family.name + "-" + file + ".rows.sql").remove)
               : removePageIcons(db, browser.family.layout, removedUrls);
}

// The tables a removal's statements read whole, as "table" in the plans of the statements traced. A scan names its
// table, or the alias it is given: the statements give none, so that none hides here.
std::vector<std::string> scannedTables(sqlite3* db, const std::vector<std::string>& statements) {
    std::vector<std::string> scanned;
    for (const std::string& sql : statements) {
        runScript(db, sql.starts_with("CREATE TEMP TABLE") ? sql + ";" : ""); // the scratch tables, made again
    }
    for (const std::string& sql : statements) {
        for (const std::string& step : std::regex_search(sql, std::regex("^(INSERT|DELETE|UPDATE)"))
                                           ? answers(db, "EXPLAIN QUERY PLAN " + sql)
                                           : std::vector<std::string>{}) {
            std::smatch m;
            if (std::regex_search(step, m, std::regex(R"(\|3:SCAN (?:main\.)?([^ |]+))")) &&
                !std::regex_match(m[1].str(), std::regex(R"((temp\.)?tidewell_\w+)"))) {
                scanned.push_back(m[1].str());
            }
        }
    }
    return scanned;
}

// The pages of the rows files go with every row that refers to them, and nothing else changes: each table reads
// exactly as the rows files say it must, for every captured schema and for older ones that lack tables and
// columns; no file of the folder holds a removed address or title any more; the counts are each table's loss.
// And each statement reaches the browser's table through its index on the column that refers, so that a removal
// costs a look-up per row removed, not a read of the table: the few columns the browsers index nowhere are read
// once each.
TEST(HistoryTraces, RemovedPagesLeaveNoRowAnywhereAndEverythingElseStays) {
    const std::vector<Browser> browsers = capturedBrowsers();
    ASSERT_GE(browsers.size(), 3U) << "no captured browser schemas in " << TIDEWELL_FIXTURES;
    std::multiset<std::string> scanned;
    for (const Browser& browser : browsers) {
        for (const bool older : {false, true}) {
            SCOPED_TRACE(browser.version + (older ? " (older schema)" : ""));
            testing::TempFolder folder;
            testing::TempFolder expected;
            std::vector<std::string> gone;
            std::vector<std::string> removedUrls;
            for (const std::string& file : browser.family.files) {
                build(folder.path(), browser, file, older, false);
                build(expected.path(), browser, file, older, true);
                const Db db(folder.path() + "/" + file);
                const auto before = everyRow(db.db);
                std::vector<std::string> statements;
                sqlite3_trace_v2(
                    db.db, SQLITE_TRACE_STMT,
                    [](unsigned, void* into, void*, void* sql) {
                        static_cast<std::vector<std::string>*>(into)->emplace_back(static_cast<const char*>(sql));
                        return 0;
                    },
                    &statements);
                // As the purge runs it: one write transaction with secure deletion, the log cut afterwards.
                runScript(db.db, "PRAGMA secure_delete=ON;\nPRAGMA temp_store=MEMORY;\nBEGIN IMMEDIATE;");
                const auto removal = removeFrom(db.db, browser, file, removedUrls);
                runScript(db.db, "COMMIT;\nPRAGMA wal_checkpoint(TRUNCATE);");
                sqlite3_trace_v2(db.db, 0, nullptr, nullptr);
                ASSERT_TRUE(removal) << removal.error();

                const auto after = everyRow(db.db);
                ASSERT_EQ(after.size(), before.size());
                for (const auto& [table, left] : everyRow(Db(expected.path() + "/" + file).db)) {
                    EXPECT_EQ(after.at(table), left) << table;
                    EXPECT_EQ(static_cast<std::int64_t>(before.at(table).size() - left.size()), removal->rowsOf(table))
                        << table;
                }
                EXPECT_EQ(removal->keptBookmarked, file == "places.sqlite" ? 1 : 0); // the bookmarked page
                EXPECT_EQ(answers(db.db, "PRAGMA integrity_check"), std::vector<std::string>{"3:ok|"});
                EXPECT_TRUE(answers(db.db, "PRAGMA foreign_key_check").empty());
                const std::vector<std::string> texts = readFixture(browser.family.name + "-" + file + ".rows.sql").gone;
                gone.insert(gone.end(), texts.begin(), texts.end());
                removedUrls = removal->removedUrls;
                for (const std::string& table : older ? std::vector<std::string>{} : scannedTables(db.db, statements)) {
                    scanned.insert(browser.version + " " + table);
                }
            }
            for (const auto& [file, bytes] : testing::treeContents(folder.path())) {
                for (const std::string& text : gone) {
                    EXPECT_EQ(bytes.find(text), std::string::npos) << "\"" << text << "\" is still in " << file;
                }
            }
        }
    }
    EXPECT_EQ(scanned, (std::multiset<std::string>{"chromium-156 cluster_visit_duplicates",
                                                   "firefox-153 moz_historyvisits", "firefox-153 moz_places_metadata",
                                                   "firefox-153 moz_pages_w_icons", "firefox-153 moz_icons_to_pages"}));
}

// The purge itself, as a clean runs it on a profile folder, in either journal mode: words that find exactly the
// rows files' pages take them with every row that refers to them and with their icons' mappings, in both databases.
// Every table of both reads as the rows files say, and no file of the folder holds a removed address, title or
// search term. The counts are the pages the table of visited addresses lost (Firefox keeps its bookmarked one).
TEST(HistoryTraces, APurgedProfileReadsAsTheRowsFilesSayAndNoFileHoldsARemovedText) {
    setLogSink([](std::string_view) {});
    for (const Browser& browser : capturedBrowsers()) {
        for (const bool wal : {false, true}) {
            SCOPED_TRACE(browser.version + (wal ? " (WAL)" : ""));
            testing::TempFolder home;
            testing::TempFolder expected;
            const std::string profile = home.path() + "/profile";
            fs::create_directories(profile);
            std::vector<std::string> gone;
            for (const std::string& file : browser.family.files) {
                build(profile, browser, file, false, false);
                build(expected.path(), browser, file, false, true);
                runScript(Db(profile + "/" + file).db,
                          wal ? "PRAGMA journal_mode=WAL;" : "PRAGMA journal_mode=TRUNCATE;");
                const std::vector<std::string> texts = readFixture(browser.family.name + "-" + file + ".rows.sql").gone;
                gone.insert(gone.end(), texts.begin(), texts.end());
            }
            const HistorySchema* schema = browser.family.layout == HistoryLayout::Chrome    ? testing::chromeHistory()
                                          : browser.family.layout == HistoryLayout::Firefox ? testing::firefoxHistory()
                                                                                            : testing::safariHistory();
            const std::string history = profile + "/" + browser.family.files.front();
            const DeletionBoundary boundary(home.path());
            const CleanOutcome outcome =
                purgeHistory(*schema, FileUrl{history},
                             PurgeContext{makeAdultWords({"porn", "XHAMSTER"}), boundary, CleanMode::RealTime});

            EXPECT_TRUE(outcome.left.empty()) << describe(outcome.left.front());
            const std::int64_t pages = browser.family.layout == HistoryLayout::Firefox ? 2 : 3;
            EXPECT_EQ(outcome.purged, (std::vector<PurgedDatabase>{{history, pages}}));
            for (const std::string& file : browser.family.files) {
                const auto left = everyRow(Db(profile + "/" + file).db);
                for (const auto& [table, rows] : everyRow(Db(expected.path() + "/" + file).db)) {
                    EXPECT_EQ(left.at(table), rows) << file << ": " << table;
                }
            }
            for (const auto& [file, bytes] : testing::treeContents(profile)) {
                for (const std::string& text : gone) {
                    EXPECT_EQ(bytes.find(text), std::string::npos) << "\"" << text << "\" is still in " << file;
                }
            }
        }
    }
}

// Only a missing table or column is passed over. Any other failure is the caller's to roll back, which leaves the
// database as it was and the connection without the removal's scratch tables; and a removal outside a transaction
// is refused before it starts.
TEST(HistoryTraces, AFailureIsReportedAndTheCallersRollbackLeavesTheDatabaseAsItWas) {
    testing::TempFolder folder;
    build(folder.path(), capturedBrowsers().front(), "History", false, false);
    const Db db(folder.path() + "/History");
    const auto before = everyRow(db.db);
    const std::vector<std::int64_t> ids{2, 4};

    const auto outside = removeVisitedPages(db.db, HistoryLayout::Chrome, ids);
    ASSERT_FALSE(outside);
    EXPECT_NE(outside.error().find("not inside a transaction"), std::string::npos);

    // As a damaged page or a full disk would refuse a statement halfway through.
    runScript(db.db, "CREATE TRIGGER refuse BEFORE DELETE ON segments BEGIN SELECT RAISE(ABORT, 'disk I/O error'); "
                     "END;\nBEGIN;");
    const auto refused = removeVisitedPages(db.db, HistoryLayout::Chrome, ids);
    ASSERT_FALSE(refused);
    EXPECT_NE(refused.error().find("DELETE FROM segments"), std::string::npos) << refused.error();
    runScript(db.db, "ROLLBACK;\nDROP TRIGGER refuse;");
    EXPECT_EQ(everyRow(db.db), before);
    EXPECT_TRUE(answers(db.db, "SELECT name FROM temp.sqlite_master").empty());
}

} // namespace
} // namespace tidewell
