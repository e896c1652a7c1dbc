#pragma once

#include <QDateTime>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <chrono>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>

#include "app/browser_panel_window.hpp"
#include "app/settings.hpp"
#include "layout/disk_root.hpp"
#include "catalogue/records.hpp"
#include "platform/folder_grant.hpp"
#include "platform/login_item.hpp"

class QMenu;
class QSystemTrayIcon;
class QTimer;
class QWidget;

namespace tidewell {

class NotAccessVC;
class NotificationCentre;
class ScheduledPurgeWatch;

/// What the program gives the delegate when it starts.
struct AppEnvironment {
    /// The disk looked at and whose home folder is granted.
    DiskRoot disk;
    /// The settings file (AppSettings::defaultFile() for a normal start).
    QString settingsFile;
    /// Where the login item goes and the program it starts.
    LoginItemPlace loginItem;
    /// Started by the login item (the --autostart argument): the start-up then takes start at login as wanted.
    bool launchedAtLogin = false;
    /// The folder crash reports go to; empty starts no crash reporting (tests).
    QString crashReportFolder;
    /// The user's systemd unit folder, watched for the hourly purge timer of `tidewell-cli schedule on`; empty
    /// watches nothing (a window on another disk or home than the user's own, which that timer does not purge).
    QString purgeUnitFolder = {};
};

/// `AppDelegate`: the process-wide side of Tidewell's window face. It runs the start-up sequence, owns the stored
/// settings, the status menu and the hourly real-time scan, decides between the main window and the access window,
/// keeps the folder grant, the login item and the taskbar policy, and offers the help page.
///
/// The main window meets it through a small surface: the factory it is given (setMainWindowFactory), which must
/// call makeAppChanges once the window is made; the settings check boxes (realTimeScanChange, runAtStartupChange,
/// hideDockChange) and the current values to show in them (isRealTimeProtectionON, runOnStart, dockIcon); getHelp;
/// minimizeTo; mainWindow; grantedFolder (the deletion boundary); the browser panel (made through the factory given
/// to setBrowserWindowFactory, shown by displayPanel and reloadPanel, ended by disMissPanel) and the notification
/// centre; and the alert helpers in app/alerts.hpp. Everything here runs on the main thread.
class AppDelegate : public QObject {
    Q_OBJECT
public:
    /// Makes the main window (the controller "mainWindowID"): the window is returned unshown, and once made it has
    /// called makeAppChanges.
    using MainWindowFactory = std::function<std::unique_ptr<QWidget>(AppDelegate&)>;
    /// One real-time purge of adult-site history (`addAdultContents` of the cleaning engine): it checks the
    /// browsers, and hands each database to a task of its own off the main thread. Called on the main thread.
    using RealTimePurge = std::function<void()>;
    /// Makes the browser panel (the window "BrowserWindow") as a sheet of the given main window, which owns it.
    using BrowserWindowFactory = std::function<BrowserPanelWindow*(AppDelegate&, QWidget& mainWindow)>;

    /// The hourly period of the real-time scan.
    static constexpr std::chrono::milliseconds kRealTimePeriod{std::chrono::hours(1)};

    /// Reads nothing yet: the settings are opened, quitting on the last closed window is turned off, and the
    /// application's end is connected to applicationWillTerminate.
    explicit AppDelegate(AppEnvironment environment, QObject* parent = nullptr);
    ~AppDelegate() override;
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    // --- Wiring, before applicationDidFinishLaunching ---

    void setMainWindowFactory(MainWindowFactory factory);
    /// The purge each tick of the real-time timer runs; with none, a tick does nothing.
    void setRealTimePurge(RealTimePurge purge);
    void setBrowserWindowFactory(BrowserWindowFactory factory);

    // --- The application's life ---

    /// The start-up sequence, in order: register the defaults ({"NSApplicationCrashOnExceptions": YES}); start
    /// crash reporting; setupMenu; makeUIForApp if isUserDirAccessible, else makeUIForSelection; appDel filled
    /// if empty; observe "DismissPanel"; write NO to "Scan".
    void applicationDidFinishLaunching();
    /// Another start of Tidewell asked this one to come forward: brings the first of its windows (the main window,
    /// made even when not shown, else the access window) to the front and activates it. Returns true.
    bool applicationShouldHandleReopen(bool hasVisibleWindows);
    /// False: closing the last window leaves Tidewell running in the status menu.
    [[nodiscard]] static bool applicationShouldTerminateAfterLastWindowClosed() { return false; }
    /// Writes NO to "Scan" (runs when the application quits).
    void applicationWillTerminate();

    /// The delegate of this process, filled at launch; null before.
    static AppDelegate* appDel();

    // --- Windows ---

