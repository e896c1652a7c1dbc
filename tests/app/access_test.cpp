#include <gtest/gtest.h>

#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include "app/access_window.hpp"
#include "app_fixture.hpp"
#include "support/log_capture.hpp"

namespace tidewell::testing {
namespace {

class AccessTest : public AppFixture {
protected:
    std::unique_ptr<Application> application;

    AccessWindow* accessWindow() const { return application->accessWindow(); }
    std::optional<std::string> grantedFolder() const { return application->folderAccess().grantedFolder(); }

    // Presses Confirm Access with the panel answering choice.
    void confirmWith(std::optional<QString> choice) {
        ASSERT_NE(accessWindow(), nullptr);
        FolderPanel::answerNextPanel(std::move(choice));
        accessWindow()->confirmAccessButton()->click();
    }

    // Nothing was granted: nothing stored, the access window still up, no main window on its way.
    void expectNothingGranted() {
        EXPECT_FALSE(application->store().hasValue(keys::kHomeGrant));
        EXPECT_FALSE(grantedFolder());
        runEventsScheduledWithin(AccessWindow::kHandOverDelay);
        ASSERT_NE(accessWindow(), nullptr);
        EXPECT_TRUE(accessWindow()->isVisible());
        EXPECT_EQ(application->mainWindow(), nullptr);
    }
};

TEST_F(AccessTest, GrantingTheHomeFolderOpensTheMainWindowAMomentLater) {
    application = launch();
    ASSERT_NE(accessWindow(), nullptr);
    EXPECT_EQ(accessWindow()->confirmAccessButton()->text(), "Confirm Access");
    EXPECT_FALSE(accessWindow()->confirmAccessButton()->isCheckable());

    QSignalSpy granted(accessWindow(), &AccessWindow::granted);
    confirmWith(home());
    const auto& request = FolderPanel::lastRequest();
    ASSERT_TRUE(request);
    EXPECT_EQ(request->prompt, "Confirm Access");
    EXPECT_EQ(request->message, "Give access for scanning in your Home Directory");
    EXPECT_EQ(request->startFolder, home());

    EXPECT_TRUE(application->store().isStored(keys::kHomeGrant));
    EXPECT_EQ(grantedFolder(), disk.home()) << "the grant is the deletion boundary from now on";
    EXPECT_EQ(application->mainWindow(), nullptr) << "not at once";
    ASSERT_TRUE(granted.wait());
    EXPECT_NE(application->mainWindow(), nullptr);
    EXPECT_EQ(accessWindow(), nullptr);
    EXPECT_TRUE(Alerts::shownAlerts().empty());
}

TEST_F(AccessTest, AStoredGrantThatHoldsTheHomeIsUsedAtTheNextLaunch) {
    application = launch();
    confirmWith(home());
    application.reset();

    application = launch();
    EXPECT_EQ(accessWindow(), nullptr);
    ASSERT_NE(application->mainWindow(), nullptr);
    EXPECT_EQ(grantedFolder(), disk.home());
    // The launch check reads backwards: with the grant started, the home folder is writable, which it takes as
    // not granted.
    EXPECT_FALSE(application->folderAccess().startStoredGrant());
}

// The panel offers the disk's home alone; any other folder chosen is not granted, and the window says which
// folder is needed, until the home is chosen.
TEST_F(AccessTest, ThePanelGrantsOnlyTheHomeAndNamesItWhenAnotherFolderIsChosen) {
    application = launch();
    confirmWith(std::nullopt);
    const auto& request = FolderPanel::lastRequest();
    ASSERT_TRUE(request);
    for (const QString& folder : {home(), home() + "/", diskPath("/Users/bob/../ann")}) {
        EXPECT_TRUE(request->offers(folder)) << folder.toStdString();
    }
    for (const QString& folder : {diskPath("Documents"), diskPath("/Users"), diskPath("/Users/bob"),
                                  QString::fromStdString(disk.root()), QString::fromStdString(temp.path()),
                                  QStringLiteral("/")}) {
        EXPECT_FALSE(request->offers(folder)) << folder.toStdString();
    }
    EXPECT_TRUE(accessWindow()->wrongFolderNote()->isHidden()) << "a cancelled panel says nothing";

    for (const QString& other : {diskPath("/Users"), QString::fromStdString(disk.root()), diskPath("Documents")}) {
        confirmWith(other);
        expectNothingGranted();
        const QLabel* note = accessWindow()->wrongFolderNote();
        EXPECT_TRUE(note->isVisible()) << other.toStdString();
        EXPECT_TRUE(note->text().contains(home())) << note->text().toStdString();
        EXPECT_TRUE(note->text().contains(other)) << note->text().toStdString();
        EXPECT_GE(note->geometry().bottom(), 0);
        EXPECT_LE(note->geometry().bottom(), accessWindow()->height()) << "the note fits in the window";
    }
    EXPECT_TRUE(Alerts::shownAlerts().empty());

    QSignalSpy granted(accessWindow(), &AccessWindow::granted);
    confirmWith(home());
    EXPECT_TRUE(accessWindow()->wrongFolderNote()->isHidden());
    EXPECT_EQ(grantedFolder(), disk.home());
    EXPECT_TRUE(granted.wait());
}

// A grant stored for another disk (another --root) or for a folder that does not hold this disk's home is not
// used: the access window asks again and nothing is granted. A stored grant of a folder above the home still is.
TEST_F(AccessTest, AStoredGrantThatDoesNotHoldTheHomeIsNotUsed) {
    DiskBuilder other{temp.path() + "/other", "ann"};
    other.folder("Library");
    const std::expected<FolderGrant, std::string> otherHome = createFolderGrant(other.home());
    ASSERT_TRUE(otherHome);
    AppSettings(settingsFile).setBytes(keys::kHomeGrant, QByteArray::fromStdString(grantToBytes(*otherHome)));
    application = launch();
    ASSERT_NE(accessWindow(), nullptr) << "a grant for another disk's home";
    EXPECT_FALSE(grantedFolder());
    EXPECT_EQ(application->mainWindow(), nullptr);
    application.reset();

    storeGrant("/Users/ann/Documents");
    application = launch();
    ASSERT_NE(accessWindow(), nullptr) << "a grant for a folder inside the home";
    EXPECT_FALSE(grantedFolder());
    application.reset();

    storeGrant("/Users");
    application = launch();
    EXPECT_EQ(accessWindow(), nullptr) << "an earlier grant of the folder above the home holds it";
    EXPECT_EQ(grantedFolder(), disk.at("/Users"));
}

TEST_F(AccessTest, ReturnConfirmsAccessAndEscapeQuits) {
    application = launch();
    ASSERT_NE(accessWindow(), nullptr);
    accessWindow()->activateWindow();
    QSignalSpy quit(accessWindow(), &AccessWindow::quitRequested);
    FolderPanel::answerNextPanel(std::nullopt);
    QTest::keyClick(accessWindow(), Qt::Key_Return);
    EXPECT_TRUE(FolderPanel::lastRequest()) << "Return opened the panel";
    EXPECT_EQ(quit.count(), 0);

    QTest::keyClick(accessWindow(), Qt::Key_Escape);
    EXPECT_EQ(quit.count(), 1);
}

TEST_F(AccessTest, ACancelledChoiceGrantsNothing) {
    application = launch();
    confirmWith(std::nullopt);
    expectNothingGranted();
    EXPECT_TRUE(Alerts::shownAlerts().empty());
}

TEST_F(AccessTest, AGrantThatCannotBeMadeRemovesTheOldOneAndSaysAccessDenied) {
    AppSettings(settingsFile).setBytes(keys::kHomeGrant, "an earlier grant that no longer resolves");
    ::rename(disk.home().c_str(), (disk.home() + "-away").c_str());
    application = launch();
    const LogCapture logs;
    Alerts::answerNextAlert(kAlertFirstButton);
    confirmWith(home());

    expectNothingGranted();
    ASSERT_EQ(logs.lines().size(), 1U);
    EXPECT_TRUE(logs.lines().front().starts_with("Error bookmarking selected URL: " + disk.home()));
    ASSERT_EQ(Alerts::shownAlerts().size(), 1U);
    EXPECT_EQ(Alerts::shownAlerts().front().informativeText, "Access Denied");
    EXPECT_EQ(Alerts::shownAlerts().front().messageText, "");
}

TEST_F(AccessTest, AGrantForAFolderThatWasMovedOrDamagedIsNoGrant) {
    storeGrant("/Users/ann");
    ::rename(disk.home().c_str(), (disk.home() + "-old").c_str());
    disk.folder("/Users/ann");
    application = launch();
    EXPECT_NE(accessWindow(), nullptr) << "a new folder at the same path is not the granted one";
    application.reset();

    AppSettings(settingsFile).setBytes(keys::kHomeGrant, "garbage");
    application = launch();
    EXPECT_NE(accessWindow(), nullptr);
    EXPECT_FALSE(grantedFolder());
}

TEST_F(AccessTest, TheRealPanelTakesOnlyAnAcceptedFolder) {
    const QString allowed = diskPath("/Users");
    FolderPanel panel({"Confirm Access", "Give access", home(),
                       [&](const QString& folder) { return comparablePath(folder) == comparablePath(allowed); },
                       [&](const QString& folder) { return comparablePath(folder) == comparablePath(allowed); }},
                      nullptr);
    panel.show();
    panel.selectFile(diskPath("Documents"));
    panel.accept();
    EXPECT_TRUE(panel.isVisible()) << "a refused folder leaves the panel open";
    EXPECT_NE(panel.result(), QDialog::Accepted);

    panel.selectFile(allowed);
    panel.accept();
    EXPECT_EQ(panel.result(), QDialog::Accepted);
    EXPECT_EQ(comparablePath(panel.chosenFolder()), comparablePath(allowed));
}

// On a Linux disk the access window asks for the Linux home and offers it alone, and the
// login item of "Run at start" (on by default) is written only once the home is granted.
TEST_F(AccessTest, OnALinuxDiskThePanelStartsAtTheHomeAndTheLoginItemWaitsForTheGrant) {
    DiskBuilder linuxDisk{temp.path() + "/linux", "ann", linuxLayout()};
    linuxDisk.folder(".config").folder("/home/bob");
    auto linuxApplication = std::make_unique<Application>(
        AppEnvironment{linuxDisk.disk(), settingsFile, {autostartFolder, "/usr/bin/tidewell"}, false, QString()});
    linuxApplication->setMainWindowFactory(
        [](WindowHost& host) -> std::unique_ptr<QWidget> { return std::make_unique<StandInMainWindow>(host); });
    linuxApplication->start();
    QCoreApplication::processEvents();
    EXPECT_FALSE(loginEntryExists()) << "nothing is written before a grant";

    AccessWindow* window = linuxApplication->accessWindow();
    ASSERT_NE(window, nullptr);
    FolderPanel::answerNextPanel(QString::fromStdString(linuxDisk.home()));
    QSignalSpy granted(window, &AccessWindow::granted);
    window->confirmAccessButton()->click();
    const auto& request = FolderPanel::lastRequest();
    ASSERT_TRUE(request);
    EXPECT_EQ(request->startFolder.toStdString(), linuxDisk.root() + "/home/ann");
    EXPECT_FALSE(request->offers(QString::fromStdString(linuxDisk.at("/home"))));
    EXPECT_FALSE(request->offers(QString::fromStdString(linuxDisk.at("/home/bob"))));
    EXPECT_FALSE(request->offers(QString::fromStdString(linuxDisk.root() + "/Users")));

    ASSERT_TRUE(granted.wait());
    ASSERT_NE(linuxApplication->mainWindow(), nullptr);
    QCoreApplication::processEvents();
    EXPECT_TRUE(loginEntryExists()) << "the granted home's Run at start writes the login item";
}

} // namespace
} // namespace tidewell::testing
