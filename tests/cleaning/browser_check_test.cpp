#include <gtest/gtest.h>

#include "cleaning/browser_check.hpp"
#include "support/disk_builder.hpp"
#include "support/fake_running_apps.hpp"
#include "support/log_capture.hpp"

namespace tidewell {
namespace {

using Names = std::vector<std::string>;

const Browser& browser(std::string_view key) {
    return *findBrowser(macosLayout(), key);
}

Names names(const RecordList& entries) {
    Names result;
    for (const RecordPtr& entry : entries) {
        result.push_back(entry->text("NameBrowser"));
    }
    return result;
}

// A browser's section, marked as the builders mark it; its name alone would make it no browser's.
RecordPtr section(const char* key) {
    return makeRecord({{"Name", std::string("S")}}, {RecordKind::SourceSection, &browser(key)});
}

RecordPtr adultHistory(std::initializer_list<const char*> keys) {
    RecordList list;
    for (const char* key : keys) {
        list.push_back(makeRecord({{"NameText", std::string("N")}, {"isChecked", false}},
                                  {RecordKind::HistoryItem, *key != '\0' ? &browser(key) : nullptr}));
    }
    return makeRecord({{"Name", std::string("Adult History")}, {"List", list}}, {RecordKind::AdultHistorySection});
}

class BrowserCheck : public ::testing::Test {
protected:
    testing::TempFolder temp;
    DiskRoot disk = testing::DiskBuilder(temp.path()).disk();
    testing::LogCapture logs;
};

TEST_F(BrowserCheck, ABrowsersSectionHoldsTheCleanWhileAnyOfItsProcessesRuns) {
    const RecordList sections{section("safari"), section("chrome"), makeRecord({{"Name", std::string("Chrome")}})};
    const testing::FakeRunningApps running({{"google-chrome"}, {"chrome", "Terminal"}, {"Terminal"}});
    const RecordList entries = browsersInTheWay(sections, disk, running);
    EXPECT_EQ(names(entries), Names{"Chrome"}) << "a section named Chrome that no builder marked is no browser's";
    EXPECT_EQ(entries[0]->text("iconBrowser"), disk.resolve("/Applications/Google Chrome.app"));
    EXPECT_EQ(entries[0]->role().icon, "browser_chrome");
    EXPECT_EQ(names(browsersStillInTheWay(sections, disk, running)), Names{"Chrome"});
    EXPECT_TRUE(browsersStillInTheWay(sections, disk, running).empty());
    EXPECT_EQ(running.looks(), 3U) << "one look at the running programs per check";
}

TEST_F(BrowserCheck, AdultHistoryItemsListTheirBrowserOnceButRetryNoLongerLooksAtThem) {
    const RecordList sections{section("safari"), adultHistory({"chrome", "safari", ""})};
    const testing::FakeRunningApps running({{"Safari", "Google Chrome"}});
    EXPECT_EQ(names(browsersInTheWay(sections, disk, running)), (Names{"Safari", "Chrome"}));
    EXPECT_EQ(logs.lines(), Names{"Not added"});
    EXPECT_EQ(names(browsersStillInTheWay(sections, disk, running)), Names{"Safari"});
    // Safari and Chrome still run, but only the adult-history items concern them now.
    EXPECT_TRUE(browsersStillInTheWay({sections[1]}, disk, running).empty());

    EXPECT_EQ(runningBrowsers(macosLayout(), testing::FakeRunningApps({{"firefox-esr", "Safari"}})),
              (std::vector<const Browser*>{&browser("safari"), &browser("firefox")}));
    const RecordList catalogue{section("safari"), makeRecord({{"Name", std::string("B")}, {"isChecked", false}}),
                               makeRecord({{"Type", std::string("Scan")}})};
    EXPECT_EQ(tickedSections(catalogue), (RecordList{catalogue[0], catalogue[2]}));
}

} // namespace
} // namespace tidewell