    /// Shows the main window: closes the access window if there is one, makes the main window through the
    /// factory, and then, unless "IsDockIcon" holds NO, shows it in front. With "IsDockIcon" NO the window is made
    /// but not shown and mainWindow stays null, so Tidewell lives in the status menu.
    void makeUIForApp();
    /// Shows the access window (NotAccessVC).
    void makeUIForSelection();
    /// makeUIForApp, for the access window once a grant has been given.
    void openMainWindow();
    /// `window`: the main window once shown by makeUIForApp; null when it was made hidden or not made.
    [[nodiscard]] QWidget* mainWindow() const;
    /// `windCMain`: the main window as made, shown or not; null before makeUIForApp.
    [[nodiscard]] QWidget* windCMain() const;
    /// `notAccessWindow`: the access window while it is up; null once the main window took over.
    [[nodiscard]] NotAccessVC* notAccessWindow() const;
    /// Status-menu "Open Main Console": mainWindow to the front and activated; nothing when it is null.
    void OpenMainConsole();
    /// Status-menu "Quit", and terminateSelf: ends the application.
    void Quit();
    void terminateSelf();
    /// Minimises the front window, or brings it back when minimised: the access window when there is one, else
    /// the main window as made.
    void minimizeTo();
    /// Opens the help page in the default browser.
    void getHelp();
    /// The help page's address.
    static QUrl helpPageUrl();

    // --- Status menu ---

    /// Builds the status menu "StatusMenu" afresh with its three entries, "Real Time Scan", "Open Main Console"
    /// and "Quit". Each entry also carries its title as its key equivalent, in the property "keyEquivalent".
    void setupMenu();
    /// Makes the status icon on first use (where the desktop has a status area) and retitles the first entry
    /// "Real-time Scan Enabled" or "Real-time Scan Disabled", checked accordingly.
    void refreshStatusItem();
    /// `menuStatusBar` and `statusItem` (null until the first refresh, and where the desktop has no status area).
    [[nodiscard]] QMenu* menuStatusBar() const;
    [[nodiscard]] QSystemTrayIcon* statusItem() const;
    /// Status-menu real-time entry: inverts the setting, stores it, starts or stops the timer, refreshes.
    void RealTimeScanChange();

    // --- Settings ---

    /// The settings restore, queued to run on the main thread's next turn: real-time on unless stored off; start
    /// at login on unless stored off, written back; "IsDockIcon" as stored (absent is NO), written back; a start
    /// by the login item makes start at login on; then seticonShow, setStartAtLoginEnabled, realTimeScanning and
    /// the status refresh.
    void makeAppChanges();
    /// The settings check boxes: each stores its value (hideDockChange stores the inverse at "IsDockIcon") and
    /// applies it as the status menu or the restore would.
    void realTimeScanChange(bool on);
    void runAtStartupChange(bool on);
    void hideDockChange(bool hide);
    /// The current values, for the check boxes (`isRealTimeProtectionON`, `runOnStart`, `dockIcon`).
    [[nodiscard]] bool isRealTimeProtectionON() const { return m_isRealTimeProtectionON; }
    [[nodiscard]] bool runOnStart() const { return m_runOnStart; }
    [[nodiscard]] bool dockIcon() const { return m_dockIcon; }
    [[nodiscard]] AppSettings& settings() { return m_settings; }

    /// Starts (on, and only while real-time is on) or stops the hourly timer. Starting replaces any running timer,
    /// so there is never more than one; the first tick comes one period after the start, none at once. While the
    /// systemd timer runs the purge (purgeScheduledBySystem), starting stops the timer instead: only one of the two
    /// purges; the timer starts again when the systemd timer is turned off.
    void realTimeScanning(bool on);
    /// Whether the systemd user timer of `tidewell-cli schedule on` runs the hourly purge of this home.
    [[nodiscard]] bool purgeScheduledBySystem() const;
    /// `realTimeScanningTimer`: the running timer, null when off.
    [[nodiscard]] QTimer* realTimeScanningTimer() const;
    /// The timer's action: runs the real-time purge, silently.
    void addAdultContents();
    /// Test seam: the real-time period (kRealTimePeriod unless changed); takes effect at the next start.
    void setRealTimePeriod(std::chrono::milliseconds period);

    /// Registers (on) or removes the login item; on failure an alert "Error" with the button "ok" says "Error in
    /// setting at start at login" or "Error in removing from start at login". Nothing is stored or reverted.
    void setStartAtLoginEnabled(bool on);
    /// Shows (show) or hides Tidewell's taskbar entry. Hidden, Tidewell is a status-menu application: the main
    /// window becomes a tool window, which desktops leave out of the taskbar, and 0.2 s later mainWindow is brought
    /// to the front, since the change can leave it behind other windows.
    void seticonShow(bool show);
    /// Whether Tidewell currently shows a taskbar entry.
    [[nodiscard]] bool showsTaskbarEntry() const { return m_showsTaskbarEntry; }

