#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>
#include <QSettings>
#include <QTest>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <memory>
#include <string>

#include "app/alerts.hpp"
#include "app/application.hpp"
#include "app/folder_panel.hpp"
#include "app/settings.hpp"
#include "platform/folder_grant.hpp"
#include "support/disk_builder.hpp"

namespace tidewell::testing {

/// Runs the main thread's events until a timer of delay, started now, has fired: whatever the code under test
/// scheduled for at most delay from now has run by then, since timers fire in the order they fall due. This is how
/// a test waits for something that should not happen.
inline void runEventsScheduledWithin(std::chrono::milliseconds delay) {
    bool fired = false;
    QTimer::singleShot(delay, [&fired] { fired = true; });
    ASSERT_TRUE(QTest::qWaitFor([&fired] { return fired; }, 60000));
}

/// The application's side of a main window, without the window's own work: made unshown, it asks the host to
/// restore the settings as the real window does when it loads.
class StandInMainWindow : public QWidget {
public:
    explicit StandInMainWindow(WindowHost& host) {
        resize(560, 400);
        host.restoreSettings();
    }
};

/// A disk with ann's home, settings and an autostart folder in a fresh temporary folder, and applications made on
/// them with the stand-in main window. Alerts and panels answer only what a test queues.
class AppFixture : public ::testing::Test {
protected:
    TempFolder temp;
    DiskBuilder disk{temp.path() + "/disk"};
    QString settingsFile = QString::fromStdString(temp.path() + "/config/tidewell/tidewell.conf");
    std::string autostartFolder = temp.path() + "/config/autostart";
    int windowsMade = 0;
    /// Whether the desktop has a status area for the applications made here (a tray host runs).
    bool statusArea = true;

    void SetUp() override {
        disk.folder("Documents").folder("/Users/bob");
        Alerts::resetSeam();
        FolderPanel::resetSeam();
    }

    void TearDown() override {
        Alerts::resetSeam();
        FolderPanel::resetSeam();
    }

    std::unique_ptr<Application> makeApplication(bool launchedAtLogin = false) {
        auto application = std::make_unique<Application>(AppEnvironment{disk.disk(),
                                                                         settingsFile,
                                                                         {autostartFolder, "/usr/bin/tidewell"},
                                                                         launchedAtLogin,
                                                                         QString(),
                                                                         QString(),
                                                                         [this] { return statusArea; }});
        application->setMainWindowFactory([this](WindowHost& host) -> std::unique_ptr<QWidget> {
            ++windowsMade;
            return std::make_unique<StandInMainWindow>(host);
        });
        return application;
    }

    /// An application that has gone through the start-up and run what it queued (the settings restore).
    std::unique_ptr<Application> launch(bool launchedAtLogin = false) {
        auto application = makeApplication(launchedAtLogin);
        application->start();
        QCoreApplication::processEvents();
        return application;
    }

    /// Stores a working grant for a folder of the disk at "SaveDirectory", as the access window does.
    void storeGrant(std::string_view folder) {
        const auto grant = createFolderGrant(disk.at(folder));
        ASSERT_TRUE(grant);
        AppSettings(settingsFile).setBytes(keys::kHomeGrant, QByteArray::fromStdString(grantToBytes(*grant)));
    }

    /// The settings as stored in the file.
    [[nodiscard]] QVariant stored(const QString& key) const {
        return QSettings(settingsFile, QSettings::IniFormat).value(key);
    }

    [[nodiscard]] bool loginEntryExists() const {
        return QFile::exists(QString::fromStdString(autostartFolder + "/tidewell.desktop"));
    }

    [[nodiscard]] QString home() const { return QString::fromStdString(disk.home()); }
    [[nodiscard]] QString diskPath(std::string_view path) const { return QString::fromStdString(disk.at(path)); }
};

} // namespace tidewell::testing
