#include <gtest/gtest.h>

#include "flows/purge_run.hpp"
#include "sources/adult_history_section.hpp"
#include "support/catalogue_helpers.hpp"
#include "support/disk_builder.hpp"
#include "support/fake_running_apps.hpp"
#include "support/literal_purge.hpp"
#include "support/log_capture.hpp"
#include "support/sample_disk.hpp"

namespace tidewell {
namespace {

using testing::itemNames;
using testing::keysOf;

class AdultHistorySection : public ::testing::Test {
protected:
    testing::TempFolder temp;
    testing::DiskBuilder d{temp.path() + "/disk"};
};

TEST_F(AdultHistorySection, HoldsOneDatabaseItemPerInstalledBrowserInChromeSafariFirefoxOrder) {
    d.allApps().folder("Library/Application Support/Firefox/Profiles/abc.default-release");
    const RecordPtr section = testing::runBuilder(addAdultContent, d.disk()).section;
    ASSERT_NE(section, nullptr);
    EXPECT_EQ(keysOf(*section), (std::vector<std::string>{"Name", "Img", "List", "isChecked", "isEnabled"}));
    EXPECT_EQ(section->text("Name"), "Adult History");
    EXPECT_EQ(section->text("Img"), "adult");
    EXPECT_TRUE(isTrue(*section, "isChecked") && isTrue(*section, "isEnabled"));
    EXPECT_EQ(itemNames(*section), (std::vector<std::string>{"Google Chrome Adult History", "Safari Adult History",
                                                             "Firefox Adult History"}));
    const std::vector<std::string> databases{
        "Library/Application Support/Google/Chrome/Default/History", "Library/Safari/History.db",
        "Library/Application Support/Firefox/Profiles/abc.default-release/places.sqlite"};
    for (std::size_t i = 0; i < databases.size(); ++i) {
        const Record& item = testing::itemAt(*section, i);
        EXPECT_EQ(keysOf(item), (std::vector<std::string>{"NameText", "isChecked", "isEnabled", "Path"}));
        EXPECT_TRUE(isTrue(item, "isChecked") && isTrue(item, "isEnabled"));
        ASSERT_NE(item.url("Path"), nullptr);
        EXPECT_EQ(item.url("Path")->path, d.at(databases[i]));
    }
}

TEST_F(AdultHistorySection, LeavesOutBrowsersNotInstalledAndFirefoxWithoutADefaultProfile) {
    EXPECT_TRUE(itemNames(*makeAdultHistorySection(d.disk())).empty());
    d.app("/Applications/Firefox.app").app("/Applications/Google Chrome.app");
    d.folder("Library/Application Support/Firefox/Profiles/Default");
    EXPECT_EQ(itemNames(*makeAdultHistorySection(d.disk())), std::vector<std::string>{"Google Chrome Adult History"});
}

TEST_F(AdultHistorySection, TheHourlyRunPurgesEveryInstalledBrowserUnlessOneRuns) {
    testing::writeSampleDisk(d.root());
    const std::string safari = d.at("Library/Safari/History.db");
    const testing::LogCapture logs;
    int loads = 0;
    const auto words = [&] {
        ++loads;
        return makeAdultWords({"porn"});
    };
    {
        CleaningEngine engine(CleanMode::RealTime, DeletionBoundary(d.home()));
        EXPECT_FALSE(addAdultContents(d.disk(), testing::FakeRunningApps({{"Firefox", "Terminal"}}), engine, words));
        engine.joinAll();
        EXPECT_EQ(logs.lines(), std::vector<std::string>{"App Opens"});
        EXPECT_EQ(testing::tableDump(safari, "history_items").size(), 8U);
        EXPECT_TRUE(addAdultContents(d.disk(), testing::FakeRunningApps({{"Terminal"}}), engine, words));
    } // the engine owns its tasks: they are joined when it goes
    EXPECT_EQ(loads, 2);
    std::vector<std::string> lines = logs.lines();
    ASSERT_EQ(lines.size(), 6U);
    std::sort(lines.begin() + 3, lines.end());
    EXPECT_EQ(lines, (std::vector<std::string>{"App Opens", "Data Collection", "Remove Start", "Chrome Deleted",
                                               "Firefox Deleted", "Safari Deleted"}));
    EXPECT_EQ(testing::tableDump(safari, "history_items").size(), 7U);
    EXPECT_EQ(testing::tableDump(d.at("Library/Application Support/Google/Chrome/Default/History"), "urls").size(), 7U);
}

} // namespace
} // namespace tidewell
