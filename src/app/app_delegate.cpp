#include "app/app_delegate.hpp"

#include <fmt/format.h>

#include <QAction>
#include <QApplication>
#include <QCursor>
#include <QDesktopServices>
#include <QIcon>
#include <QMenu>
#include <QPainter>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QWidget>

#include "app/alerts.hpp"
#include "app/browser_panel_window.hpp"
#include "app/not_access_vc.hpp"
#include "app/notification_centre.hpp"
#include "app/open_panel.hpp"
#include "app/relative_date.hpp"
#include "app/scheduled_purge_watch.hpp"
#include "platform/crash_report.hpp"
#include "base/log.hpp"
#include "version.hpp"

namespace tidewell {

namespace {

AppDelegate* g_appDel = nullptr;

// The window's own taskbar entry is what a dock icon is on this desktop: a normal window has one, a tool window
// has none.
void setWindowType(QWidget& window, Qt::WindowType type) {
    const Qt::WindowFlags flags = window.windowFlags();
    if ((flags & Qt::WindowType_Mask) == type) {
        return;
    }
    // Changing the flags takes the window off screen; it comes back as it was.
    const bool wasVisible = window.isVisible();
    window.setWindowFlags((flags & ~Qt::WindowType_Mask) | type);
    if (wasVisible) {
        window.show();
    }
}

// The status image is a template, a shape whose colour does not count: it is painted in the desktop's text colour,
// which suits the status area of a light theme as well as a dark one.
QIcon templateIcon(const QString& file) {
    const QIcon shape(file);
    const QColor colour = QApplication::palette().color(QPalette::WindowText);
    QIcon tinted;
    for (const int size : {16, 22, 24, 32, 48, 64}) {
        QPixmap pixmap = shape.pixmap(size, size);
        QPainter painter(&pixmap);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(pixmap.rect(), colour);
        painter.end();
        tinted.addPixmap(pixmap);
    }
    tinted.setIsMask(true);
    return tinted;
}

} // namespace

AppDelegate::AppDelegate(AppEnvironment environment, QObject* parent)
    : QObject(parent), m_environment(std::move(environment)), m_settings(m_environment.settingsFile) {
    QApplication::setQuitOnLastWindowClosed(applicationShouldTerminateAfterLastWindowClosed());
    connect(qApp, &QCoreApplication::aboutToQuit, this, &AppDelegate::applicationWillTerminate);
    if (!m_environment.purgeUnitFolder.isEmpty()) {
        m_scheduledPurge = new ScheduledPurgeWatch(m_environment.purgeUnitFolder, this);
        connect(m_scheduledPurge, &ScheduledPurgeWatch::changed, this, [this] {
            realTimeScanning(m_isRealTimeProtectionON);
            emit settingsChanged();
        });
    }
}

AppDelegate::~AppDelegate() {
    stopRealTimeTimer();
    delete m_notAccessWindow.data();
    if (g_appDel == this) {
        g_appDel = nullptr;
    }
}

void AppDelegate::setMainWindowFactory(MainWindowFactory factory) {
    m_mainWindowFactory = std::move(factory);
}

void AppDelegate::setRealTimePurge(RealTimePurge purge) {
    m_realTimePurge = std::move(purge);
}

void AppDelegate::setBrowserWindowFactory(BrowserWindowFactory factory) {
    m_browserWindowFactory = std::move(factory);
}

// --- The application's life ---

void AppDelegate::applicationDidFinishLaunching() {
    m_settings.registerDefaults({{keys::kCrashOnExceptions, true}});
    startCrashReporting();
    setupMenu();
    if (isUserDirAccessible()) {
        makeUIForApp();
    } else {
        makeUIForSelection();
    }
    if (g_appDel == nullptr) {
        g_appDel = this;
    }
    connect(&NotificationCentre::defaultCenter(), &NotificationCentre::dismissPanel, this, &AppDelegate::disMissPanel);
    // Printing has no control in this window, so there is nothing to wire to the delegate.
    m_settings.setBool(keys::kScan, false);
}

void AppDelegate::startCrashReporting() {
    if (m_environment.crashReportFolder.isEmpty()) {
        return;
    }
    // Reporting is best effort: a folder that cannot be made leaves the process as it would be without it.
    installCrashReporter(m_environment.crashReportFolder.toStdString(), kVersion,
                         m_settings.boolForKey(keys::kCrashOnExceptions));
}

bool AppDelegate::applicationShouldHandleReopen(bool /*hasVisibleWindows*/) {
    QWidget* first = m_windCMain ? m_windCMain.get() : m_notAccessWindow.data();
    bringToFront(first);
    return true;
}

void AppDelegate::applicationWillTerminate() {
    m_settings.setBool(keys::kScan, false);
}

AppDelegate* AppDelegate::appDel() {
    return g_appDel;
}

// --- Windows ---

void AppDelegate::makeUIForApp() {
    if (m_notAccessWindow) {
        m_notAccessWindow->close();
        m_notAccessWindow->deleteLater();
        m_notAccessWindow = nullptr;
    }
    if (!m_mainWindowFactory) {
        return;
    }
    m_windCMain = m_mainWindowFactory(*this);
    if (!m_windCMain) {
        return;
    }
    applyTaskbarPolicy();
    if (m_settings.hasValue(keys::kDockIcon) && !m_settings.boolForKey(keys::kDockIcon)) {
        // Without a taskbar entry Tidewell starts in the status menu alone: the window exists but stays unshown,
        // and `window` stays unset, so nothing brings it up until a second start of Tidewell asks for it.
        return;
    }
    m_window = m_windCMain.get();
    bringToFront(m_window);
}

void AppDelegate::makeUIForSelection() {
    if (!m_notAccessWindow) {
        m_notAccessWindow = new NotAccessVC(this);
    }
    bringToFront(m_notAccessWindow);
}

void AppDelegate::openMainWindow() {
    makeUIForApp();
}

QWidget* AppDelegate::mainWindow() const {
    return m_window;
}

QWidget* AppDelegate::windCMain() const {
    return m_windCMain.get();
}

NotAccessVC* AppDelegate::notAccessWindow() const {
    return m_notAccessWindow;
}

void AppDelegate::bringToFront(QWidget* window) {
    if (window == nullptr) {
        return;
    }
    if (window->isMinimized()) {
        window->showNormal();
    } else {
        window->show();
    }
    window->raise();
    window->activateWindow();
}

void AppDelegate::OpenMainConsole() {
    bringToFront(m_window);
}

void AppDelegate::Quit() {
    terminateSelf();
}

void AppDelegate::terminateSelf() {
    QCoreApplication::quit();
}

void AppDelegate::minimizeTo() {
    QWidget* front = m_notAccessWindow ? static_cast<QWidget*>(m_notAccessWindow.data()) : m_windCMain.get();
    if (front == nullptr) {
        return;
    }
    if (front->isMinimized()) {
        front->showNormal();
    } else {
        front->showMinimized();
    }
}

void AppDelegate::getHelp() {
    QDesktopServices::openUrl(helpPageUrl());
}

QUrl AppDelegate::helpPageUrl() {
    return QUrl(QStringLiteral("https://tidewell.app/help"));
}

// --- Status menu ---

void AppDelegate::setupMenu() {
    if (m_menuStatusBar) {
        m_menuStatusBar->clear();
    }
    auto menu = std::make_unique<QMenu>(QStringLiteral("StatusMenu"));
    menu->setObjectName(QStringLiteral("StatusMenu"));
    const auto addEntry = [&](const QString& title, void (AppDelegate::*action)()) {
        QAction* entry = menu->addAction(title);
        // Each entry is built with its title as its key equivalent. A title is no key sequence, so it stays a
        // property of the entry instead of a shortcut that would never fire.
        entry->setProperty("keyEquivalent", title);
        connect(entry, &QAction::triggered, this, action);
    };
    addEntry(QStringLiteral("Real Time Scan"), &AppDelegate::RealTimeScanChange);
    addEntry(QStringLiteral("Open Main Console"), &AppDelegate::OpenMainConsole);
    addEntry(QStringLiteral("Quit"), &AppDelegate::Quit);
    if (m_statusItem) {
        m_statusItem->setContextMenu(menu.get());
    }
    m_menuStatusBar = std::move(menu);
}

void AppDelegate::refreshStatusItem() {
    // Where the desktop has no status area (or no display at all) there is no icon; the menu and its state still
    // follow the setting.
    if (!m_statusItem && QSystemTrayIcon::isSystemTrayAvailable()) {
        m_statusItem = std::make_unique<QSystemTrayIcon>(templateIcon(QStringLiteral(":/icons/icon1.svg")));
        m_statusItem->setToolTip(QApplication::applicationDisplayName());
        m_statusItem->setContextMenu(m_menuStatusBar.get());
        // A click on the icon opens the menu, as the right button does.
        connect(m_statusItem.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason why) {
            if (why == QSystemTrayIcon::Trigger && m_menuStatusBar) {
                m_menuStatusBar->popup(QCursor::pos());
            }
        });
        m_statusItem->show();
    }
    if (!m_menuStatusBar || m_menuStatusBar->actions().isEmpty()) {
        return;
    }
    QAction* first = m_menuStatusBar->actions().front();
    first->setText(QStringLiteral("Real-time Scan %1")
                       .arg(m_isRealTimeProtectionON ? QStringLiteral("Enabled") : QStringLiteral("Disabled")));
    first->setCheckable(true);
    first->setChecked(m_isRealTimeProtectionON);
}

