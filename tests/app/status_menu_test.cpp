#include <QAction>
#include <QMenu>
#include <QTest>
#include <QThread>
#include <QTimer>

#include "app_fixture.hpp"

namespace tidewell::testing {
namespace {

class StatusMenuTest : public AppFixture {
protected:
    std::unique_ptr<AppDelegate> delegate;

    void SetUp() override {
        AppFixture::SetUp();
        storeGrant("/Users/ann");
    }

    QAction* entry(int index) const { return delegate->menuStatusBar()->actions().at(index); }

    // Every running real-time timer the delegate owns, not just the one it points to.
    int activeTimers() const {
        int count = 0;
        for (const QTimer* timer : delegate->findChildren<QTimer*>(QStringLiteral("realTimeScanningTimer"))) {
            count += timer->isActive() ? 1 : 0;
        }
        return count;
    }
};

TEST_F(StatusMenuTest, TheMenuHasItsThreeEntriesEachWithItsTitleAsKeyEquivalent) {
    delegate = makeDelegate();
    delegate->setupMenu();
    delegate->setupMenu();
    QMenu* menu = delegate->menuStatusBar();
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(menu->title(), "StatusMenu");
    ASSERT_EQ(menu->actions().size(), 3) << "built afresh, not added to";
    const QStringList titles{"Real Time Scan", "Open Main Console", "Quit"};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(entry(i)->text(), titles[i]);
        EXPECT_EQ(entry(i)->property("keyEquivalent").toString(), titles[i]);
    }
    // Offscreen there is no status area, so no icon; the menu works all the same.
    EXPECT_EQ(delegate->statusItem(), nullptr);
}

TEST_F(StatusMenuTest, TheRealTimeEntryTogglesStoresAndIsRetitled) {
    delegate = launch();
    EXPECT_EQ(entry(0)->text(), "Real-time Scan Enabled");
    EXPECT_TRUE(entry(0)->isChecked());

    entry(0)->trigger();
    EXPECT_EQ(entry(0)->text(), "Real-time Scan Disabled");
    EXPECT_FALSE(entry(0)->isChecked());
    EXPECT_EQ(stored(keys::kRealTimeScan), QVariant(false));
    EXPECT_EQ(delegate->realTimeScanningTimer(), nullptr);
    EXPECT_EQ(activeTimers(), 0);
    EXPECT_EQ(entry(0)->property("keyEquivalent").toString(), "Real Time Scan");

    entry(0)->trigger();
    EXPECT_EQ(entry(0)->text(), "Real-time Scan Enabled");
    EXPECT_TRUE(entry(0)->isChecked());
    EXPECT_EQ(stored(keys::kRealTimeScan), QVariant(true));
    EXPECT_EQ(activeTimers(), 1) << "exactly one timer after switching off and on";
}

TEST_F(StatusMenuTest, AStoredOffSettingStartsWithoutATimerAndTheBoxCanTurnItOn) {
    AppSettings(settingsFile).setBool(keys::kRealTimeScan, false);
    delegate = launch();
    EXPECT_FALSE(delegate->isRealTimeProtectionON());
    EXPECT_EQ(entry(0)->text(), "Real-time Scan Disabled");
    EXPECT_EQ(activeTimers(), 0);
    delegate->realTimeScanning(true);
    EXPECT_EQ(activeTimers(), 0) << "starting does nothing while the setting is off";

    delegate->realTimeScanChange(true);
    delegate->realTimeScanChange(true);
    delegate->realTimeScanning(true);
    EXPECT_EQ(activeTimers(), 1);
    EXPECT_EQ(entry(0)->text(), "Real-time Scan Enabled");
}

TEST_F(StatusMenuTest, EachTickRunsThePurgeOnTheMainThreadOnePeriodAfterTheStart) {
    delegate = makeDelegate();
    std::vector<bool> onMainThread;
    delegate->setRealTimePurge([&] { onMainThread.push_back(QThread::currentThread() == qApp->thread()); });
    delegate->setRealTimePeriod(std::chrono::milliseconds(40));
    delegate->realTimeScanChange(true);
    QCoreApplication::processEvents();
    EXPECT_TRUE(onMainThread.empty()) << "nothing runs at once";
    ASSERT_TRUE(QTest::qWaitFor([&] { return onMainThread.size() >= 2; }, 5000)) << "it repeats";
    EXPECT_EQ(std::count(onMainThread.begin(), onMainThread.end(), false), 0);

    delegate->realTimeScanChange(false);
    const std::size_t runs = onMainThread.size();
    QTest::qWait(150);
    EXPECT_EQ(onMainThread.size(), runs) << "switched off, it stops";
}

TEST_F(StatusMenuTest, OpenMainConsoleBringsTheShownWindowBack) {
    AppSettings(settingsFile).setBool(keys::kDockIcon, true);
    delegate = launch();
    ASSERT_NE(delegate->mainWindow(), nullptr);
    delegate->mainWindow()->close();
    entry(1)->trigger();
    EXPECT_TRUE(delegate->mainWindow()->isVisible());
}

} // namespace
} // namespace tidewell::testing
