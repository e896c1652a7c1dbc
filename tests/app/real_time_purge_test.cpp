#include <gtest/gtest.h>

#include <QTest>

#include "app/real_time_purge.hpp"
#include "app_fixture.hpp"
#include "sample_disk/sample_disk.hpp"
#include "support/fake_running_apps.hpp"
#include "support/literal_purge.hpp"
#include "support/log_capture.hpp"

namespace tidewell::testing {
namespace {

// The sample disk's Safari history holds eight visits, one of them to an adult site.
class RealTimePurgeTest : public AppFixture {
protected:
    std::string safari;
    std::string chrome;

    void SetUp() override {
        AppFixture::SetUp();
        writeSampleDisk(disk.root());
        safari = disk.at("Library/Safari/History.db");
        chrome = disk.at("Library/Application Support/Google/Chrome/Default/History");
    }

    // A purger for the word "porn" with no browser running, bounded by whatever grant `granted` gives.
    RealTimePurger purgerWithin(std::function<std::optional<FolderGrant>()> granted) {
        return RealTimePurger(disk.disk(), std::move(granted),
                              std::make_unique<FakeRunningApps>(std::initializer_list<std::set<std::string>>{{}}),
                              [] { return makeAdultWords({"porn"}); });
    }
};

TEST_F(RealTimePurgeTest, NothingRunsWithoutAStartedGrant) {
    const LogCapture logs;
    RealTimePurger ungranted = purgerWithin([]() -> std::optional<FolderGrant> { return std::nullopt; });
    EXPECT_FALSE(ungranted.run());
    EXPECT_TRUE(logs.lines().empty());
    EXPECT_EQ(tableDump(safari, "history_items").size(), 8U);
}

TEST_F(RealTimePurgeTest, TheStartedGrantIsTheBoundaryOfThePurge) {
    disk.folder("/Users/bob");
    std::optional<FolderGrant> granted = createFolderGrant(disk.at("/Users/bob")).value();
    RealTimePurger purge = purgerWithin([&] { return granted; });
    EXPECT_TRUE(purge.run());
    purge.joinAll();
    EXPECT_EQ(tableDump(safari, "history_items").size(), 8U) << "ann's history lies outside bob's grant";

    granted = createFolderGrant(disk.at("/Users")).value();
    EXPECT_TRUE(purge.run());
    purge.joinAll();
    EXPECT_EQ(tableDump(safari, "history_items").size(), 7U);
    EXPECT_EQ(tableDump(chrome, "urls").size(), 7U);
}

TEST_F(RealTimePurgeTest, TheHourlyTickPurgesInsideTheGrantOfTheLaunch) {
    storeGrant("/Users/ann");
    const auto application = makeApplication();
    RealTimePurger purge = purgerWithin([&] { return application->cleaningGrant(); });
    int runs = 0;
    application->setRealTimePurge([&] {
        ++runs;
        purge.run();
    });
    application->scheduler().setPeriod(std::chrono::milliseconds(30));
    application->start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return runs >= 1; }, 5000));
    application->setRealTimeScan(false);
    purge.joinAll();
    EXPECT_EQ(tableDump(safari, "history_items").size(), 7U);
}

} // namespace
} // namespace tidewell::testing
