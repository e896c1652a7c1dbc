#include <gtest/gtest.h>

#include "base/byte_count.hpp"
#include "base/folders.hpp"
#include "sources/builders.hpp"
#include "support/catalogue_helpers.hpp"
#include "support/disk_builder.hpp"

namespace tidewell {
namespace {

using testing::DiskBuilder;
using testing::itemAt;
using testing::itemNames;
using testing::keysOf;
using testing::locationPaths;
using testing::runBuilder;
using testing::TempFolder;

class BrowserSections : public ::testing::Test {
protected:
    TempFolder temp;
    DiskBuilder d{temp.path()};
    const std::string chrome = "Library/Application Support/Google/Chrome/";
    const std::string profiles = "Library/Application Support/Firefox/Profiles/";
};

TEST_F(BrowserSections, SafariListsItsFourteenItemsWithBookmarksAndDownloadsUnticked) {
    d.app("/Applications/Safari.app").file("Library/Safari/History.db", 40000).file("Library/Safari/Bookmarks.plist");
    const BuilderOutcome outcome = runBuilder(addSafariDetails, d.disk());
    ASSERT_TRUE(outcome.section);
    const Record& safari = *outcome.section;
    EXPECT_EQ(keysOf(safari),
              (std::vector<std::string>{"Name", "List", "Size", "Img", "isChecked", "isEnabled", "isFromThornsweep"}));
    EXPECT_EQ(itemNames(safari),
              (std::vector<std::string>{"Cookies", "Browser Caches", "History", "Bookmarks", "Downloads", "LastSession",
                                        "User preferences", "Favicons", "TopSites", "Local Storage", "Reading List",
                                        "Form", "Recent Search", "WebFeeds"}));
    for (std::size_t i = 0; i < 14; ++i) {
        const bool expected = i != 3 && i != 4;
        EXPECT_EQ(itemAt(safari, i).flag("isChecked"), expected) << i;
    }
    // Bookmarks is made by hand: four keys of its own, then what measurement writes.
    EXPECT_EQ(keysOf(itemAt(safari, 3)),
              (std::vector<std::string>{"AllList", "NameText", "isChecked", "sizeText", "isEnabled"}));
    EXPECT_EQ(locationPaths(itemAt(safari, 2)),
              (std::vector<std::string>{d.at("Library/Safari/History.db"), d.at("Library/Safari/HistoryIndex.sk"),
                                        d.at("Library/Safari/History.db-wal")}));
    EXPECT_EQ(locationPaths(itemAt(safari, 0)).front(),
              d.at("Library/Cookies/com.apple.Safari.SafeBrowsing.binarycookies"));
    EXPECT_TRUE(itemAt(safari, 2).flag("isEnabled"));
    EXPECT_FALSE(itemAt(safari, 0).flag("isEnabled"));
    EXPECT_EQ(safari.text("Img"), d.at("/Applications/Safari.app"));
    EXPECT_TRUE(outcome.handOver);
}

TEST_F(BrowserSections, AnEmptySafariIsShownDisabledButTicked) {
    d.app("/Applications/Safari.app");
    const RecordPtr safari = runBuilder(addSafariDetails, d.disk()).section;
    ASSERT_TRUE(safari);
    EXPECT_EQ(safari->text("Size"), "0 byte");
    EXPECT_FALSE(safari->flag("isEnabled"));
    EXPECT_TRUE(safari->flag("isChecked"));
    for (const RecordPtr& item : *safari->list("List")) {
        EXPECT_EQ(item->text("sizeText"), "0 byte");
        EXPECT_FALSE(item->flag("isEnabled"));
    }
}

TEST_F(BrowserSections, AbsentApplicationsAddNoSectionWhateverTheHomeHolds) {
    d.file("Library/Safari/History.db", 5000).file(profiles + "a.default/cookies.sqlite", 5000);
    d.chromeLocalState({{"Default", "Person 1"}});
    d.file("Library/Containers/com.apple.mail/Data/Library/Mail Downloads/x.pdf", 5000);
    d.file("Library/Caches/Adobe/Flash Player/x", 5000);
    for (const auto& builder :
         {addSafariDetails, addGoogleChromeDetails, addMozilaFirefoxDetails, addMailAppDetails, addAdobeFlashDetails}) {
        const BuilderOutcome outcome = runBuilder(builder, d.disk());
        EXPECT_FALSE(outcome.section);
        EXPECT_TRUE(outcome.handOver);
    }
}

TEST_F(BrowserSections, ChromeNeverStartedAddsNothingAndSkipsTheHandOver) {
    d.app("/Applications/Google Chrome.app");
    const BuilderOutcome outcome = runBuilder(addGoogleChromeDetails, d.disk());
    EXPECT_FALSE(outcome.section);
    EXPECT_FALSE(outcome.handOver);
}

TEST_F(BrowserSections, ChromeWithAnUnusableLocalStateHasOnlyTheSharedCaches) {
    d.app("/Applications/Google Chrome.app");
    for (const char* localState :
         {"not json", "[1,2]", R"({"profile":{"info_cache":[]}})", R"({"other":1})", "\xEF\xBB\xBF{\"profile\":{}}"}) {
        d.text(chrome + "Local State", localState);
        const RecordPtr section = runBuilder(addGoogleChromeDetails, d.disk()).section;
        ASSERT_TRUE(section) << localState;
        EXPECT_EQ(itemNames(*section), std::vector<std::string>{"Browser Caches"});
        EXPECT_EQ(locationPaths(itemAt(*section, 0)), std::vector<std::string>{d.at("Library/Caches/Google/Chrome")});
    }
}

TEST_F(BrowserSections, ChromeListsNineItemsPerProfileThenTheCaches) {
    d.app("/Applications/Google Chrome.app").chromeLocalState({{"Default", "Person 1"}, {"Profile 1", "Work"}});
    d.file(chrome + "Default/Pepper Data/plugin.dat", 10000);
    const RecordPtr section = runBuilder(addGoogleChromeDetails, d.disk()).section;
    ASSERT_TRUE(section);
    const auto names = itemNames(*section);
    ASSERT_EQ(names.size(), 19U);
    EXPECT_EQ(names[0], "Cookies (Person 1)");
    EXPECT_EQ(names[8], "Local Storage (Person 1)");
    EXPECT_EQ(names[9], "Cookies (Work)");
    EXPECT_EQ(names[17], "Local Storage (Work)");
    EXPECT_EQ(names[18], "Browser Caches");
    EXPECT_EQ(locationPaths(itemAt(*section, 18)),
              (std::vector<std::string>{d.at(chrome + "Default/Application Cache"), d.at(chrome + "Default/GPUCache"),
                                        d.at(chrome + "Profile 1/Application Cache"),
                                        d.at(chrome + "Profile 1/GPUCache"), d.at("Library/Caches/Google/Chrome")}));
    // "Pepper Data" is listed twice and measured twice.
    const Record& storage = itemAt(*section, 8);
    EXPECT_EQ(locationPaths(storage).size(), 9U);
    EXPECT_EQ(locationPaths(storage)[4], locationPaths(storage)[6]);
    EXPECT_EQ(storage.text("sizeText"),
              formatByteCount(2 * SizeCounter(0).fileSizeOf(d.at(chrome + "Default/Pepper Data"))));
}

TEST_F(BrowserSections, ChromeProfilesKeepTheirOwnNamesEvenWhenTheyRepeatOrLackOne) {
    d.app("/Applications/Google Chrome.app");
    d.text(chrome + "Local State",
           R"({"profile":{"info_cache":{"Profile 3":{"name":"Twin"},"Default":{"name":"Twin"},"Profile 9":{"x":1},)"
           R"("Profile 7":{"name":42}}}})");
    const auto names = itemNames(*runBuilder(addGoogleChromeDetails, d.disk()).section);
    ASSERT_EQ(names.size(), 37U);
    EXPECT_EQ(names[0], "Cookies (Twin)");
    EXPECT_EQ(names[9], "Cookies (Twin)");
    EXPECT_EQ(names[18], "Cookies ()");
    EXPECT_EQ(names[27], "Cookies ()");
}

TEST_F(BrowserSections, FirefoxCleansTheFirstDefaultProfileListed) {
    d.app("/Applications/Firefox.app");
    d.file(profiles + "abcd.default/prefs.js", 3000).file(profiles + "efgh.default-release/prefs.js", 3000);
    d.file(profiles + "zz.Other/prefs.js");
    std::string first;
    for (const std::string& name : listFolderNames(d.at(profiles))) {
        if (name.find("default") != std::string::npos) {
            first = name;
            break;
        }
    }
    const RecordPtr section = runBuilder(addMozilaFirefoxDetails, d.disk()).section;
    ASSERT_TRUE(section);
    EXPECT_EQ(itemNames(*section), (std::vector<std::string>{"Cookies", "Browser Caches", "Login Data", "LastSession",
                                                             "User preferences", "Local Storage", "Crash Reports"}));
    EXPECT_EQ(locationPaths(itemAt(*section, 4)),
              (std::vector<std::string>{d.at(profiles + first + "/user.js"), d.at(profiles + first + "/xulstore.json"),
                                        d.at(profiles + first + "/prefs.js")}));
    EXPECT_EQ(locationPaths(itemAt(*section, 6)),
              std::vector<std::string>{d.at("Library/Application Support/Firefox/Crash Reports")});
}

TEST_F(BrowserSections, FirefoxWithoutALowerCaseDefaultProfileHasNoItems) {
    d.app("/Applications/Firefox.app");
    const RecordPtr neverStarted = runBuilder(addMozilaFirefoxDetails, d.disk()).section;
    ASSERT_TRUE(neverStarted);
    EXPECT_TRUE(itemNames(*neverStarted).empty());
    EXPECT_EQ(neverStarted->text("Size"), "0 byte");
    EXPECT_FALSE(neverStarted->flag("isEnabled"));
    EXPECT_TRUE(neverStarted->flag("isChecked"));

    d.file(profiles + "x1y2.Default/prefs.js", 3000);
    EXPECT_TRUE(itemNames(*runBuilder(addMozilaFirefoxDetails, d.disk()).section).empty());
}

} // namespace
} // namespace tidewell
