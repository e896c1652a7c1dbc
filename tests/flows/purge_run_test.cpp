#include <gtest/gtest.h>

#include "flows/purge_run.hpp"
#include "sample_disk/sample_disk.hpp"
#include "support/disk_builder.hpp"
#include "support/fake_running_apps.hpp"
#include "support/literal_purge.hpp"
#include "support/log_capture.hpp"

namespace tidewell {
namespace {

TEST(HourlyPurge, PurgesEveryInstalledBrowserUnlessOneRuns) {
    testing::TempFolder temp;
    testing::DiskBuilder d{temp.path() + "/disk"};
    testing::writeSampleDisk(d.root());
    // A second Firefox profile, whose name does not say "default".
    const std::string work = d.at("Library/Application Support/Firefox/Profiles/w0rk1234.work/places.sqlite");
    testing::writeHistoryDatabase(work, testing::Browser::Firefox, testing::sampleHistoryUrls());
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
    // Both Chrome profiles and both Firefox profiles are purged.
    ASSERT_EQ(lines.size(), 8U);
    std::sort(lines.begin() + 3, lines.end());
    EXPECT_EQ(lines,
              (std::vector<std::string>{"App Opens", "Data Collection", "Remove Start", "Chrome Deleted",
                                        "Chrome Deleted", "Firefox Deleted", "Firefox Deleted", "Safari Deleted"}));
    EXPECT_EQ(testing::tableDump(work, "moz_places").size(), 7U);
    EXPECT_EQ(testing::tableDump(safari, "history_items").size(), 7U);
    for (const char* profile : {"Default", "Profile 1"}) {
        EXPECT_EQ(testing::tableDump(
                      d.at(std::string("Library/Application Support/Google/Chrome/") + profile + "/History"), "urls")
                      .size(),
                  7U)
            << profile;
    }
}

// On a Linux home: every profile of every Chrome-family browser that "Local State" names, and every profile
// profiles.ini names, each in whichever of its data folders the browser keeps.
TEST(HourlyPurge, PurgesEveryProfileOfEveryBrowserOnALinuxHome) {
    testing::TempFolder temp;
    const std::string root = temp.path() + "/disk";
    testing::writeSampleDisk(root, "ann", linuxLayout());
    testing::DiskBuilder d{root, "ann", linuxLayout()};
    const std::vector<std::string> urls = testing::sampleHistoryUrls();
    const std::string brave = ".config/BraveSoftware/Brave-Browser";
    d.chromeLocalState({{"Default", "Me"}, {"Profile 2", "Other"}}, brave);
    std::vector<std::string> histories{d.at(brave + "/Default/History"), d.at(brave + "/Profile 2/History"),
                                       d.at(".config/google-chrome/Default/History"),
                                       d.at(".config/google-chrome/Profile 1/History"),
                                       d.at("snap/chromium/common/chromium/Default/History")};
    for (std::size_t i = 0; i < 2; ++i) {
        testing::writeHistoryDatabase(histories[i], testing::Browser::Chrome, urls);
    }
    const std::vector<std::string> places{d.at(".mozilla/firefox/k2x9w0aq.default-release/places.sqlite"),
                                          d.at(".mozilla/firefox/m4p7q1zz.default/places.sqlite")};
    testing::writeHistoryDatabase(places[1], testing::Browser::Firefox, urls);
    {
        CleaningEngine engine(CleanMode::RealTime, DeletionBoundary(d.home()));
        EXPECT_TRUE(runHourlyPurge(d.disk(), testing::FakeRunningApps({{"Terminal"}}), engine, [] {
            return makeAdultWords({"porn", "xxx"});
        }));
        EXPECT_FALSE(engine.joinAll().leftAnything());
    }
    for (const std::string& history : histories) {
        EXPECT_EQ(testing::tableDump(history, "urls").size(), urls.size() - 2) << history;
    }
    for (const std::string& place : places) {
        EXPECT_EQ(testing::tableDump(place, "moz_places").size(), urls.size() - 2) << place;
    }
}

} // namespace
} // namespace tidewell
