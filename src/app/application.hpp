#pragma once

#include <QPointer>
#include <QString>
#include <QUrl>
#include <QWidget>
#include <functional>
#include <memory>

#include "app/folder_access.hpp"
#include "app/real_time_scheduler.hpp"
#include "app/settings.hpp"
#include "app/settings_model.hpp"
#include "app/status_menu.hpp"
#include "app/taskbar_policy.hpp"
#include "app/window_host.hpp"
#include "app/window_placement.hpp"
#include "layout/disk_root.hpp"
#include "platform/login_item.hpp"

namespace tidewell {

class AccessWindow;

/// What the program gives the application when it starts.
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
    /// Whether the desktop has a status area to hold Tidewell's icon right now; none given: asks the desktop.
    std::function<bool()> statusAreaAvailable = {};
};

/// Tidewell's window application as a whole. It runs the start-up, decides between the main window and the access
/// window, and wires the parts that each do one job: the stored choices (SettingsModel), the home folder's grant
/// (FolderAccess, AccessWindow), the status menu (StatusMenu), the hourly purge (RealTimeScheduler), the taskbar
/// entry (TaskbarPolicy) and the login item. The main window is made through the factory it is given and meets the
/// application only as its WindowHost. Everything here runs on the main thread.
class Application : public WindowHost {
    Q_OBJECT
public:
    /// Makes the main window, unshown, for its host; once made, the window has called restoreSettings.
    using MainWindowFactory = std::function<std::unique_ptr<QWidget>(WindowHost& host)>;

    /// Reads nothing yet: the settings are opened, quitting on the last closed window is turned off, and "Scan" is
    /// written NO when the application ends.
    explicit Application(AppEnvironment environment, QObject* parent = nullptr);
    ~Application() override;
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    void setMainWindowFactory(MainWindowFactory factory) { m_mainWindowFactory = std::move(factory); }
    /// The purge each hourly tick runs.
    void setRealTimePurge(RealTimeScheduler::Purge purge) { m_scheduler.setPurge(std::move(purge)); }

    /// The start-up, in order: register the defaults ({"NSApplicationCrashOnExceptions": YES}); start crash
    /// reporting; the main window when the stored grant starts (FolderAccess::startStoredGrant), else the access
    /// window; write NO to "Scan".
    void start();
    /// Another start of Tidewell asked this one to come forward: brings the first of its windows (the main window,
    /// made even when not shown, else the access window) to the front and activates it.
    void reopen();

    /// Closes the access window if there is one and makes the main window through the factory; then shows it in
    /// front, unless the stored taskbar setting says NO and the desktop has a status area whose icon brings it back.
    /// Without a status area the window shows at every start, since nothing else could bring it up.
    void showMainWindow();
    /// Shows the access window; a grant there leads to showMainWindow.
    void showAccessWindow();
    /// Status menu "Open Main Console": the main window, shown or not, minimised or not, to the front and
    /// activated; before there is one, the access window.
    void bringBackMainWindow();
    /// Whether the desktop has a status area now (see AppEnvironment::statusAreaAvailable).
    [[nodiscard]] bool statusAreaAvailable() const override;

    /// The main window as made, shown or not; null before showMainWindow.
    [[nodiscard]] QWidget* mainWindow() const { return m_mainWindow.get(); }
    /// The access window while it is up; null once the main window took over.
    [[nodiscard]] AccessWindow* accessWindow() const;
    [[nodiscard]] AppSettings& store() { return m_store; }
    [[nodiscard]] FolderAccess& folderAccess() { return m_access; }
    [[nodiscard]] StatusMenu& statusMenu() { return m_statusMenu; }
    [[nodiscard]] RealTimeScheduler& scheduler() { return m_scheduler; }
    [[nodiscard]] const TaskbarPolicy& taskbar() const { return m_taskbar; }

    /// The help page's address.
    [[nodiscard]] static QUrl helpPageUrl();

    // WindowHost
    [[nodiscard]] const DiskRoot& disk() const override { return m_environment.disk; }
    void restoreSettings() override;
    [[nodiscard]] const SettingsModel& settings() const override { return m_choices; }
    [[nodiscard]] bool purgeScheduledBySystem() const override { return m_scheduler.purgeScheduledBySystem(); }
    void setRealTimeScan(bool on) override;
    void setRunAtStart(bool on) override;
    void setShowsTaskbarEntry(bool show) override;
    [[nodiscard]] std::optional<FolderGrant> cleaningGrant() const override { return m_access.startedGrant(); }
    [[nodiscard]] QByteArray storedSelection() const override;
    void storeSelection(const QByteArray& selection) override;
    void openHelp() override;
    void minimiseWindow() override;
    void quit() override;

    /// Registers (on) or removes the login item; on failure an alert "Error" with the button "ok" says "Error in
    /// setting at start at login" or "Error in removing from start at login". Nothing is stored or reverted.
    void applyRunAtStart(bool on);

protected:
    /// Closing the main window hides it while the status icon can bring it back, and quits when it cannot.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void startCrashReporting();

    AppEnvironment m_environment;
    AppSettings m_store;
    SettingsModel m_choices;
    FolderAccess m_access;
    StatusMenu m_statusMenu;
    RealTimeScheduler m_scheduler;
    TaskbarPolicy m_taskbar;
    WindowPlacement m_placement;
    MainWindowFactory m_mainWindowFactory;

    std::unique_ptr<QWidget> m_mainWindow;
    QPointer<AccessWindow> m_accessWindow;
};

} // namespace tidewell
