#include <sys/stat.h>

#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include "app/access_window.hpp"
#include "app_fixture.hpp"
#include "support/unprivileged.hpp"

namespace tidewell::testing {
namespace {

class StartUpTest : public AppFixture {};

TEST_F(StartUpTest, FirstLaunchWithEmptySettingsTakesTheDefaultsAndWritesThemBack) {
    storeGrant("/Users/ann");
    const auto application = launch();

    ASSERT_NE(application->mainWindow(), nullptr);
    EXPECT_EQ(windowsMade, 1);
    EXPECT_TRUE(application->mainWindow()->isVisible()) << "an absent \"IsDockIcon\" shows the window";
    EXPECT_EQ(application->accessWindow(), nullptr);

    const SettingsModel& choices = application->settings();
    EXPECT_TRUE(choices.realTimeScan());
    EXPECT_FALSE(stored(keys::kRealTimeScan).isValid()) << "real-time on is a default, not written back";
    EXPECT_TRUE(choices.runAtStart());
    EXPECT_EQ(stored(keys::kRunAtStart), QVariant(true));
    EXPECT_TRUE(loginEntryExists()) << "start at login is on by default";
    EXPECT_FALSE(choices.showsTaskbarEntry());
    EXPECT_EQ(stored(keys::kTaskbarEntry), QVariant(false)) << "a first start hides the taskbar entry, on purpose";
    EXPECT_FALSE(application->taskbar().showsEntry());
    EXPECT_EQ(application->mainWindow()->windowFlags() & Qt::WindowType_Mask, Qt::Tool);
    EXPECT_EQ(stored(keys::kScanFlag), QVariant(false));

    // Registered, never stored.
    EXPECT_TRUE(application->store().boolAt(keys::kCrashOnExceptions));
    EXPECT_FALSE(stored(keys::kCrashOnExceptions).isValid());

    // The first real-time run is an hour away.
    const QTimer* timer = application->scheduler().timer();
    ASSERT_NE(timer, nullptr);
    EXPECT_TRUE(timer->isActive());
    EXPECT_EQ(timer->intervalAsDuration(), std::chrono::hours(1));
    EXPECT_GT(timer->remainingTime(), 3590 * 1000);
}

TEST_F(StartUpTest, WithoutAGrantTheAccessWindowComesInsteadAndNothingIsRestored) {
    const auto application = launch();
    ASSERT_NE(application->accessWindow(), nullptr);
    EXPECT_TRUE(application->accessWindow()->isVisible());
    EXPECT_EQ(application->mainWindow(), nullptr);
    EXPECT_EQ(windowsMade, 0);
    // The restore belongs to the main window's load: no timer, no login item, the menu as first built.
    EXPECT_EQ(application->scheduler().timer(), nullptr);
    EXPECT_FALSE(loginEntryExists());
    EXPECT_EQ(application->statusMenu().menu()->actions().front()->text(), "Real Time Scan");
    EXPECT_EQ(stored(keys::kScanFlag), QVariant(false));
}

TEST_F(StartUpTest, OpenMainConsoleBringsTheWindowBackInEveryState) {
    storeGrant("/Users/ann");
    AppSettings(settingsFile).setBool(keys::kTaskbarEntry, false);
    const auto application = launch();
    QWidget* window = application->mainWindow();
    ASSERT_NE(window, nullptr) << "the window is made all the same";
    EXPECT_FALSE(window->isVisible()) << "with a status area, a hidden taskbar entry starts in the status menu";
    QAction* openMainConsole = application->statusMenu().menu()->actions().at(1);

    openMainConsole->trigger();
    EXPECT_TRUE(window->isVisible()) << "made unshown at start";
    window->close();
    EXPECT_FALSE(window->isVisible());
    openMainConsole->trigger();
    EXPECT_TRUE(window->isVisible()) << "after closing";
    window->showMinimized();
    openMainConsole->trigger();
    EXPECT_TRUE(window->isVisible());
    EXPECT_FALSE(window->isMinimized()) << "after minimising";

    // Whatever the taskbar setting says.
    application->setShowsTaskbarEntry(true);
    window->close();
    openMainConsole->trigger();
    EXPECT_TRUE(window->isVisible());

    application->reopen();
    EXPECT_TRUE(window->isVisible());
}

TEST_F(StartUpTest, OpenMainConsoleBeforeAGrantBringsTheAccessWindow) {
    const auto application = launch();
    ASSERT_NE(application->accessWindow(), nullptr);
    application->accessWindow()->hide();
    application->statusMenu().menu()->actions().at(1)->trigger();
    EXPECT_TRUE(application->accessWindow()->isVisible());
}

TEST_F(StartUpTest, WithoutAStatusAreaTheWindowShowsAtEveryStartAndClosingItQuits) {
    statusArea = false;
    storeGrant("/Users/ann");
    AppSettings(settingsFile).setBool(keys::kTaskbarEntry, false);
    const auto application = launch();
    ASSERT_NE(application->mainWindow(), nullptr);
    EXPECT_TRUE(application->mainWindow()->isVisible()) << "nothing else could bring it up";
    EXPECT_NE(application->statusMenu().icon(), nullptr) << "made for a status area that appears later";

    QTimer::singleShot(0, application->mainWindow(), &QWidget::close);
    QTimer::singleShot(10000, [] { QCoreApplication::exit(99); });
    EXPECT_EQ(QApplication::exec(), 0);

    // A status area that has appeared by then keeps Tidewell in it instead.
    statusArea = true;
    application->mainWindow()->show();
    application->mainWindow()->close();
    QTimer::singleShot(500, [] { QCoreApplication::exit(7); });
    EXPECT_EQ(QApplication::exec(), 7);
}

TEST_F(StartUpTest, ChangingTheTaskbarEntryNeverHidesMinimisesOrMovesTheWindow) {
    storeGrant("/Users/ann");
    AppSettings(settingsFile).setBool(keys::kTaskbarEntry, true);
    const auto application = launch();
    QWidget* window = application->mainWindow();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->windowFlags() & Qt::WindowType_Mask, Qt::Window);
    window->move(40, 30);
    const QPoint place = window->pos();

