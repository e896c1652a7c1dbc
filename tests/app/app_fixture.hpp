#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>
#include <QSettings>
#include <QWidget>
#include <memory>
#include <string>

#include "app/alerts.hpp"
#include "app/app_delegate.hpp"
#include "app/open_panel.hpp"
#include "app/settings.hpp"
#include "platform/folder_grant.hpp"
#include "support/disk_builder.hpp"

namespace tidewell::testing {

/// The delegate's side of a main window, without the window's own work: made unshown, it asks the delegate to
/// restore the settings as the real window does when it loads.
class StandInMainWindow : public QWidget {
public:
    explicit StandInMainWindow(AppDelegate& delegate) {
        setObjectName(QStringLiteral("mainWindowID"));
        resize(560, 400);
        delegate.makeAppChanges();
    }
};

/// A disk with ann's home, settings and an autostart folder in a fresh temporary folder, and delegates made on
/// them with the stand-in main window. Alerts and panels answer only what a test queues.
class AppFixture : public ::testing::Test {
protected:
    TempFolder temp;
    DiskBuilder disk{temp.path() + "/disk"};
    QString settingsFile = QString::fromStdString(temp.path() + "/config/tidewell/tidewell.conf");
    std::string autostartFolder = temp.path() + "/config/autostart";
    int windowsMade = 0;

    void SetUp() override {
        disk.folder("Documents").folder("/Users/bob");
        Alerts::resetSeam();
        OpenPanel::resetSeam();
    }

    void TearDown() override {
        Alerts::resetSeam();
        OpenPanel::resetSeam();
    }

    std::unique_ptr<AppDelegate> makeDelegate(bool launchedAtLogin = false) {
        auto delegate = std::make_unique<AppDelegate>(AppEnvironment{
            disk.disk(), settingsFile, {autostartFolder, "/usr/bin/tidewell"}, launchedAtLogin, QString()});
        delegate->setMainWindowFactory([this](AppDelegate& owner) -> std::unique_ptr<QWidget> {
            ++windowsMade;
            return std::make_unique<StandInMainWindow>(owner);
        });
        return delegate;
    }

    /// A delegate that has gone through the start-up and run what it queued (the settings restore).
    std::unique_ptr<AppDelegate> launch(bool launchedAtLogin = false) {
        auto delegate = makeDelegate(launchedAtLogin);
        delegate->applicationDidFinishLaunching();
        settle();
        return delegate;
    }

    /// Runs what is queued on the main thread.
    static void settle() { QCoreApplication::processEvents(); }

    /// Stores a working grant for a folder of the disk at "SaveDirectory", as the access window does.
    void storeGrant(std::string_view folder, const QString& key = keys::kSaveDirectory) {
        const auto grant = createFolderGrant(disk.at(folder));
        ASSERT_TRUE(grant);
        AppSettings(settingsFile).setData(key, QByteArray::fromStdString(grantToBytes(*grant)));
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
