#include <QFile>
#include <QLabel>
#include <QProcess>
#include <QPushButton>

#include "support/fake_running_apps.hpp"
#include "support/log_capture.hpp"
#include "support/sample_disk.hpp"
#include "ui/browser_window.hpp"
#include "ui/progress_indicator.hpp"
#include "window_fixture.hpp"

namespace tidewell::testing {
namespace {

// A process of this test's user named like a browser: a copy of sleep under that name, running until quit.
class PretendBrowser {
public:
    PretendBrowser(const std::string& folder, const QString& name) {
        const QString program = QString::fromStdString(folder) + QLatin1Char('/') + name;
        QFile::copy(QStringLiteral("/bin/sleep"), program);
        QFile::setPermissions(program, QFile::ReadOwner | QFile::ExeOwner);
        m_process.start(program, {QStringLiteral("600")});
        m_started = m_process.waitForStarted(10000);
    }
    ~PretendBrowser() { quit(); }
    PretendBrowser(const PretendBrowser&) = delete;
    PretendBrowser& operator=(const PretendBrowser&) = delete;

    [[nodiscard]] bool started() const { return m_started; }
    void quit() {
        if (m_process.state() != QProcess::NotRunning) {
            m_process.kill();
            m_process.waitForFinished(10000);
        }
    }

private:
    QProcess m_process;
    bool m_started = false;
};

const std::string kChromeCookies = "Library/Application Support/Google/Chrome/Default/Cookies";
const std::string kFirefoxCookies =
    "Library/Application Support/Firefox/Profiles/k2x9w0aq.default-release/cookies.sqlite";
const std::string kSystemCache = "Library/Caches/com.example.editor/Cache.db";

class CleanTest : public WindowFixture {
protected:
    void SetUp() override {
        WindowFixture::SetUp();
        writeSampleDisk(disk.root(), disk.login());
        std::filesystem::create_directories(temp.path() + "/bin");
    }

    [[nodiscard]] bool exists(const std::string& path) const { return std::filesystem::exists(disk.at(path)); }
    [[nodiscard]] BrowserWindow* panel() const { return dynamic_cast<BrowserWindow*>(delegate->browserWindow()); }
    [[nodiscard]] QStringList panelNames() const {
        QStringList names;
        for (const QLabel* label : panel()->browserView()->rowNames()) {
            names.push_back(label->text());
        }
        return names;
    }
    void answerYes() { Alerts::answerNextAlert(kAlertFirstButtonReturn); }
};

TEST_F(CleanTest, RunningBrowsersHoldTheCleanInThePanelUntilRetryFindsThemGone) {
    PretendBrowser chrome(temp.path() + "/bin", QStringLiteral("Google Chrome"));
    PretendBrowser firefox(temp.path() + "/bin", QStringLiteral("Firefox"));
    ASSERT_TRUE(chrome.started() && firefox.started());
    launch();
    const RecordPtr chromeBefore = section(rowNamed("Chrome"));

    answerYes();
    controller().removeButton()->click();
    ASSERT_EQ(Alerts::shownAlerts().size(), 1U);
    EXPECT_EQ(Alerts::shownAlerts().front().messageText, "Confirm");
    EXPECT_EQ(Alerts::shownAlerts().front().informativeText, "Are you sure you want to erase selected privacy data?");
    ASSERT_NE(panel(), nullptr);
    EXPECT_TRUE(panel()->isSheetShown());
    EXPECT_EQ(panelNames(), (QStringList{"Chrome", "Firefox"}));
    EXPECT_EQ(panel()->browserView()->rowImages(), (QStringList{"browser_chrome", "browser_firefox"}));
    EXPECT_TRUE(exists(kChromeCookies) && exists(kFirefoxCookies) && exists(kSystemCache)) << "nothing goes yet";

    // The sheet lies over the window's content: the window's own buttons are out of reach.
    EXPECT_EQ(panel()->parentWidget(), &window());
    EXPECT_EQ(panel()->geometry(), qobject_cast<CustomWindow*>(&window())->contentRect());
    const QPoint clean = controller().removeButton()->mapTo(&window(), controller().removeButton()->rect().center());
    EXPECT_EQ(window().childAt(clean), panel());

    // Retry while one still runs: the panel lists what runs now, nothing is deleted, nothing is asked again.
    chrome.quit();
    panel()->browserView()->retry()->click();
    EXPECT_TRUE(panel()->isSheetShown());
    EXPECT_EQ(panelNames(), QStringList{"Firefox"});
    EXPECT_TRUE(exists(kChromeCookies) && exists(kFirefoxCookies));
    EXPECT_EQ(section(rowNamed("Chrome")), chromeBefore) << "no rescan either";

    // Retry once none runs: cleaned, rescanned, panel gone. (Retry is pressed again should another test's
    // pretend Firefox happen to run at that moment.)
    firefox.quit();
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
            if (panel()->isSheetShown()) {
                panel()->browserView()->retry()->click();
            }
            return !panel()->isSheetShown();
        },
        20000));
    EXPECT_FALSE(panel()->isVisible());
    EXPECT_FALSE(exists(kChromeCookies));
    EXPECT_FALSE(exists(kFirefoxCookies));
    EXPECT_FALSE(exists(kSystemCache));
    EXPECT_TRUE(exists("Documents")) << "what no item names stays";
    EXPECT_EQ(Alerts::shownAlerts().size(), 1U);
    waitForScan();
    ASSERT_GE(rowNamed("Chrome"), 0);
    EXPECT_NE(section(rowNamed("Chrome")), chromeBefore);
}

