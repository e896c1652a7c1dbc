#include <gtest/gtest.h>

#include "flows/purge_run.hpp"
#include "support/disk_builder.hpp"
#include "support/fake_running_apps.hpp"
#include "support/literal_purge.hpp"
#include "support/log_capture.hpp"
#include "support/sample_disk.hpp"

namespace tidewell {
namespace {

TEST(HourlyPurge, PurgesEveryInstalledBrowserUnlessOneRuns) {
    testing::TempFolder temp;
    testing::DiskBuilder d{temp.path() + "/disk"};
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
        EXPECT_FALSE(runHourlyPurge(d.disk(), testing::FakeRunningApps({{"firefox-bin", "Terminal"}}), engine, words));
        engine.joinAll();
        EXPECT_EQ(logs.lines(), std::vector<std::string>{"App Opens"});
        EXPECT_EQ(testing::tableDump(safari, "history_items").size(), 8U);
        EXPECT_TRUE(runHourlyPurge(d.disk(), testing::FakeRunningApps({{"Terminal"}}), engine, words));
    } // the engine owns its tasks: they are joined when it goes
    EXPECT_EQ(loads, 2);
    std::vector<std::string> lines = logs.lines();
    // Both Chrome profiles are purged.
    ASSERT_EQ(lines.size(), 7U);
    std::sort(lines.begin() + 3, lines.end());
    EXPECT_EQ(lines, (std::vector<std::string>{"App Opens", "Data Collection", "Remove Start", "Chrome Deleted",
                                               "Chrome Deleted", "Firefox Deleted", "Safari Deleted"}));
    EXPECT_EQ(testing::tableDump(safari, "history_items").size(), 7U);
    for (const char* profile : {"Default", "Profile 1"}) {
        EXPECT_EQ(
            testing::tableDump(d.at(std::string("Library/Application Support/Google/Chrome/") + profile + "/History"),
                               "urls")
                .size(),
            7U)
            << profile;
    }
}

} // namespace
} // namespace tidewell
