#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "cleaning/history_purge.hpp"
#include "support/disk_builder.hpp"
#include "support/literal_purge.hpp"
#include "support/log_capture.hpp"
#include "support/sample_disk.hpp"

namespace tidewell {
namespace {

namespace fs = std::filesystem;
using testing::Browser;

using Routine = void (*)(const FileUrl&, const PurgeContext&);

void sql(const std::string& path, const std::string& statements) {
    sqlite3* db = nullptr;
    sqlite3_open(path.c_str(), &db);
    ASSERT_EQ(sqlite3_exec(db, statements.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
    sqlite3_close(db);
}

std::string fileBytes(const std::string& path) {
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}

class HistoryPurge : public ::testing::Test {
protected:
    void purge(Routine routine, const std::string& path, std::vector<std::string> words,
               CleanMode mode = CleanMode::Interactive) const {
        routine(FileUrl{path}, PurgeContext{makeAdultWords(std::move(words)), boundary, mode});
    }

    testing::TempFolder temp;
    testing::DiskBuilder d{temp.path() + "/disk"};
    DeletionBoundary boundary{d.home()};
    testing::LogCapture logs;
};

TEST_F(HistoryPurge, EachRoutineEmptiesOnlyItsOwnTableOfMatchingUrlsAndLogsItsText) {
    struct Case {
        Routine routine;
        Browser browser;
        const char* table;
        const char* otherTable;
        CleanMode mode;
        const char* log;
    };
    const std::vector<Case> cases{
        {deleteSafariAdultHistory, Browser::Safari, "history_items", "history_visits", CleanMode::Interactive,
         "Safari Deleted"},
        {deleteChromeAdultHistory, Browser::Chrome, "urls", "visits", CleanMode::RealTime, "Chrome Deleted"},
        {deleteFireFoxAdultHistory, Browser::Firefox, "moz_places", "moz_historyvisits", CleanMode::Interactive,
         "Chrome Deleted"},
        {deleteFireFoxAdultHistory, Browser::Firefox, "moz_places", "moz_historyvisits", CleanMode::RealTime,
         "Firefox Deleted"},
    };
    for (const Case& c : cases) {
        const std::string path = d.at(std::string("History/") + c.table + std::to_string(static_cast<int>(c.mode)));
        testing::writeHistoryDatabase(path, c.browser, testing::sampleHistoryUrls());
        const std::size_t visits = testing::tableDump(path, c.otherTable).size();
        purge(c.routine, path, {"porn", "SEXCAM", "xxx"}, c.mode);
        EXPECT_EQ(testing::tableDump(path, c.table).size(), 5U) << c.table;
        EXPECT_EQ(testing::tableDump(path, c.otherTable).size(), visits) << c.otherTable;
        EXPECT_EQ(logs.lines().back(), c.log);
    }
}

TEST_F(HistoryPurge, AnIdAboveTwoToTheThirtyFirstMissesItsRowAndItsLowBitsNameAnother) {
    const std::string path = d.at("History");
    testing::writeHistoryDatabase(path, Browser::Chrome, {"https://news.example/", "https://shop.example/"});
    sql(path, "INSERT INTO urls (id, url, last_visit_time) VALUES (4294967298, 'https://porn.example/', 0)");
    purge(deleteChromeAdultHistory, path, {"porn"});
    const std::vector<std::string> rows = testing::tableDump(path, "urls");
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_NE(rows[0].find("news.example"), std::string::npos);
    EXPECT_NE(rows[1].find("porn.example"), std::string::npos); // row 2 (shop) went in its place
}

TEST_F(HistoryPurge, ChromeSessionFilesGoWhetherOrNotARowMatchedAndAMissingDatabaseIsNotMade) {
    const std::string profile = "Library/Application Support/Google/Chrome/Default/";
    testing::writeHistoryDatabase(d.at(profile + "History"), Browser::Chrome, {"https://news.example/"});
    d.text(profile + "Current Session", "s").text(profile + "Current Tabs", "t");
    purge(deleteChromeAdultHistory, d.at(profile + "History"), {});
    EXPECT_FALSE(fs::exists(d.at(profile + "Current Session")));
    EXPECT_FALSE(fs::exists(d.at(profile + "Current Tabs")));
    EXPECT_EQ(testing::tableDump(d.at(profile + "History"), "urls").size(), 1U);

    // Never run: the folder is there, the database is not.
    d.text("Other/Current Session", "s");
    purge(deleteChromeAdultHistory, d.at("Other/History"), {"porn"});
    EXPECT_FALSE(fs::exists(d.at("Other/History")));
    EXPECT_FALSE(fs::exists(d.at("Other/Current Session")));
    EXPECT_EQ(logs.lines(), (std::vector<std::string>{"Chrome Deleted", "Chrome Deleted"}));

    // No folder either: nothing to open, nothing logged.
    purge(deleteChromeAdultHistory, d.at("Nowhere/History"), {"porn"});
    EXPECT_EQ(logs.lines().size(), 2U);
}

TEST_F(HistoryPurge, NoDatabaseOutsideTheGrantedFolderOrBehindALinkIsOpened) {
    const std::string outside = d.at("/Elsewhere/History");
    testing::writeHistoryDatabase(outside, Browser::Chrome, testing::sampleHistoryUrls());
    const std::vector<std::string> before = testing::tableDump(outside, "urls");
    d.link("Library/Way", d.at("/Elsewhere")).link("Library/History", outside);
    for (const std::string& path :
         {outside, d.home() + "/../../Elsewhere/History", d.at("Library/Way/History"), d.at("Library/History")}) {
        purge(deleteChromeAdultHistory, path, {"porn"});
    }
    EXPECT_EQ(testing::tableDump(outside, "urls"), before);
    EXPECT_TRUE(logs.lines().empty());
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

    purge(deleteFireFoxAdultHistory, places, {"porn"});
    purge(deleteSafariAdultHistory, safari, {"porn"});
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
