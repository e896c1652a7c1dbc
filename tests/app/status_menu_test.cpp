#include <QAction>
#include <QImage>
#include <QMenu>
#include <QPainter>
#include <QSystemTrayIcon>
#include <QTest>
#include <QThread>
#include <QTimer>
#include <cstdlib>

#include "app_fixture.hpp"

namespace tidewell::testing {
namespace {

class StatusMenuTest : public AppFixture {
protected:
    std::unique_ptr<Application> application;

    void SetUp() override {
        AppFixture::SetUp();
        storeGrant("/Users/ann");
    }

    QAction* entry(int index) const { return application->statusMenu().menu()->actions().at(index); }

    // Every running real-time timer the scheduler owns, not just the one it points to.
    int activeTimers() const {
        int count = 0;
        for (const QTimer* timer : application->scheduler().findChildren<QTimer*>()) {
            count += timer->isActive() ? 1 : 0;
        }
        return count;
    }
};

TEST_F(StatusMenuTest, TheMenuHasItsThreeEntriesEachWithItsTitleAsKeyEquivalent) {
    application = makeApplication();
    QMenu* menu = application->statusMenu().menu();
    EXPECT_EQ(menu->title(), "StatusMenu");
    ASSERT_EQ(menu->actions().size(), 3);
    const QStringList titles{"Real Time Scan", "Open Main Console", "Quit"};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(entry(i)->text(), titles[i]);
        EXPECT_EQ(entry(i)->property("keyEquivalent").toString(), titles[i]);
    }
    EXPECT_EQ(application->statusMenu().icon(), nullptr) << "none before the first refresh";
    // Offscreen there is no status area; the icon is made all the same, for one that appears later.
    application->statusMenu().refresh(true);
    ASSERT_NE(application->statusMenu().icon(), nullptr);
    EXPECT_FALSE(application->statusMenu().icon()->icon().isNull());
}

// How many of the icon's pixels stand out from a panel of the given colour once drawn on it.
int pixelsStandingOutOn(const QIcon& icon, const QColor& panel) {
    QImage drawn(22, 22, QImage::Format_RGB32);
    drawn.fill(panel);
    QPainter painter(&drawn);
    painter.drawPixmap(0, 0, icon.pixmap(22, 22));
    painter.end();
    int count = 0;
    for (int y = 0; y < drawn.height(); ++y) {
        for (int x = 0; x < drawn.width(); ++x) {
            const QColor pixel = drawn.pixelColor(x, y);
            count += std::abs(pixel.lightness() - panel.lightness()) > 100 ? 1 : 0;
        }
    }
    return count;
}

TEST_F(StatusMenuTest, TheStatusIconReadsOnALightAndOnADarkPanel) {
    application = makeApplication();
    application->statusMenu().refresh(false);
    ASSERT_NE(application->statusMenu().icon(), nullptr);
    const QIcon icon = application->statusMenu().icon()->icon();
    // A glyph in one colour alone vanishes on a panel of that colour; the outlined one shows a clear shape on both.
    for (const QColor& panel : {QColor(Qt::black), QColor(40, 40, 40), QColor(Qt::white), QColor(235, 235, 235)}) {
        EXPECT_GE(pixelsStandingOutOn(icon, panel), 30) << qPrintable(panel.name());
    }
    const QImage image = icon.pixmap(22, 22).toImage();
    EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0) << "the corners stay see-through";
}

TEST_F(StatusMenuTest, TheRealTimeEntryTogglesStoresAndIsRetitledLeavingOneTimerAtMost) {
    // Stored off: the start-up starts no timer.
    AppSettings(settingsFile).setBool(keys::kRealTimeScan, false);
    application = launch();
    EXPECT_FALSE(application->settings().realTimeScan());
    EXPECT_EQ(entry(0)->text(), "Real-time Scan Disabled");
    EXPECT_FALSE(entry(0)->isChecked());
    EXPECT_EQ(activeTimers(), 0);

    for (const bool on : {true, false, true}) {
        entry(0)->trigger();
        EXPECT_EQ(entry(0)->text(), on ? "Real-time Scan Enabled" : "Real-time Scan Disabled");
        EXPECT_EQ(entry(0)->isChecked(), on);
        EXPECT_EQ(stored(keys::kRealTimeScan), QVariant(on));
        EXPECT_EQ(application->scheduler().timer() != nullptr, on);
        EXPECT_EQ(activeTimers(), on ? 1 : 0) << "exactly one timer after switching off and on";
        EXPECT_EQ(entry(0)->property("keyEquivalent").toString(), "Real Time Scan");
    }

    // Switching on again from the window replaces the timer rather than adding one.
    application->setRealTimeScan(true);
    EXPECT_EQ(activeTimers(), 1);
}

TEST_F(StatusMenuTest, EachTickRunsThePurgeOnTheMainThreadOnePeriodAfterTheStart) {
    application = makeApplication();
    constexpr std::chrono::milliseconds period{40};
    std::vector<bool> onMainThread;
    application->setRealTimePurge([&] { onMainThread.push_back(QThread::currentThread() == qApp->thread()); });
    application->scheduler().setPeriod(period);
    application->setRealTimeScan(true);
    EXPECT_TRUE(onMainThread.empty()) << "nothing runs at once";
    ASSERT_NE(application->scheduler().timer(), nullptr);
    EXPECT_EQ(application->scheduler().timer()->intervalAsDuration(), period);
    ASSERT_TRUE(QTest::qWaitFor([&] { return onMainThread.size() >= 2; }, 5000)) << "it repeats";
    EXPECT_EQ(std::count(onMainThread.begin(), onMainThread.end(), false), 0);

    application->setRealTimeScan(false);
    const std::size_t runs = onMainThread.size();
    runEventsScheduledWithin(3 * period);
    EXPECT_EQ(onMainThread.size(), runs) << "switched off, it stops";
}

TEST_F(StatusMenuTest, TheMainWindowEntryBringsTheShownWindowBack) {
    AppSettings(settingsFile).setBool(keys::kTaskbarEntry, true);
    application = launch();
    ASSERT_NE(application->mainWindow(), nullptr);
    application->mainWindow()->close();
    entry(1)->trigger();
    EXPECT_TRUE(application->mainWindow()->isVisible());
}

} // namespace
} // namespace tidewell::testing
