#include <sys/stat.h>

#include <QDesktopServices>
#include <QFile>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include "app/browser_panel_window.hpp"
#include "app/not_access_vc.hpp"
#include "app/notification_centre.hpp"
#include "app_fixture.hpp"
#include "support/unprivileged.hpp"

namespace tidewell::testing {
namespace {

class StartUpTest : public AppFixture {};

TEST_F(StartUpTest, FirstLaunchWithEmptySettingsTakesTheDefaultsAndWritesThemBack) {
    storeGrant("/Users/ann");
    const auto delegate = launch();

    ASSERT_NE(delegate->windCMain(), nullptr);
    EXPECT_EQ(windowsMade, 1);
    EXPECT_EQ(delegate->mainWindow(), delegate->windCMain()) << "an absent \"IsDockIcon\" shows the window";
    EXPECT_EQ(delegate->notAccessWindow(), nullptr);
    EXPECT_EQ(AppDelegate::appDel(), delegate.get());

    EXPECT_TRUE(delegate->isRealTimeProtectionON());
    EXPECT_FALSE(stored(keys::kRealTimeScan).isValid()) << "real-time on is a default, not written back";
    EXPECT_TRUE(delegate->runOnStart());
    EXPECT_EQ(stored(keys::kRunOnStart), QVariant(true));
    EXPECT_TRUE(loginEntryExists()) << "start at login is on by default";
    EXPECT_FALSE(delegate->dockIcon());
    EXPECT_EQ(stored(keys::kDockIcon), QVariant(false)) << "a first start hides the taskbar entry, on purpose";
    EXPECT_FALSE(delegate->showsTaskbarEntry());
    EXPECT_EQ(delegate->windCMain()->windowFlags() & Qt::WindowType_Mask, Qt::Tool);
    EXPECT_EQ(stored(keys::kScan), QVariant(false));

    // Registered, never stored.
    EXPECT_TRUE(delegate->settings().boolForKey(keys::kCrashOnExceptions));
    EXPECT_FALSE(stored(keys::kCrashOnExceptions).isValid());

    // The first real-time run is an hour away.
    ASSERT_NE(delegate->realTimeScanningTimer(), nullptr);
    EXPECT_TRUE(delegate->realTimeScanningTimer()->isActive());
    EXPECT_EQ(delegate->realTimeScanningTimer()->intervalAsDuration(), std::chrono::hours(1));
    EXPECT_GT(delegate->realTimeScanningTimer()->remainingTime(), 3590 * 1000);
}

TEST_F(StartUpTest, WithoutAGrantTheAccessWindowComesInsteadAndNothingIsRestored) {
    const auto delegate = launch();
    ASSERT_NE(delegate->notAccessWindow(), nullptr);
    EXPECT_TRUE(delegate->notAccessWindow()->isVisible());
    EXPECT_EQ(delegate->windCMain(), nullptr);
    EXPECT_EQ(windowsMade, 0);
    // The restore belongs to the main window's load: no timer, no login item, the menu as first built.
    EXPECT_EQ(delegate->realTimeScanningTimer(), nullptr);
    EXPECT_FALSE(loginEntryExists());
    EXPECT_EQ(delegate->menuStatusBar()->actions().front()->text(), "Real Time Scan");
    EXPECT_EQ(stored(keys::kScan), QVariant(false));
}

TEST_F(StartUpTest, AHiddenTaskbarEntryKeepsTheWindowUnshownUntilAnotherStartAsksForIt) {
    storeGrant("/Users/ann");
    AppSettings(settingsFile).setBool(keys::kDockIcon, false);
    const auto delegate = launch();

    ASSERT_NE(delegate->windCMain(), nullptr) << "the window is made all the same";
    EXPECT_FALSE(delegate->windCMain()->isVisible());
    EXPECT_EQ(delegate->mainWindow(), nullptr);
    delegate->OpenMainConsole();
    QTest::qWait(300); // past the bring-to-front that follows hiding the entry
    EXPECT_FALSE(delegate->windCMain()->isVisible()) << "nothing brings it up: as designed";

    EXPECT_TRUE(delegate->applicationShouldHandleReopen(false));
    EXPECT_TRUE(delegate->windCMain()->isVisible());
}

TEST_F(StartUpTest, AShownTaskbarEntryShowsTheWindowAsANormalWindow) {
    storeGrant("/Users/ann");
    AppSettings(settingsFile).setBool(keys::kDockIcon, true);
    const auto delegate = launch();
    ASSERT_NE(delegate->mainWindow(), nullptr);
    EXPECT_TRUE(delegate->mainWindow()->isVisible());
    EXPECT_TRUE(delegate->showsTaskbarEntry());
    EXPECT_EQ(delegate->mainWindow()->windowFlags() & Qt::WindowType_Mask, Qt::Window);
}

TEST_F(StartUpTest, HidingTheEntryBringsTheWindowForwardAMomentLaterAndShowingItDoesNot) {
    storeGrant("/Users/ann");
    AppSettings(settingsFile).setBool(keys::kDockIcon, true);
    const auto delegate = launch();
    QWidget* window = delegate->mainWindow();
    ASSERT_NE(window, nullptr);

    window->close();
    delegate->hideDockChange(true);
    EXPECT_EQ(stored(keys::kDockIcon), QVariant(false));
    EXPECT_EQ(window->windowFlags() & Qt::WindowType_Mask, Qt::Tool);
    EXPECT_FALSE(window->isVisible()) << "not at once";
    EXPECT_TRUE(QTest::qWaitFor([&] { return window->isVisible(); }, 2000));

    window->close();
    delegate->hideDockChange(false);
    EXPECT_EQ(stored(keys::kDockIcon), QVariant(true));
    EXPECT_EQ(window->windowFlags() & Qt::WindowType_Mask, Qt::Window);
    QTest::qWait(300);
    EXPECT_FALSE(window->isVisible());
}

TEST_F(StartUpTest, AStartByTheLoginItemTurnsStartAtLoginOnForThisRun) {
    storeGrant("/Users/ann");
    AppSettings(settingsFile).setBool(keys::kRunOnStart, false);
    const auto delegate = launch(true);
    EXPECT_TRUE(delegate->runOnStart());
    EXPECT_TRUE(loginEntryExists());
    // The stored value was written back before the hand-over, so it keeps what the person chose.
    EXPECT_EQ(stored(keys::kRunOnStart), QVariant(false));
}

TEST_F(StartUpTest, TheRunAtStartBoxWritesThroughAndReportsAnEntryItCannotChange) {
    storeGrant("/Users/ann");
    const auto delegate = launch();
    delegate->runAtStartupChange(false);
    EXPECT_FALSE(loginEntryExists());
    EXPECT_EQ(stored(keys::kRunOnStart), QVariant(false));
    delegate->runAtStartupChange(true);
    EXPECT_TRUE(loginEntryExists());
    EXPECT_EQ(stored(keys::kRunOnStart), QVariant(true));
    EXPECT_TRUE(Alerts::shownAlerts().empty());

    // A read-only autostart folder, met by a process without the super-user's rights: both directions fail, each
    // with its own alert, and the setting stays as chosen.
    ::chmod(temp.path().c_str(), 0755);
    ::chmod((temp.path() + "/config").c_str(), 0755);
    ::chmod(autostartFolder.c_str(), 0555);
    const auto alerts = runUnprivileged([&] {
        Alerts::resetSeam();
        Alerts::answerNextAlert(kAlertFirstButtonReturn);
        Alerts::answerNextAlert(kAlertFirstButtonReturn);
        delegate->setStartAtLoginEnabled(false);
        delegate->setStartAtLoginEnabled(true);
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

TEST_F(StartUpTest, QuittingFromTheAccessWindowEndsTheApplicationAndWritesScan) {
    const auto delegate = launch();
    AppSettings(settingsFile).setBool(keys::kScan, true);
    ASSERT_NE(delegate->notAccessWindow(), nullptr);
    QTimer::singleShot(0, delegate->notAccessWindow()->closeApp(), &QPushButton::click);
    QTimer::singleShot(10000, [] { QCoreApplication::exit(99); });
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_EQ(stored(keys::kScan), QVariant(false));
    EXPECT_FALSE(QApplication::quitOnLastWindowClosed()) << "only Quit ends Tidewell, not closing its windows";
}

// The panel as the delegate sees it, recording what it is asked.
class RecordingPanel final : public BrowserPanelWindow {
public:
    using BrowserPanelWindow::BrowserPanelWindow;
    RecordList rows;
    bool shown = false;
    void setBrowserList(const RecordList& entries) override { rows = entries; }
    void beginSheet() override { shown = true; }
    void endSheet() override { shown = false; }
    [[nodiscard]] bool isSheetShown() const override { return shown; }
};

TEST_F(StartUpTest, TheBrowserPanelIsMadeOnceForTheMainWindowAndEndedByTheDismissPanelNotification) {
    storeGrant("/Users/ann");
    const auto delegate = makeDelegate();
    std::vector<QWidget*> madeFor;
    delegate->setBrowserWindowFactory([&](AppDelegate&, QWidget& mainWindow) -> BrowserPanelWindow* {
        madeFor.push_back(&mainWindow);
        return new RecordingPanel(&mainWindow);
    });
    const RecordList firefox{makeRecord({{"NameBrowser", std::string("Firefox")}})};
    const RecordList both{makeRecord({{"NameBrowser", std::string("Chrome")}}), firefox.front()};

    delegate->displayPanel(firefox);
    EXPECT_TRUE(madeFor.empty()) << "no main window to be a sheet of yet";
    EXPECT_EQ(delegate->browserWindow(), nullptr);

    delegate->applicationDidFinishLaunching();
    delegate->displayPanel(both);
    ASSERT_EQ(madeFor, std::vector<QWidget*>{delegate->windCMain()});
    auto* panel = dynamic_cast<RecordingPanel*>(delegate->browserWindow());
    ASSERT_NE(panel, nullptr);
    EXPECT_TRUE(panel->shown);
    EXPECT_EQ(panel->rows, both);

    delegate->reloadPanel(firefox);
    EXPECT_EQ(panel->rows, firefox);
    EXPECT_TRUE(panel->shown) << "a reload leaves the sheet up";

    EXPECT_TRUE(NotificationCentre::defaultCenter().postNotificationName(kDismissPanelNotification));
    EXPECT_FALSE(panel->shown);
    EXPECT_FALSE(NotificationCentre::defaultCenter().postNotificationName("NoSuchName"));

    delegate->displayPanel(firefox);
    EXPECT_EQ(madeFor.size(), 1U) << "made once, reused";
    EXPECT_TRUE(panel->shown);
}

TEST_F(StartUpTest, TheDismissPanelNotificationIsObservedOnlyFromTheStartUpOn) {
    storeGrant("/Users/ann");
    const auto delegate = makeDelegate();
    RecordingPanel* panel = nullptr;
    delegate->setBrowserWindowFactory([&](AppDelegate&, QWidget& mainWindow) -> BrowserPanelWindow* {
        panel = new RecordingPanel(&mainWindow);
        return panel;
    });
    delegate->makeUIForApp();
    delegate->displayPanel({});
    ASSERT_NE(panel, nullptr);
    NotificationCentre::defaultCenter().postNotificationName(kDismissPanelNotification);
    EXPECT_TRUE(panel->shown);
}

class UrlCatcher : public QObject {
    Q_OBJECT
public:
    QList<QUrl> opened;
public slots:
    void open(const QUrl& url) { opened.push_back(url); }
};

TEST_F(StartUpTest, HelpOpensTheHelpPageInTheBrowser) {
    UrlCatcher catcher;
    QDesktopServices::setUrlHandler(QStringLiteral("https"), &catcher, "open");
    const auto delegate = makeDelegate();
    delegate->getHelp();
    QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
    ASSERT_EQ(catcher.opened.size(), 1);
    EXPECT_EQ(catcher.opened.front(), AppDelegate::helpPageUrl());
}

TEST_F(StartUpTest, MinimiseTogglesTheFrontWindow) {
    const auto delegate = launch();
    QWidget* access = delegate->notAccessWindow();
    ASSERT_NE(access, nullptr);
    delegate->minimizeTo();
    EXPECT_TRUE(access->isMinimized());
    delegate->minimizeTo();
    EXPECT_FALSE(access->isMinimized());
}

} // namespace
} // namespace tidewell::testing

#include "start_up_test.moc"
