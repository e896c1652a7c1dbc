#include <QLabel>
#include "base/byte_count.hpp"
#include "catalogue/items.hpp"
#include <QFile>
#include <QProcess>
#include <QPushButton>

#include "platform/running_apps.hpp"
#include "sample_disk/sample_disk.hpp"
#include "support/fake_running_apps.hpp"
#include "support/log_capture.hpp"
#include "ui/browser_sheet.hpp"
#include "ui/spinning_indicator.hpp"
#include "ui/window_clean.hpp"
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

    // The tests that pretend Chrome and Firefox run cannot tell their own pretend browsers from real ones.
    static bool aBrowserRunsAlready() {
        return !systemRunningApplications()->runningAmong({"Google Chrome", "Firefox"}).empty();
    }

    [[nodiscard]] bool exists(const std::string& path) const { return std::filesystem::exists(disk.at(path)); }
    [[nodiscard]] BrowserSheet& sheet() const { return *view().browserSheet(); }
    void answerYes() { Alerts::answerNextAlert(kAlertFirstButton); }
    // Clean, Yes, and wait for the removal and the fresh scan after it.
    void cleanAndWait() {
        answerYes();
        bar().cleanButton()->click();
        ASSERT_TRUE(view().clean().isBusy());
        ASSERT_TRUE(QTest::qWaitFor([&] { return !view().clean().isBusy(); }, 10000));
        waitForScan();
    }
};

TEST_F(CleanTest, RunningBrowsersHoldTheCleanInTheSheetUntilRetryFindsThemGone) {
    if (aBrowserRunsAlready()) {
        GTEST_SKIP() << "a Chrome or Firefox runs on this machine already";
    }
    PretendBrowser chrome(temp.path() + "/bin", QStringLiteral("Google Chrome"));
    PretendBrowser firefox(temp.path() + "/bin", QStringLiteral("Firefox"));
    ASSERT_TRUE(chrome.started() && firefox.started());
    launch();
    const RecordPtr chromeBefore = section(rowNamed("Chrome"));

    answerYes();
    bar().cleanButton()->click();
    ASSERT_EQ(Alerts::shownAlerts().size(), 1U);
    EXPECT_EQ(Alerts::shownAlerts().front().messageText, "Are you sure you want to erase selected privacy data?");
    const QString howMuch = Alerts::shownAlerts().front().informativeText;
    EXPECT_TRUE(howMuch.endsWith(" will be removed.")) << howMuch.toStdString();
    EXPECT_TRUE(howMuch.contains("Chrome") && howMuch.contains("Firefox")) << "which sections";
    EXPECT_TRUE(sheet().isUp());
    EXPECT_EQ(sheet().card()->rowNames(), (QStringList{"Chrome", "Firefox"}));
    EXPECT_EQ(sheet().card()->rowImages(), (QStringList{"browser_chrome", "browser_firefox"}));
    EXPECT_TRUE(exists(kChromeCookies) && exists(kFirefoxCookies) && exists(kSystemCache)) << "nothing goes yet";

    // The sheet lies over the window's content, under the title bar: the window's own buttons are out of reach.
    EXPECT_EQ(sheet().mapTo(&window(), QPoint()), qobject_cast<FramelessWindow*>(&window())->contentRect().topLeft());
    EXPECT_EQ(sheet().size(), qobject_cast<FramelessWindow*>(&window())->contentRect().size());
    const QPoint clean = bar().cleanButton()->mapTo(&window(), bar().cleanButton()->rect().center());
    EXPECT_EQ(window().childAt(clean), &sheet());

    // Retry while one still runs: the sheet lists what runs now, nothing is deleted, nothing is asked again.
    chrome.quit();
    sheet().card()->retryButton()->click();
    EXPECT_TRUE(sheet().isUp());
    EXPECT_EQ(sheet().card()->rowNames(), QStringList{"Firefox"});
    EXPECT_TRUE(exists(kChromeCookies) && exists(kFirefoxCookies));
    EXPECT_EQ(section(rowNamed("Chrome")), chromeBefore) << "no rescan either";

    // Retry once none runs: the removal runs on its worker while the sheet stays up and a second Retry does
    // nothing; then cleaned, rescanned, sheet gone.
    firefox.quit();
    sheet().card()->retryButton()->click();
    EXPECT_TRUE(view().clean().isBusy());
    EXPECT_FALSE(bar().refreshButton()->isEnabled());
    EXPECT_FALSE(bar().cleanButton()->isEnabled());
    sheet().card()->retryButton()->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !sheet().isUp(); }, 20000));
    EXPECT_FALSE(sheet().isVisible());
    EXPECT_TRUE(bar().refreshButton()->isEnabled());
    EXPECT_FALSE(exists(kChromeCookies));
    EXPECT_FALSE(exists(kFirefoxCookies));
    EXPECT_FALSE(exists(kSystemCache));
    EXPECT_TRUE(exists("Documents")) << "what no item names stays";
    ASSERT_TRUE(QTest::qWaitFor([&] { return Alerts::shownAlerts().size() == 2U; }, 5000));
    EXPECT_EQ(Alerts::shownAlerts()[1].messageText, "Cleaning finished") << "asked once, then the report";
    waitForScan();
    ASSERT_GE(rowNamed("Chrome"), 0);
    EXPECT_NE(section(rowNamed("Chrome")), chromeBefore);
}

