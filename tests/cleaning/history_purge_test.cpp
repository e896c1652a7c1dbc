#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <optional>

#include "cleaning/history_purge.hpp"
#include "sample_disk/sample_disk.hpp"
#include "support/disk_builder.hpp"
#include "support/history_schemas.hpp"
#include "support/literal_purge.hpp"
#include "support/log_capture.hpp"

namespace tidewell {
namespace {

namespace fs = std::filesystem;
using testing::Browser;
using testing::fileBytes;

using Routine = const HistorySchema*;

void sql(const std::string& path, const std::string& statements) {
    sqlite3* db = nullptr;
    sqlite3_open(path.c_str(), &db);
    ASSERT_EQ(sqlite3_exec(db, statements.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
    sqlite3_close(db);
}

class HistoryPurge : public ::testing::Test {
protected:
    CleanOutcome purge(Routine routine, const std::string& path, std::vector<std::string> words,
                       CleanMode mode = CleanMode::Interactive) const {
        return purgeHistory(*routine, FileUrl{path}, PurgeContext{makeAdultWords(std::move(words)), boundary, mode});
    }

    testing::TempFolder temp;
    testing::DiskBuilder d{temp.path() + "/disk"};
    DeletionBoundary boundary{d.home()};
    testing::LogCapture logs;
};

// Each routine removes its matching pages and, with them, their visits (one each here), and logs its own text.
TEST_F(HistoryPurge, EachRoutineRemovesItsMatchingPagesWithTheirVisitsAndLogsItsText) {
    struct Case {
        Routine routine;
        Browser browser;
        const char* table;
        const char* otherTable;
        CleanMode mode;
        const char* log;
    };
    const std::vector<Case> cases{
        {testing::safariHistory(), Browser::Safari, "history_items", "history_visits", CleanMode::Interactive,
         "Safari Deleted"},
        {testing::chromeHistory(), Browser::Chrome, "urls", "visits", CleanMode::RealTime, "Chrome Deleted"},
        {testing::firefoxHistory(), Browser::Firefox, "moz_places", "moz_historyvisits", CleanMode::Interactive,
         "Chrome Deleted"},
        {testing::firefoxHistory(), Browser::Firefox, "moz_places", "moz_historyvisits", CleanMode::RealTime,
         "Firefox Deleted"},
    };
    for (const Case& c : cases) {
        const std::string path = d.at(std::string("History/") + c.table + std::to_string(static_cast<int>(c.mode)));
        testing::writeHistoryDatabase(path, c.browser, testing::sampleHistoryUrls());
        ASSERT_EQ(testing::tableDump(path, c.otherTable).size(), 8U);
        const CleanOutcome outcome = purge(c.routine, path, {"porn", "SEXCAM", "xxx"}, c.mode);
        EXPECT_EQ(testing::tableDump(path, c.table).size(), 5U) << c.table;
        EXPECT_EQ(testing::tableDump(path, c.otherTable).size(), 5U) << c.otherTable;
        EXPECT_EQ(outcome.purged, (std::vector<PurgedDatabase>{{path, 3}}));
        EXPECT_EQ(logs.lines().back(), c.log);
    }
}

// A row is named by its 64-bit id: an adult row whose id is 2^32 + 3 goes, and row 3 stays. (The database lies
// more than 750 bytes deep, further than SQLite takes a path: it is reached through its held folder.)
TEST_F(HistoryPurge, RowsAreNamedByTheirSixtyFourBitIdsEvenDeepBelowTheHome) {
    const std::string deep = std::string(250, 'a') + "/" + std::string(250, 'b') + "/" + std::string(250, 'c');
    const std::string path = d.at(deep + "/History");
    const std::string near = d.at("History"); // where this test's own SQLite can reach it
    testing::writeHistoryDatabase(near, Browser::Chrome,
                                  {"https://news.example/", "https://shop.example/", "https://mail.example/"});
    sql(near, "INSERT INTO urls (id, url, last_visit_time) VALUES (4294967299, 'https://porn.example/', 0);"
              "INSERT INTO urls (id, url, last_visit_time) VALUES (9223372036854775807, 'https://xxx.example/', 0)");
    d.folder(deep);
    fs::rename(near, path);
    const CleanOutcome outcome = purge(testing::chromeHistory(), path, {"porn", "xxx"});
    fs::rename(path, near);
    const std::vector<std::string> rows = testing::tableDump(near, "urls");
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_NE(rows[2].find("mail.example"), std::string::npos);
    EXPECT_EQ(outcome.purged, (std::vector<PurgedDatabase>{{path, 2}}));
}

// A word is literal text: SQL's wildcards, quotes and escapes are ordinary characters, ASCII letters match either
// case, other bytes only themselves, and the empty word nothing.
TEST_F(HistoryPurge, WordsMatchAsLiteralTextNeverAsSql) {
    const std::vector<std::string> urls{"https://news.example/100%-fresh", "https://a.example/x_x",
                                        "https://b.example/xax",           "https://c.example/it's",
                                        "https://d.example/' OR '1'='1",   "https://e.example/back\\slash",
                                        "https://f.example/\"quoted\"",    "https://g.example/CAFÉ",
                                        "https://h.example/café",          "https://i.example/plain"};
    for (const Browser browser : {Browser::Chrome, Browser::Firefox, Browser::Safari}) {
        const std::string path = d.at("literal" + std::to_string(static_cast<int>(browser)));
        testing::writeHistoryDatabase(path, browser, urls);
        const Routine routine = browser == Browser::Chrome    ? testing::chromeHistory()
                                : browser == Browser::Firefox ? testing::firefoxHistory()
                                                              : testing::safariHistory();
        const char* table = browser == Browser::Chrome    ? "urls"
                            : browser == Browser::Firefox ? "moz_places"
                                                          : "history_items";
        purge(routine, path, {"%", "X_X", "' OR '1'='1", "\\", "\"", "É", "", std::string("\xff\x00z", 3)});
        std::vector<std::string> kept;
        for (const std::string& row : testing::tableDump(path, table)) {
            for (const std::string& url : urls) {
                if (row.find(url + "|") != std::string::npos) {
                    kept.push_back(url);
                }
            }
        }
        EXPECT_EQ(kept, (std::vector<std::string>{"https://b.example/xax", "https://c.example/it's",
                                                  "https://h.example/café", "https://i.example/plain"}))
            << table;
    }
}

// The open tabs go with every purge that was committed, or had no database to purge, and stay with a history left
// as it was.
TEST_F(HistoryPurge, ChromeSessionFilesGoWithEachCommittedPurgeAndAMissingDatabaseIsNotMade) {
    const std::string profile = "Library/Application Support/Google/Chrome/Default/";
    testing::writeHistoryDatabase(d.at(profile + "History"), Browser::Chrome, {"https://news.example/"});
    d.text(profile + "Current Session", "s").text(profile + "Current Tabs", "t");
    purge(testing::chromeHistory(), d.at(profile + "History"), {});
    EXPECT_FALSE(fs::exists(d.at(profile + "Current Session")));
    EXPECT_FALSE(fs::exists(d.at(profile + "Current Tabs")));
    EXPECT_EQ(testing::tableDump(d.at(profile + "History"), "urls").size(), 1U);

    // Never run: the folder is there, the database is not.
    d.text("Other/Current Session", "s");
    purge(testing::chromeHistory(), d.at("Other/History"), {"porn"});
    EXPECT_FALSE(fs::exists(d.at("Other/History")));
    EXPECT_FALSE(fs::exists(d.at("Other/Current Session")));
    EXPECT_EQ(logs.lines(), (std::vector<std::string>{"Chrome Deleted", "Chrome Deleted"}));

    // No folder either: nothing to open, nothing logged.
    purge(testing::chromeHistory(), d.at("Nowhere/History"), {"porn"});
    EXPECT_EQ(logs.lines().size(), 2U);

    // A history that is no database is left as it was, and so are the tabs beside it.
    d.text("Damaged/History", std::string(4096, 'x')).text("Damaged/Current Session", "s");
    d.text("Damaged/Current Tabs", "t");
    const CleanOutcome left = purge(testing::chromeHistory(), d.at("Damaged/History"), {"porn"});
    ASSERT_EQ(left.left.size(), 1U);
    EXPECT_EQ(left.left.front().reason, LeftReason::Damaged);
    EXPECT_TRUE(fs::exists(d.at("Damaged/Current Session")));
    EXPECT_TRUE(fs::exists(d.at("Damaged/Current Tabs")));
    EXPECT_EQ(logs.lines().size(), 2U);
}

// A favicon database that cannot be used is named with its reason and left as it was; the history beside it is
// purged all the same, and one that is missing is not made.
TEST_F(HistoryPurge, AFaviconDatabaseThatCannotBeUsedIsLeftAndTheHistoryIsStillPurged) {
    d.text("/Elsewhere/Favicons", "");
    const auto outside = testing::treeContents(d.at("/Elsewhere"));
    struct Case {
        std::string folder;
        std::function<void(const std::string&)> favicons;
        std::optional<LeftReason> reason;
    };
    const std::vector<Case> cases{
        {"Missing", [](const std::string&) {}, std::nullopt},
        {"Linked", [&](const std::string& name) { fs::create_symlink(d.at("/Elsewhere/Favicons"), d.at(name)); },
         LeftReason::NotPlainFile},
        {"Hard", [&](const std::string& name) { fs::create_hard_link(d.at("/Elsewhere/Favicons"), d.at(name)); },
         LeftReason::NotPlainFile},
        {"Damaged", [&](const std::string& name) { d.text(name, std::string(4096, 'x')); }, LeftReason::Damaged},
    };
    for (const Case& c : cases) {
        const std::string history = d.at(c.folder + "/History");
        testing::writeHistoryDatabase(history, Browser::Chrome, testing::sampleHistoryUrls());
        c.favicons(c.folder + "/Favicons");
        const CleanOutcome outcome = purge(testing::chromeHistory(), history, {"porn"});
        ASSERT_EQ(outcome.purged.size(), 1U) << c.folder;
        EXPECT_GT(outcome.purged.front().rowsRemoved, 0) << c.folder;
        if (c.reason) {
            ASSERT_EQ(outcome.left.size(), 1U) << c.folder;
            EXPECT_EQ(outcome.left.front().location, d.at(c.folder + "/Favicons"));
            EXPECT_EQ(outcome.left.front().reason, *c.reason) << outcome.left.front().detail;
        } else {
            EXPECT_TRUE(outcome.left.empty()) << c.folder;
            EXPECT_FALSE(fs::exists(d.at(c.folder + "/Favicons")));
        }
    }
    EXPECT_EQ(testing::treeContents(d.at("/Elsewhere")), outside);
}

// Nothing outside the home, behind a link, or linked to a file elsewhere is changed: not the database, not a
// journal, log or shared-memory file beside it. Each is left as it was, named, with the reason.
TEST_F(HistoryPurge, NoDatabaseOrJournalOutsideTheGrantedFolderBehindALinkOrHardLinkedIsChanged) {
    const std::string outside = d.at("/Elsewhere/History");
    testing::writeHistoryDatabase(outside, Browser::Chrome, testing::sampleHistoryUrls());
    d.text("/Elsewhere/precious.txt", std::string(5000, 'p')).text("/Elsewhere/empty", "");
    const auto decoy = testing::treeContents(d.at("/Elsewhere"));
    d.link("Library/Way", d.at("/Elsewhere")).link("Library/History", outside);
    d.folder("Hard");
    ASSERT_EQ(::link(outside.c_str(), d.at("Hard/History").c_str()), 0);
    // A journal, a log and a shared-memory file that are hard links to files elsewhere: SQLite would write old
    // pages into them, or cut them short.
    testing::writeHistoryDatabase(d.at("Journal/History"), Browser::Chrome, testing::sampleHistoryUrls());
    ::link(d.at("/Elsewhere/empty").c_str(), d.at("Journal/History-journal").c_str());
    testing::writeHistoryDatabase(d.at("Wal/History.db"), Browser::Safari, testing::sampleHistoryUrls());
    sql(d.at("Wal/History.db"), "PRAGMA journal_mode=WAL");
    ::link(d.at("/Elsewhere/precious.txt").c_str(), d.at("Wal/History.db-wal").c_str());
    testing::writeHistoryDatabase(d.at("Shm/places.sqlite"), Browser::Firefox, testing::sampleHistoryUrls());
    ::link(d.at("/Elsewhere/precious.txt").c_str(), d.at("Shm/places.sqlite-shm").c_str());
    const auto inside = testing::treeContents(d.home());

    struct Case {
        Routine routine;
        std::string path;
        LeftReason reason;
    };
    for (const Case& c :
         {Case{testing::chromeHistory(), outside, LeftReason::OutsideBoundary},
          Case{testing::chromeHistory(), d.home() + "/../../Elsewhere/History", LeftReason::OutsideBoundary},
          Case{testing::chromeHistory(), d.at("Library/Way/History"), LeftReason::BehindLink},
          Case{testing::chromeHistory(), d.at("Library/History"), LeftReason::NotPlainFile},
          Case{testing::chromeHistory(), d.at("Hard/History"), LeftReason::NotPlainFile},
          Case{testing::chromeHistory(), d.at("Journal/History"), LeftReason::NotPlainFile},
          Case{testing::safariHistory(), d.at("Wal/History.db"), LeftReason::NotPlainFile},
          Case{testing::firefoxHistory(), d.at("Shm/places.sqlite"), LeftReason::NotPlainFile}}) {
        const CleanOutcome outcome = purge(c.routine, c.path, {"porn"});
        ASSERT_FALSE(outcome.left.empty()) << c.path;
        EXPECT_EQ(outcome.left.front().location, c.path);
        EXPECT_EQ(outcome.left.front().reason, c.reason) << c.path << ": " << outcome.left.front().detail;
        EXPECT_TRUE(outcome.purged.empty()) << c.path;
    }
    EXPECT_EQ(testing::treeContents(d.at("/Elsewhere")), decoy);
    EXPECT_EQ(testing::treeContents(d.home()), inside);
    EXPECT_TRUE(logs.lines().empty()) << "no routine claims a purge it did not make";
}

TEST_F(HistoryPurge, NoRemovedUrlCanBeReadBackFromTheDatabaseOrItsLog) {
    const std::vector<std::string> removed{"https://porn.example/first-visit-kept-in-the-main-file",
                                           "https://porn.example/second-visit-only-in-the-write-ahead-log"};
    const std::string kept = "https://news.example/a-page-that-stays";
    // Firefox's layout in WAL mode, with a second visit still in the log and a connection still open, as a browser
    // leaves it: closing the purge's own connection then does not clear the log.
    const std::string places = d.at("places.sqlite");
    testing::writeHistoryDatabase(places, Browser::Firefox, {removed[0], kept});
    sqlite3* db = nullptr;
    sqlite3_open(places.c_str(), &db);
    int persist = 1;
    sqlite3_file_control(db, "main", SQLITE_FCNTL_PERSIST_WAL, &persist);
    sqlite3_db_config(db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    sqlite3_exec(db, ("INSERT INTO moz_places (id, url) VALUES (3, '" + removed[1] + "')").c_str(), nullptr, nullptr,
                 nullptr);
    ASSERT_NE(fileBytes(places + "-wal").find(removed[1]), std::string::npos);
    // Safari's layout, whose unique index holds every URL a second time.
    const std::string safari = d.at("History.db");
    testing::writeHistoryDatabase(safari, Browser::Safari, {removed[0], kept, removed[1]});

    purge(testing::firefoxHistory(), places, {"porn"});
    purge(testing::safariHistory(), safari, {"porn"});
    sqlite3_close(db);
    for (const std::string& file : {places, places + "-wal", safari, safari + "-journal"}) {
        const std::string bytes = fileBytes(file);
        for (const std::string& url : removed) {
            EXPECT_EQ(bytes.find(url), std::string::npos) << file;
            EXPECT_EQ(bytes.find(url.substr(url.size() - 20)), std::string::npos) << file;
        }
    }
    EXPECT_NE(fileBytes(places).find(kept), std::string::npos);
    EXPECT_NE(fileBytes(safari).find(kept), std::string::npos);
}

} // namespace
} // namespace tidewell