    QSignalSpy hidden(&application->taskbar(), &TaskbarPolicy::entryHidden);
    application->setShowsTaskbarEntry(false);
    EXPECT_EQ(stored(keys::kTaskbarEntry), QVariant(false));
    EXPECT_EQ(window->windowFlags() & Qt::WindowType_Mask, Qt::Tool);
    EXPECT_TRUE(window->isVisible());
    ASSERT_TRUE(hidden.wait());
    EXPECT_TRUE(window->isVisible());
    EXPECT_FALSE(window->isMinimized());
    EXPECT_EQ(window->pos(), place);

    application->setShowsTaskbarEntry(true);
    EXPECT_EQ(stored(keys::kTaskbarEntry), QVariant(true));
    EXPECT_EQ(window->windowFlags() & Qt::WindowType_Mask, Qt::Window);
    EXPECT_TRUE(window->isVisible()) << "unticking the hide box once hid the window";
    EXPECT_EQ(window->pos(), place);

    // A closed window stays closed: the setting brings nothing up either.
    window->close();
    application->setShowsTaskbarEntry(false);
    runEventsScheduledWithin(TaskbarPolicy::kSettleDelay);
    EXPECT_FALSE(window->isVisible());
}

TEST_F(StartUpTest, AStartByTheLoginItemTurnsStartAtLoginOnForThisRun) {
    storeGrant("/Users/ann");
    AppSettings(settingsFile).setBool(keys::kRunAtStart, false);
    const auto application = launch(true);
    EXPECT_TRUE(application->settings().runAtStart());
    EXPECT_TRUE(loginEntryExists());
    // The stored value was written back before the hand-over, so it keeps what the person chose.
    EXPECT_EQ(stored(keys::kRunAtStart), QVariant(false));
}

TEST_F(StartUpTest, RunAtStartWritesThroughAndReportsAnEntryItCannotChange) {
    storeGrant("/Users/ann");
    const auto application = launch();
    application->setRunAtStart(false);
    EXPECT_FALSE(loginEntryExists());
    EXPECT_EQ(stored(keys::kRunAtStart), QVariant(false));
    application->setRunAtStart(true);
    EXPECT_TRUE(loginEntryExists());
    EXPECT_EQ(stored(keys::kRunAtStart), QVariant(true));
    EXPECT_TRUE(Alerts::shownAlerts().empty());

    // A read-only autostart folder, met by a process without the super-user's rights: both directions fail, each
    // with its own alert, and the setting stays as chosen.
    ::chmod(temp.path().c_str(), 0755);
    ::chmod((temp.path() + "/config").c_str(), 0755);
    ::chmod(autostartFolder.c_str(), 0555);
    const auto alerts = runUnprivileged([&] {
        Alerts::resetSeam();
        Alerts::answerNextAlert(kAlertFirstButton);
        Alerts::answerNextAlert(kAlertFirstButton);
        application->applyRunAtStart(false);
        application->applyRunAtStart(true);
        const auto& shown = Alerts::shownAlerts();
        const auto is = [&](std::size_t i, const char* informative) {
            return shown.size() > i && shown[i].messageText == "Error" && shown[i].informativeText == informative &&
                   shown[i].buttons == QStringList{"ok"};
        };
        return std::int64_t{is(0, "Error in removing from start at login")} +
               2 * std::int64_t{is(1, "Error in setting at start at login")} + 4 * std::int64_t(shown.size());
    });
    ::chmod(autostartFolder.c_str(), 0755);
    EXPECT_EQ(alerts, 1 + 2 + 4 * 2);
    EXPECT_TRUE(loginEntryExists());
}

TEST_F(StartUpTest, QuittingOrClosingTheAccessWindowEndsTheApplicationAndWritesScan) {
    const auto closed = launch();
    // The window manager's close button leaves no hidden process behind.
    ASSERT_NE(closed->accessWindow(), nullptr);
    QTimer::singleShot(0, closed->accessWindow(), &QWidget::close);
    QTimer::singleShot(10000, [] { QCoreApplication::exit(99); });
    EXPECT_EQ(QApplication::exec(), 0);

    const auto application = launch();
    AppSettings(settingsFile).setBool(keys::kScanFlag, true);
    ASSERT_NE(application->accessWindow(), nullptr);
    QTimer::singleShot(0, application->accessWindow()->quitButton(), &QPushButton::click);
    QTimer::singleShot(10000, [] { QCoreApplication::exit(99); });
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_EQ(stored(keys::kScanFlag), QVariant(false));
    EXPECT_FALSE(QApplication::quitOnLastWindowClosed()) << "only Quit ends Tidewell, not closing its windows";
}

} // namespace
} // namespace tidewell::testing