TEST_F(CleanTest, CloseAbandonsTheClean) {
    if (aBrowserRunsAlready()) {
        GTEST_SKIP() << "a Chrome or Firefox runs on this machine already";
    }
    PretendBrowser firefox(temp.path() + "/bin", QStringLiteral("Firefox"));
    ASSERT_TRUE(firefox.started());
    launch();
    const RecordPtr firefoxBefore = section(rowNamed("Firefox"));

    answerYes();
    bar().cleanButton()->click();
    EXPECT_EQ(sheet().card()->rowNames(), QStringList{"Firefox"});
    // Escape is Close while the sheet is up.
    window().activateWindow();
    QTest::keyClick(&sheet(), Qt::Key_Escape);
    EXPECT_FALSE(sheet().isUp());
    EXPECT_FALSE(sheet().isVisible());
    EXPECT_FALSE(bar().indicator()->isAnimating());
    EXPECT_FALSE(view().clean().isBusy());
    firefox.quit();
    settle();
    EXPECT_TRUE(exists(kFirefoxCookies) && exists(kSystemCache)) << "a closed sheet has no Retry left to clean";
    EXPECT_EQ(section(rowNamed("Firefox")), firefoxBefore);
}

TEST_F(CleanTest, WithNoBrowserRunningYesCleansAfterTheIndicatorAndNoKeepsEverything) {
    launch(CatalogueViewOptions{std::nullopt,
                                std::make_shared<FakeRunningApps>(std::initializer_list<std::set<std::string>>{{}})});
    Alerts::answerNextAlert(kAlertSecondButton);
    bar().cleanButton()->click();
    settle();
    EXPECT_FALSE(sheet().isUp());
    EXPECT_FALSE(view().clean().isBusy());
    EXPECT_FALSE(bar().indicator()->isAnimating());
    EXPECT_TRUE(exists(kChromeCookies) && exists(kSystemCache)) << "No deletes nothing";

    answerYes();
    bar().cleanButton()->click();
    EXPECT_FALSE(sheet().isUp()) << "no sheet without a running browser";
    EXPECT_TRUE(bar().indicator()->isAnimating());
    EXPECT_TRUE(exists(kChromeCookies)) << "the clean waits for the indicator to be seen";
    EXPECT_FALSE(bar().cleanButton()->isEnabled()) << "one clean at a time";
    EXPECT_FALSE(bar().refreshButton()->isEnabled());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !view().clean().isBusy(); }, 10000));
    EXPECT_FALSE(exists(kChromeCookies));
    EXPECT_FALSE(exists(kSystemCache));
    EXPECT_FALSE(exists(kFirefoxCookies));
    EXPECT_FALSE(view().scanDriver().scanDone()) << "a fresh scan follows at once";
    waitForScan();
    EXPECT_FALSE(bar().indicator()->isAnimating());
}