QMenu* AppDelegate::menuStatusBar() const {
    return m_menuStatusBar.get();
}

QSystemTrayIcon* AppDelegate::statusItem() const {
    return m_statusItem.get();
}

void AppDelegate::RealTimeScanChange() {
    realTimeScanChange(!m_isRealTimeProtectionON);
}

// --- Settings ---

void AppDelegate::makeAppChanges() {
    // Queued, so the window that asked has finished loading before the settings act on it.
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_isRealTimeProtectionON =
                m_settings.hasValue(keys::kRealTimeScan) ? m_settings.boolForKey(keys::kRealTimeScan) : true;

            m_runOnStart = m_settings.hasValue(keys::kRunOnStart) ? m_settings.boolForKey(keys::kRunOnStart) : true;
            m_settings.setBool(keys::kRunOnStart, m_runOnStart);

            // An absent key is NO, so a first start hides the taskbar entry; that is how Tidewell is meant to
            // start.
            m_dockIcon = m_settings.boolForKey(keys::kDockIcon);
            m_settings.setBool(keys::kDockIcon, m_dockIcon);

            // A start by the login item proves start at login is wanted, whatever was stored. There is no helper
            // process to tell to quit: the login item is an entry the session reads.
            if (m_environment.launchedAtLogin) {
                m_runOnStart = true;
            }
            m_settings.synchronize();

            seticonShow(m_dockIcon);
            setStartAtLoginEnabled(m_runOnStart);
            realTimeScanning(m_isRealTimeProtectionON);
            refreshStatusItem();
            emit settingsChanged();
        },
        Qt::QueuedConnection);
}

