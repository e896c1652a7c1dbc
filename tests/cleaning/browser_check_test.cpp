#include <gtest/gtest.h>

#include "cleaning/browser_check.hpp"
#include "support/disk_builder.hpp"
#include "support/fake_running_apps.hpp"
#include "support/log_capture.hpp"

namespace tidewell {
namespace {

using Names = std::vector<std::string>;

class BrowserCheck : public ::testing::Test {
protected:
    BrowserPanel panel(bool answer) {
        return BrowserPanel{[this, answer] {
                                ++asked;
                                return answer;
                            },
                            [this](const RecordList& entries) { shown.push_back(names(entries)); },
                            [this](const RecordList& entries) { reloaded.push_back(names(entries)); }};
    }
    static Names names(const RecordList& entries) {
        Names result;
        for (const RecordPtr& entry : entries) {
            result.push_back(entry->text("NameBrowser"));
        }
        return result;
    }
    static RecordPtr section(const char* name) { return makeRecord({{"Name", std::string(name)}}); }
    static RecordPtr adultHistory(std::initializer_list<const char*> items) {
        RecordList list;
        for (const char* item : items) {
            list.push_back(makeRecord({{"NameText", std::string(item)}, {"isChecked", false}}));
        }
        return makeRecord({{"Name", std::string("Adult History")}, {"List", list}});
    }

    testing::TempFolder temp;
    DiskRoot disk = testing::DiskBuilder(temp.path()).disk();
    testing::LogCapture logs;
    int asked = 0;
    std::vector<Names> shown;
    std::vector<Names> reloaded;
};

TEST_F(BrowserCheck, ATickedBrowserSectionIsListedUntilItsBrowserQuits) {
    const RecordList sections{section("Safari"), section("Chrome"), section("System")};
    const testing::FakeRunningApps running({{"Google Chrome"}, {"Google Chrome"}, {}});
    EXPECT_FALSE(forceQuitBrowsers(&sections, disk, running, panel(false))); // "No": not even a look
    EXPECT_EQ(running.looks(), 0U);
    EXPECT_FALSE(forceQuitBrowsers(&sections, disk, running, panel(true)));
    EXPECT_EQ(shown, std::vector<Names>{{"Chrome"}});
    EXPECT_FALSE(tryAgain(&sections, disk, running, panel(true)));
    EXPECT_TRUE(tryAgain(&sections, disk, running, panel(true)));
    EXPECT_EQ(reloaded, std::vector<Names>{{"Chrome"}});
    EXPECT_EQ(asked, 2);
}

TEST_F(BrowserCheck, AdultHistoryItemsListTheirBrowserOnceButRetryNoLongerLooksAtThem) {
    const RecordList sections{section("Safari"),
                              adultHistory({"Google Chrome Adult History", "Safari Adult History", "Other"})};
    const testing::FakeRunningApps running({{"Safari", "Google Chrome"}});
    EXPECT_FALSE(forceQuitBrowsers(&sections, disk, running, panel(true)));
    EXPECT_EQ(shown, (std::vector<Names>{{"Safari", "Chrome"}}));
    EXPECT_EQ(logs.lines(), Names{"Not added"});
    EXPECT_FALSE(tryAgain(&sections, disk, running, panel(true)));
    EXPECT_EQ(reloaded, std::vector<Names>{{"Safari"}});
    // Safari and Chrome still run, but only the adult-history items concern them now.
    const RecordList adultOnly{sections[1]};
    EXPECT_TRUE(tryAgain(&adultOnly, disk, running, panel(true)));
}

TEST_F(BrowserCheck, WithoutSectionsEveryBrowserIsLookedAtAndEntriesShowTheBundle) {
    const testing::FakeRunningApps running({{"Firefox", "Google Chrome", "Safari"}});
    RecordList entries;
    const BrowserPanel keep{[] { return true; }, [&](const RecordList& listed) { entries = listed; }, {}};
    EXPECT_FALSE(forceQuitBrowsers(nullptr, disk, running, keep));
    EXPECT_EQ(names(entries), (Names{"Safari", "Chrome", "Firefox"}));
    EXPECT_EQ(entries[1]->text("iconBrowser"), disk.resolve("/Applications/Google Chrome.app"));
    const RecordList catalogue{section("A"), makeRecord({{"Name", std::string("B")}, {"isChecked", false}}),
                               makeRecord({{"Type", std::string("Scan")}})};
    EXPECT_EQ(tickedSections(catalogue), (RecordList{catalogue[0], catalogue[2]}));
}

} // namespace
} // namespace tidewell