TEST_F(CleanTest, CloseAbandonsTheCleanAndAPanelMadeOnceIsReused) {
    PretendBrowser firefox(temp.path() + "/bin", QStringLiteral("Firefox"));
    ASSERT_TRUE(firefox.started());
    launch();
    const RecordPtr firefoxBefore = section(rowNamed("Firefox"));

    answerYes();
    controller().removeButton()->click();
    ASSERT_NE(panel(), nullptr);
    BrowserWindow* made = panel();
    EXPECT_EQ(panelNames(), QStringList{"Firefox"});
    panel()->browserView()->closeWindow()->click();
    EXPECT_FALSE(panel()->isSheetShown());
    EXPECT_FALSE(panel()->isVisible());
    EXPECT_FALSE(controller().scannignIndicator()->isAnimating());
    EXPECT_TRUE(exists(kFirefoxCookies) && exists(kSystemCache));
    EXPECT_EQ(section(rowNamed("Firefox")), firefoxBefore);

    answerYes();
    controller().removeButton()->click();
    EXPECT_EQ(panel(), made);
    EXPECT_TRUE(panel()->isSheetShown());
    panel()->browserView()->closeWindow()->click();
    firefox.quit();
    settle();
    EXPECT_TRUE(exists(kFirefoxCookies)) << "a closed panel has no Retry left to clean";
}

TEST_F(CleanTest, WithNoBrowserRunningYesCleansAfterTheIndicatorAndNoKeepsEverything) {
    launch(ToolsViewOptions{std::nullopt,
                            std::make_shared<FakeRunningApps>(std::initializer_list<std::set<std::string>>{{}})});
    Alerts::answerNextAlert(kAlertSecondButtonReturn);
    controller().removeButton()->click();
    settle();
    EXPECT_EQ(delegate->browserWindow(), nullptr);
    EXPECT_FALSE(controller().scannignIndicator()->isAnimating());
    EXPECT_TRUE(exists(kChromeCookies) && exists(kSystemCache)) << "No deletes nothing";

    answerYes();
    controller().removeButton()->click();
    EXPECT_EQ(delegate->browserWindow(), nullptr) << "no panel without a running browser";
    EXPECT_TRUE(controller().scannignIndicator()->isAnimating());
    EXPECT_TRUE(exists(kChromeCookies)) << "the clean waits for the indicator to be seen";
    EXPECT_TRUE(QTest::qWaitFor([&] { return !exists(kChromeCookies); }, 10000));
    EXPECT_FALSE(exists(kSystemCache));
    EXPECT_FALSE(exists(kFirefoxCookies));
    EXPECT_FALSE(controller().scanDriver().scanDone()) << "a fresh scan follows at once";
    waitForScan();
    EXPECT_FALSE(controller().scannignIndicator()->isAnimating());
}

// The window holds the granted folder for each clean: what lies outside it is left and logged, and a folder that
// is no longer the one granted (moved away, another made in its place) is not cleaned at all.
TEST_F(CleanTest, TheWindowsCleanRemovesOnlyTickedLocationsInsideTheGrantedFolder) {
    const LogCapture logs;
    const auto logged = [&](const std::string& line) {
        const std::vector<std::string> lines = logs.lines();
        return std::ranges::find(lines, line) != lines.end();
    };
    disk.file("Library/Caches/inside", 10).file("Library/Caches/unticked", 10).file("/outside", 10);
    const FileUrl inside{disk.at("Library/Caches/inside")};
    const FileUrl unticked{disk.at("Library/Caches/unticked")};
    const FileUrl outside{disk.at("/outside")};
    launch(ToolsViewOptions{std::vector<SectionBuilder>{builderOf([=] {
                                return sectionNamed("System", {itemNamed("Caches", true, true, {inside, outside}),
                                                               itemNamed("Other", true, false, {unticked})});
                            })},
                            std::make_shared<FakeRunningApps>(std::initializer_list<std::set<std::string>>{{}})});
    answerYes();
    controller().removeButton()->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !exists("Library/Caches/inside"); }, 10000));
    waitForScan();
    EXPECT_TRUE(exists("/outside")) << "outside the home folder Tidewell was granted";
    EXPECT_TRUE(exists("Library/Caches/unticked"));
    EXPECT_TRUE(logged(outside.path + ": left as it was: it lies outside the folder Tidewell may clean"));

    std::filesystem::rename(disk.home(), disk.at("/Users/ann-moved"));
    disk.file("Library/Caches/inside", 10);
    answerYes();
    controller().removeButton()->click();
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return logged(inside.path + ": left as it was: it lies outside the folder Tidewell may clean"); },
        10000));
    EXPECT_TRUE(exists("Library/Caches/inside")) << "not the granted folder";
    waitForScan();
}

} // namespace
} // namespace tidewell::testing