void AppDelegate::realTimeScanChange(bool on) {
    m_isRealTimeProtectionON = on;
    m_settings.setBool(keys::kRealTimeScan, on);
    realTimeScanning(on);
    refreshStatusItem();
    emit settingsChanged();
}

void AppDelegate::runAtStartupChange(bool on) {
    m_runOnStart = on;
    m_settings.setBool(keys::kRunOnStart, on);
    setStartAtLoginEnabled(on);
    emit settingsChanged();
}

void AppDelegate::hideDockChange(bool hide) {
    m_dockIcon = !hide;
    m_settings.setBool(keys::kDockIcon, !hide);
    seticonShow(!hide);
    emit settingsChanged();
}

void AppDelegate::realTimeScanning(bool on) {
    if (!on) {
        stopRealTimeTimer();
        return;
    }
    if (!m_isRealTimeProtectionON) {
        return;
    }
    stopRealTimeTimer();
    if (purgeScheduledBySystem()) {
        return;
    }
    m_realTimeScanningTimer = new QTimer(this);
    m_realTimeScanningTimer->setObjectName(QStringLiteral("realTimeScanningTimer"));
    m_realTimeScanningTimer->setInterval(m_realTimePeriod);
    m_realTimeScanningTimer->setSingleShot(false);
    connect(m_realTimeScanningTimer, &QTimer::timeout, this, &AppDelegate::addAdultContents);
    m_realTimeScanningTimer->start();
}

void AppDelegate::stopRealTimeTimer() {
    if (m_realTimeScanningTimer == nullptr) {
        return;
    }
    m_realTimeScanningTimer->stop();
    delete m_realTimeScanningTimer;
    m_realTimeScanningTimer = nullptr;
}

bool AppDelegate::purgeScheduledBySystem() const {
    return m_scheduledPurge != nullptr && m_scheduledPurge->isOn();
}

QTimer* AppDelegate::realTimeScanningTimer() const {
    return m_realTimeScanningTimer;
}

void AppDelegate::addAdultContents() {
    if (m_realTimePurge) {
        m_realTimePurge();
    }
}

void AppDelegate::setRealTimePeriod(std::chrono::milliseconds period) {
    m_realTimePeriod = period;
}

void AppDelegate::setStartAtLoginEnabled(bool on) {
    if (setLoginItemEnabled(m_environment.loginItem, on)) {
        return;
    }
    Alerts::runModal({QStringLiteral("Error"),
                      on ? QStringLiteral("Error in setting at start at login")
                         : QStringLiteral("Error in removing from start at login"),
                      {QStringLiteral("ok")},
                      std::nullopt});
}

void AppDelegate::seticonShow(bool show) {
    m_showsTaskbarEntry = show;
    applyTaskbarPolicy();
    if (!show) {
        // Losing the taskbar entry can leave the window behind others; it comes forward once the change settled.
        QTimer::singleShot(std::chrono::milliseconds(200), this, [this] { bringToFront(m_window); });
    }
}

void AppDelegate::applyTaskbarPolicy() {
    if (m_windCMain) {
        setWindowType(*m_windCMain, m_showsTaskbarEntry ? Qt::Window : Qt::Tool);
    }
}

// --- Folder access ---