    // --- Folder access ---

    /// The launch check of the home folder grant: false when the home folder is already writable through a
    /// started grant (read backwards on purpose, so it says false the second time in a process), false when
    /// "SaveDirectory" is empty, else makeBookMarkURLAccessible("SaveDirectory").
    bool isUserDirAccessible();
    /// The same for the whole disk, with the disk root and "SaveDirectoryForHD".
    bool isHDAccessible();
    /// Reads the grant stored at key, resolves it and starts it (for the rest of the process); false when absent,
    /// unreadable, no longer resolving, or not started.
    bool makeBookMarkURLAccessible(const QString& key);
    /// Records the grant of a folder chosen in an open panel at each of keys and starts it (the choice itself
    /// opens the folder for this run). When the grant cannot be made, removes keys, logs "Error bookmarking
    /// selected URL: <reason>" and shows the "Access Denied" alert. Returns whether the grant was made.
    bool storeFolderGrant(const QString& folder, std::initializer_list<QString> keys);
    /// The whole-disk flow, reached from nowhere: unless isHDAccessible, the "Access Alert" alert, whose second
    /// button "Confirm Access" leads to confirmAccessAction.
    void checkForHDAccess();
    /// The whole-disk open panel: only the disk root can be chosen; the grant is stored at "SaveDirectory" and
    /// "SaveDirectoryForHD".
    void confirmAccessAction();
    /// The whole-disk panel's rules: exactly the disk root.
    [[nodiscard]] bool panelShouldEnableURL(const QString& folder) const;
    [[nodiscard]] bool panelValidateURL(const QString& folder) const;
    /// The deletion boundary: the first started grant's folder; nothing before a grant is started.
    [[nodiscard]] std::optional<std::string> grantedFolder() const;
    /// The grant of that folder, which the cleaning holds as its boundary.
    [[nodiscard]] std::optional<FolderGrant> startedGrant() const { return m_startedGrants.boundaryGrant(); }
    [[nodiscard]] const StartedGrants& startedGrants() const { return m_startedGrants; }
    /// The disk root as a folder path: "/" for the whole disk, else the root folder.
    [[nodiscard]] std::string diskRootPath() const;
    /// `homeUrl`: <root>/Users/<login>.
    [[nodiscard]] FileUrl homeUrl() const { return m_environment.disk.homeUrl(); }
    [[nodiscard]] const DiskRoot& disk() const { return m_environment.disk; }

    // --- Browser panel ---

    /// `displayPanel:`: makes the panel on first use (as a sheet of the main window as made; nothing without a main
    /// window or a factory), sets its rows to entries and begins the sheet. The panel is made once and reused for
    /// every later cleaning while the main window lives.
    void displayPanel(const RecordList& entries);
    /// `reloadPanel:`: replaces the rows of the panel; the sheet stays up. Nothing before the panel was made.
    void reloadPanel(const RecordList& entries);
    /// `disMissPanel` (and "DismissPanel"): ends the sheet; nothing when there is no panel.
    void disMissPanel();
    /// `browserWindow`: the panel once made; null before, and after its main window went.
    [[nodiscard]] BrowserPanelWindow* browserWindow() const;

    /// Relative dates for the last scan; see app/relative_date.hpp.
    static QString relativeDateStringForDate(const QDateTime& date);

signals:
    /// isRealTimeProtectionON, runOnStart or dockIcon may have changed: after the settings restore, a check box or
    /// the status menu.
    void settingsChanged();

private:
    void startCrashReporting();
    void applyTaskbarPolicy();
    void bringToFront(QWidget* window);
    void stopRealTimeTimer();

    AppEnvironment m_environment;
    AppSettings m_settings;
    StartedGrants m_startedGrants;
    MainWindowFactory m_mainWindowFactory;
    RealTimePurge m_realTimePurge;
    BrowserWindowFactory m_browserWindowFactory;
    std::chrono::milliseconds m_realTimePeriod = kRealTimePeriod;

    std::unique_ptr<QWidget> m_windCMain;
    QPointer<QWidget> m_window;
    QPointer<NotAccessVC> m_notAccessWindow;
    QPointer<BrowserPanelWindow> m_browserWindow;
    std::unique_ptr<QMenu> m_menuStatusBar;
    std::unique_ptr<QSystemTrayIcon> m_statusItem;
    QTimer* m_realTimeScanningTimer = nullptr;
    ScheduledPurgeWatch* m_scheduledPurge = nullptr;

    bool m_isRealTimeProtectionON = true;
    bool m_runOnStart = true;
    bool m_dockIcon = false;
    bool m_showsTaskbarEntry = true;
};

} // namespace tidewell