// The window holds the granted folder for each clean, off the main thread, which goes on answering meanwhile: what
// lies outside the folder is left and logged, and a folder that is no longer the one granted (moved away, another
// made in its place) is not cleaned at all.
TEST_F(CleanTest, TheWindowsCleanRemovesOnlyTickedLocationsInsideTheGrantedFolderWhileTheWindowAnswers) {
    LogCapture log;
    const std::string leftOutside = ": left as it was: it lies outside the folder Tidewell may clean";
    disk.file("Library/Caches/inside", 10).file("Library/Caches/unticked", 10).file("/outside", 10);
    const FileUrl inside{disk.at("Library/Caches/inside")};
    const FileUrl unticked{disk.at("Library/Caches/unticked")};
    const FileUrl outside{disk.at("/outside")};
    launch(CatalogueViewOptions{std::vector<SectionBuilder>{builderOf([=] {
                                    return sectionNamed("System", {itemNamed("Caches", true, true, {inside, outside}),
                                                                   itemNamed("Other", true, false, {unticked})});
                                })},
                                std::make_shared<FakeRunningApps>(std::initializer_list<std::set<std::string>>{{}})});

    // The removal is held where it logs the outside location; meanwhile the window takes a click that unticks the
    // section, which counts for the next clean only.
    log.holdAt(outside.path + leftOutside);
    answerYes();
    bar().cleanButton()->click();
    ASSERT_TRUE(QTest::qWaitFor([&] { return log.holding(); }, 10000)) << "the removal runs off the main thread";
    card(0).checkBox()->click();
    EXPECT_EQ(tick(item(0, 0)), 0);
    EXPECT_TRUE(view().clean().isBusy());
    EXPECT_TRUE(bar().indicator()->isAnimating());
    EXPECT_FALSE(bar().cleanButton()->isEnabled());
    EXPECT_FALSE(bar().refreshButton()->isEnabled());
    log.release();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !view().clean().isBusy(); }, 10000));
    waitForScan();
    EXPECT_FALSE(exists("Library/Caches/inside")) << "unticked only after the removal had started";
    EXPECT_TRUE(exists("/outside")) << "outside the home folder Tidewell was granted";
    EXPECT_TRUE(exists("Library/Caches/unticked"));

    std::filesystem::rename(disk.home(), disk.at("/Users/ann-moved"));
    disk.file("Library/Caches/inside", 10);
    card(0).checkBox()->click(); // the untick was remembered through the rescan
    EXPECT_EQ(tick(item(0, 0)), 1);
    cleanAndWait();
    EXPECT_TRUE(log.writerOf(inside.path + leftOutside));
    EXPECT_TRUE(exists("Library/Caches/inside")) << "not the granted folder";
}

// The bottom bar counts what is ticked once per place; the confirmation says how much and from where; the report
// after the clean says what went, and OK closes it.
TEST_F(CleanTest, TheTotalCountsEachPlaceOnceAndTheReportSaysWhatWent) {
    disk.file("Library/Caches/app/a", 3000).file("Library/Caches/app/b", 3000).file("Library/Logs/l", 5000);
    const FileUrl caches{disk.at("Library/Caches/app")};
    const FileUrl inner{disk.at("Library/Caches/app/a")};
    const FileUrl logs{disk.at("Library/Logs/l")};
    launch(CatalogueViewOptions{
        std::vector<SectionBuilder>{[=](ScanEnv& env) {
            RecordList items{makeItem({caches}, "Caches", false), makeItem({inner}, "Inner", false),
                             makeItem({logs}, "Logs", false, false)};
            const MeasuredItems measured = measureItems(items, env.sizes);
            return BuilderOutcome{sectionNamed("System", items), measured.bytes, true, measured.locations};
        }},
        std::make_shared<FakeRunningApps>(std::initializer_list<std::set<std::string>>{{}})});
    settle();
    const auto sizeOf = [&](const std::string& path) {
        for (const MeasuredLocation& location : view().scanDriver().measuredLocations()) {
            if (location.path == disk.at(path)) {
                return location.bytes;
            }
        }
        return std::int64_t{-1};
    };
    const std::int64_t cachesBytes = sizeOf("Library/Caches/app");
    ASSERT_GT(cachesBytes, sizeOf("Library/Caches/app/a"));
    EXPECT_EQ(bar().statusText()->text(), QString::fromStdString(formatByteCount(cachesBytes)) + " selected")
        << "Inner lies inside Caches and counts once; Logs is unticked";

    answerYes();
    bar().cleanButton()->click();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !view().clean().isBusy(); }, 10000));
    ASSERT_GE(Alerts::shownAlerts().size(), 1U);
    EXPECT_EQ(Alerts::shownAlerts()[0].informativeText,
              QString::fromStdString(formatByteCount(cachesBytes)) + " from System will be removed.");
    ASSERT_TRUE(QTest::qWaitFor([&] { return view().clean().report() != nullptr; }, 10000));
    ASSERT_EQ(Alerts::shownAlerts().size(), 2U);
    const AlertContent& report = Alerts::shownAlerts()[1];
    EXPECT_EQ(report.messageText, "Cleaning finished");
    EXPECT_TRUE(report.informativeText.startsWith("Removed ")) << report.informativeText.toStdString();
    EXPECT_TRUE(report.informativeText.contains(QString::fromStdString(formatByteCount(cachesBytes)) + " freed."))
        << "what went is what was selected: " << report.informativeText.toStdString();
    EXPECT_FALSE(exists("Library/Caches/app"));
    EXPECT_TRUE(exists("Library/Logs/l"));
    QWidget* sheetShown = view().clean().report();
    EXPECT_TRUE(sheetShown->isVisible());
    EXPECT_EQ(sheetShown->parentWidget(), &window()) << "over the window, centred on it";
    auto* ok = sheetShown->findChild<QPushButton*>();
    ASSERT_NE(ok, nullptr);
    ok->click();
    ASSERT_TRUE(QTest::qWaitFor([&] { return view().clean().report() == nullptr; }, 5000)) << "OK closes it";
}

} // namespace
} // namespace tidewell::testing