std::string AppDelegate::diskRootPath() const {
    return disk().rootPrefix().empty() ? std::string("/") : disk().rootPrefix();
}

bool AppDelegate::isUserDirAccessible() {
    // Read backwards on purpose: a home folder that is writable already is taken as not granted.
    if (m_startedGrants.isWritableFileAtPath(disk().homePath())) {
        return false;
    }
    if (!m_settings.hasValue(keys::kSaveDirectory)) {
        return false;
    }
    return makeBookMarkURLAccessible(keys::kSaveDirectory);
}

bool AppDelegate::isHDAccessible() {
    if (m_startedGrants.isWritableFileAtPath(diskRootPath())) {
        return false;
    }
    if (!m_settings.hasValue(keys::kSaveDirectoryForHD)) {
        return false;
    }
    return makeBookMarkURLAccessible(keys::kSaveDirectoryForHD);
}

bool AppDelegate::makeBookMarkURLAccessible(const QString& key) {
    const std::optional<QByteArray> bytes = m_settings.dataForKey(key);
    if (!bytes) {
        return false;
    }
    const std::optional<FolderGrant> grant = grantFromBytes(bytes->toStdString());
    if (!grant || !resolveFolderGrant(*grant)) {
        return false;
    }
    return m_startedGrants.startAccessing(*grant);
}

bool AppDelegate::storeFolderGrant(const QString& folder, std::initializer_list<QString> keys) {
    const std::expected<FolderGrant, std::string> grant = createFolderGrant(folder.toStdString());
    if (!grant) {
        // Nothing is stored, which takes away any earlier grant at these keys.
        for (const QString& key : keys) {
            m_settings.removeObject(key);
        }
        logLine(fmt::format("Error bookmarking selected URL: {}", grant.error()));
        Alerts::runModal({QString(), QStringLiteral("Access Denied"), {}, std::nullopt});
        return false;
    }
    const QByteArray bytes = QByteArray::fromStdString(grantToBytes(*grant));
    for (const QString& key : keys) {
        m_settings.setData(key, bytes);
    }
    m_startedGrants.startAccessing(*grant);
    return true;
}

void AppDelegate::checkForHDAccess() {
    if (isHDAccessible()) {
        return;
    }
    const int answer = Alerts::runModal(
        {QStringLiteral("Access Alert"),
         QStringLiteral("Brackenfold does not have permission to scan your entire mac. Please grant root access or "
                        "continue to only scan your user directory."),
         {QStringLiteral("Continue"), QStringLiteral("Confirm Access")},
         std::nullopt});
    if (answer != kAlertFirstButtonReturn) {
        confirmAccessAction();
    }
}

void AppDelegate::confirmAccessAction() {
    const OpenPanelRequest request{
        QStringLiteral("Confirm Access"), QStringLiteral("Give access for scanning in your HardDisk"),
        QString::fromStdString(diskRootPath()), [this](const QString& folder) { return panelShouldEnableURL(folder); },
        [this](const QString& folder) { return panelValidateURL(folder); }};
    const std::optional<QString> chosen = OpenPanel::run(request, m_window);
    if (!chosen) {
        return;
    }
    // The whole-disk grant ends here: nothing follows it, not even the main window.
    storeFolderGrant(*chosen, {keys::kSaveDirectory, keys::kSaveDirectoryForHD});
}

bool AppDelegate::panelShouldEnableURL(const QString& folder) const {
    return comparablePath(folder) == comparablePath(QString::fromStdString(diskRootPath()));
}

bool AppDelegate::panelValidateURL(const QString& folder) const {
    return panelShouldEnableURL(folder);
}

std::optional<std::string> AppDelegate::grantedFolder() const {
    return m_startedGrants.boundary();
}

// --- Browser panel ---

void AppDelegate::displayPanel(const RecordList& entries) {
    // The panel belongs to the main window it is a sheet of; a new main window gets a panel of its own.
    if (!m_browserWindow && m_browserWindowFactory && m_windCMain) {
        m_browserWindow = m_browserWindowFactory(*this, *m_windCMain);
    }
    if (BrowserPanelWindow* panel = m_browserWindow.data()) {
        panel->setBrowserList(entries);
        panel->beginSheet();
    }
}

void AppDelegate::reloadPanel(const RecordList& entries) {
    if (BrowserPanelWindow* panel = m_browserWindow.data()) {
        panel->setBrowserList(entries);
    }
}

void AppDelegate::disMissPanel() {
    if (BrowserPanelWindow* panel = m_browserWindow.data()) {
        panel->endSheet();
    }
}

BrowserPanelWindow* AppDelegate::browserWindow() const {
    return m_browserWindow;
}

QString AppDelegate::relativeDateStringForDate(const QDateTime& date) {
    return tidewell::relativeDateStringForDate(date);
}

} // namespace tidewell
