#include "app/application.hpp"

#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QSystemTrayIcon>

#include "app/access_window.hpp"
#include "app/alerts.hpp"
#include "platform/crash_report.hpp"
#include "version.hpp"

namespace tidewell {

namespace {

void bringToFront(QWidget* window) {
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

} // namespace

Application::Application(AppEnvironment environment, QObject* parent)
    : WindowHost(parent), m_environment(std::move(environment)), m_store(m_environment.settingsFile),
      m_choices(m_store), m_access(m_store, m_environment.disk), m_scheduler(m_environment.purgeUnitFolder),
      m_placement(m_store) {
    // Closing the last window leaves Tidewell running in the status menu; only Quit ends it.
    QApplication::setQuitOnLastWindowClosed(false);
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this] {
        m_store.setBool(keys::kScanFlag, false);
        m_placement.remember();
    });

    connect(&m_statusMenu, &StatusMenu::realTimeScanChosen, this,
            [this] { setRealTimeScan(!m_choices.realTimeScan()); });
    connect(&m_statusMenu, &StatusMenu::mainWindowChosen, this, &Application::bringBackMainWindow);
    connect(&m_statusMenu, &StatusMenu::quitChosen, this, &Application::quit);
    connect(&m_scheduler, &RealTimeScheduler::systemScheduleChanged, this, &WindowHost::settingsChanged);
    // Losing the taskbar entry can leave a shown window behind others; a hidden one stays hidden.
    connect(&m_taskbar, &TaskbarPolicy::entryHidden, this, [this] {
        if (m_mainWindow && m_mainWindow->isVisible()) {
            bringToFront(m_mainWindow.get());
        }
    });
}

Application::~Application() {
    m_placement.remember();
    delete m_accessWindow.data();
}

void Application::start() {
    m_store.registerDefaults({{keys::kCrashOnExceptions, true}});
    startCrashReporting();
    if (m_access.startStoredGrant()) {
        showMainWindow();
    } else {
        showAccessWindow();
    }
    m_store.setBool(keys::kScanFlag, false);
}

void Application::startCrashReporting() {
    if (m_environment.crashReportFolder.isEmpty()) {
        return;
    }
    // Reporting is best effort: a folder that cannot be made leaves the process as it would be without it.
    installCrashReporter(m_environment.crashReportFolder.toStdString(), kVersion,
                         m_store.boolAt(keys::kCrashOnExceptions));
}

void Application::reopen() {
    bringToFront(m_mainWindow ? m_mainWindow.get() : m_accessWindow.data());
}

void Application::showMainWindow() {
    if (m_accessWindow) {
        // Hidden, not closed: closing the access window means quitting.
        m_accessWindow->hide();
        m_accessWindow->deleteLater();
        m_accessWindow = nullptr;
    }
    if (!m_mainWindowFactory) {
        return;
    }
    m_mainWindow = m_mainWindowFactory(*this);
    if (!m_mainWindow) {
        return;
    }
    m_taskbar.govern(m_mainWindow.get());
    m_placement.govern(m_mainWindow.get());
    m_mainWindow->installEventFilter(this);
    if (m_choices.startsInStatusMenu() && statusAreaAvailable()) {
        return;
    }
    bringToFront(m_mainWindow.get());
}

bool Application::statusAreaAvailable() const {
    return m_environment.statusAreaAvailable ? m_environment.statusAreaAvailable()
                                             : QSystemTrayIcon::isSystemTrayAvailable();
}

bool Application::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Close && watched == m_mainWindow.get() && !statusAreaAvailable()) {
        // Nothing could bring a closed window back: closing it ends Tidewell, as for any window application.
        QMetaObject::invokeMethod(this, &Application::quit, Qt::QueuedConnection);
    }
    return WindowHost::eventFilter(watched, event);
}

void Application::showAccessWindow() {
    if (!m_accessWindow) {
        m_accessWindow = new AccessWindow(m_access);
        // Quit and the window manager's close button alike: without the access window there is no way on.
        connect(m_accessWindow, &AccessWindow::quitRequested, this, &Application::quit);
        connect(m_accessWindow, &AccessWindow::granted, this, &Application::showMainWindow);
    }
    bringToFront(m_accessWindow);
}

void Application::bringBackMainWindow() {
    bringToFront(m_mainWindow ? m_mainWindow.get() : static_cast<QWidget*>(m_accessWindow.data()));
}

AccessWindow* Application::accessWindow() const {
    return m_accessWindow;
}

QUrl Application::helpPageUrl() {
    return QUrl(QStringLiteral("https://tidewell.app/help"));
}

// --- WindowHost ---

void Application::restoreSettings() {
    // Queued, so the window that asked has finished loading before the settings act on it.
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_choices.restore(m_environment.launchedAtLogin);
            m_taskbar.setShowsEntry(m_choices.showsTaskbarEntry());
            applyRunAtStart(m_choices.runAtStart());
            m_scheduler.switchOn(m_choices.realTimeScan());
            m_statusMenu.refresh(m_choices.realTimeScan());
            emit settingsChanged();
        },
        Qt::QueuedConnection);
}

void Application::setRealTimeScan(bool on) {
    m_choices.setRealTimeScan(on);
    m_scheduler.switchOn(on);
    m_statusMenu.refresh(on);
    emit settingsChanged();
}

void Application::setRunAtStart(bool on) {
    m_choices.setRunAtStart(on);
    applyRunAtStart(on);
    emit settingsChanged();
}

void Application::setShowsTaskbarEntry(bool show) {
    m_choices.setShowsTaskbarEntry(show);
    m_taskbar.setShowsEntry(show);
    emit settingsChanged();
}

void Application::applyRunAtStart(bool on) {
    if (setLoginItemEnabled(m_environment.loginItem, on)) {
        return;
    }
    Alerts::runModal({QStringLiteral("Error"),
                      on ? QStringLiteral("Error in setting at start at login")
                         : QStringLiteral("Error in removing from start at login"),
                      {QStringLiteral("ok")},
                      std::nullopt});
}

QByteArray Application::storedSelection() const {
    return m_store.bytesAt(keys::kSelection).value_or(QByteArray());
}

void Application::storeSelection(const QByteArray& selection) {
    if (selection.isEmpty()) {
        m_store.remove(keys::kSelection);
    } else {
        m_store.setBytes(keys::kSelection, selection);
    }
}

void Application::openHelp() {
    QDesktopServices::openUrl(helpPageUrl());
}

void Application::minimiseWindow() {
    if (!m_mainWindow) {
        return;
    }
    if (m_mainWindow->isMinimized()) {
        m_mainWindow->showNormal();
    } else {
        m_mainWindow->showMinimized();
    }
}

void Application::quit() {
    QCoreApplication::quit();
}

} // namespace tidewell
