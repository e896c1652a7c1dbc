#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QPushButton>
#include <QTest>

#include "app/not_access_vc.hpp"
#include "app_fixture.hpp"
#include "support/log_capture.hpp"

namespace tidewell::testing {
namespace {

class AccessTest : public AppFixture {
protected:
    std::unique_ptr<AppDelegate> delegate;

    NotAccessVC* accessWindow() const { return delegate->notAccessWindow(); }

    // Presses Confirm Access with the panel answering choice.
    void confirmWith(std::optional<QString> choice) {
        ASSERT_NE(accessWindow(), nullptr);
        OpenPanel::answerNextPanel(std::move(choice));
        accessWindow()->confirmAccess()->click();
    }

    // Nothing was granted: nothing stored, the access window still up, no main window on its way.
    void expectNothingGranted() {
        EXPECT_FALSE(delegate->settings().hasValue(keys::kSaveDirectory));
        EXPECT_FALSE(delegate->grantedFolder());
        QTest::qWait(400);
        ASSERT_NE(accessWindow(), nullptr);
        EXPECT_TRUE(accessWindow()->isVisible());
        EXPECT_EQ(delegate->windCMain(), nullptr);
    }
};

TEST_F(AccessTest, GrantingTheHomeFolderOpensTheMainWindowAMomentLater) {
    delegate = launch();
    ASSERT_NE(accessWindow(), nullptr);
    EXPECT_EQ(accessWindow()->confirmAccess()->text(), "Confirm Access");
    EXPECT_FALSE(accessWindow()->confirmAccess()->isCheckable());

    QElapsedTimer clock;
    clock.start();
    confirmWith(home());
    const auto& request = OpenPanel::lastRequest();
    ASSERT_TRUE(request);
    EXPECT_EQ(request->prompt, "Confirm Access");
    EXPECT_EQ(request->message, "Give access for scanning in your Home Directory");
    EXPECT_EQ(request->startFolder, home());

    EXPECT_TRUE(delegate->settings().isStored(keys::kSaveDirectory));
    EXPECT_EQ(delegate->grantedFolder(), disk.home()) << "the grant is the deletion boundary from now on";
    EXPECT_EQ(delegate->windCMain(), nullptr) << "not at once";
    ASSERT_TRUE(QTest::qWaitFor([&] { return delegate->windCMain() != nullptr; }, 5000));
    EXPECT_GE(clock.elapsed(), 300);
    EXPECT_EQ(accessWindow(), nullptr);
    EXPECT_TRUE(Alerts::shownAlerts().empty());
}

TEST_F(AccessTest, UsersIsAcceptedAndResolvesAtTheNextLaunch) {
    delegate = launch();
    confirmWith(diskPath("/Users"));
    EXPECT_EQ(delegate->grantedFolder(), disk.at("/Users"));
    delegate.reset();

    delegate = launch();
    EXPECT_EQ(accessWindow(), nullptr);
    ASSERT_NE(delegate->windCMain(), nullptr);
    EXPECT_EQ(delegate->grantedFolder(), disk.at("/Users"));
    // The launch check reads backwards: with the grant started, the home folder is writable, which it takes as
    // not granted.
    EXPECT_FALSE(delegate->isUserDirAccessible());
}

TEST_F(AccessTest, ThePanelOffersExactlyTheHomeUsersAndTheDiskRoot) {
    delegate = launch();
    const NotAccessVC* window = accessWindow();
    ASSERT_NE(window, nullptr);
    for (const QString& folder : {home(), home() + "/", diskPath("/Users"), diskPath("/Users/bob/../ann"),
                                  QString::fromStdString(disk.root()), QString::fromStdString(disk.root() + "/")}) {
        EXPECT_TRUE(window->panelShouldEnableURL(folder)) << folder.toStdString();
        EXPECT_TRUE(window->panelValidateURL(folder)) << folder.toStdString();
    }
    for (const QString& folder :
         {diskPath("Documents"), diskPath("/Users/bob"), QString::fromStdString(temp.path()), QStringLiteral("/")}) {
        EXPECT_FALSE(window->panelShouldEnableURL(folder)) << folder.toStdString();
        EXPECT_FALSE(window->panelValidateURL(folder)) << folder.toStdString();
    }
}

TEST_F(AccessTest, ARefusedOrCancelledChoiceGrantsNothing) {
    delegate = launch();
    confirmWith(diskPath("Documents"));
    expectNothingGranted();
    confirmWith(std::nullopt);
    expectNothingGranted();
    EXPECT_TRUE(Alerts::shownAlerts().empty());
}

TEST_F(AccessTest, AGrantThatCannotBeMadeRemovesTheOldOneAndSaysAccessDenied) {
    AppSettings(settingsFile).setData(keys::kSaveDirectory, "an earlier grant that no longer resolves");
    ::rename(disk.home().c_str(), (disk.home() + "-away").c_str());
    delegate = launch();
    const LogCapture logs;
    Alerts::answerNextAlert(kAlertFirstButtonReturn);
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
    delegate = launch();
    EXPECT_NE(accessWindow(), nullptr) << "a new folder at the same path is not the granted one";
    delegate.reset();

    AppSettings(settingsFile).setData(keys::kSaveDirectory, "garbage");
    delegate = launch();
    EXPECT_NE(accessWindow(), nullptr);
    EXPECT_FALSE(delegate->grantedFolder());
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

} // namespace
} // namespace tidewell::testing
