#include <QAction>
#include <QCheckBox>
#include <QDesktopServices>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QSettings>
#include <QToolButton>
#include <chrono>
#include <condition_variable>
#include <mutex>

#include "platform/purge_schedule.hpp"
#include "support/fake_service_manager.hpp"
#include "ui/item_table_source.hpp"
#include "ui/popover.hpp"
#include "ui/spinning_indicator.hpp"
#include "window_fixture.hpp"

namespace tidewell::testing {
namespace {

class ItemTableTest : public WindowFixture {};

const QString kChromeSummary = QStringLiteral(
    "Cookies, Visited Links, History, Login Data, LastSession, User preferences, Favicons, Top Sites, Local Storage");

TEST_F(ItemTableTest, EachKindOfRowShowsItsOwnTextsStatesAndButtons) {
    launch(std::vector<SectionBuilder>{
        builderOf([] {
            auto mail = sectionNamed("Mail", {itemNamed("Mail Downloads", true, false), itemNamed("Mail Caches")});
            mail->set("isChecked", std::int64_t{-1});
            return mail;
        }),
        builderOf(
            [] { return sectionNamed("Chrome", {itemNamed("Cookies")}, true, "/Applications/Google Chrome.app"); }),
        builderOf([] { return sectionNamed("Adult History", {itemNamed("Safari Adult History")}, true, "adult"); }),
        builderOf([] { return sectionNamed("Browser Extensions", {itemNamed("Clip Saver")}, true, "Browser_ext"); }),
        builderOf([] {
            return sectionNamed("System", {itemNamed("Caches")}, false, "/System/Library/CoreServices/Finder.app");
        }),
        builderOf(promotionRow),
    });
    ASSERT_EQ(view().itemTable()->numberOfRows(), 6);

    // An ordinary section: its items' names, its size, its own icon; -1 shows as mixed.
    SectionCard& mail = card(0);
    EXPECT_EQ(mail.nameText()->text(), "Mail");
    EXPECT_EQ(mail.sizeText()->text(), "3 KB");
    EXPECT_FALSE(mail.sizeText()->isHidden());
    EXPECT_EQ(mail.detailsText()->text(), "Mail Downloads, Mail Caches");
    EXPECT_EQ(mail.toolTip(), "Mail Downloads, Mail Caches");
    EXPECT_EQ(mail.imageName(), "mail");
    EXPECT_EQ(mail.checkBox()->checkState(), Qt::PartiallyChecked);
    EXPECT_TRUE(mail.checkBox()->isEnabled());
    EXPECT_TRUE(mail.detailsButton()->isEnabled());
    EXPECT_TRUE(mail.infoButton()->isHidden());
    EXPECT_TRUE(mail.promotionButton()->isHidden());
    EXPECT_EQ(mail.backgroundColor(), QColor(236, 236, 236));

    // Chrome's summary is fixed, whatever its items are.
    EXPECT_EQ(card(1).detailsText()->text(), kChromeSummary);
    EXPECT_EQ(card(1).toolTip(), kChromeSummary);
    EXPECT_EQ(card(1).imageName(), "browser_chrome");
    EXPECT_EQ(card(1).checkBox()->checkState(), Qt::Checked);

    SectionCard& adult = card(2);
    EXPECT_EQ(adult.sizeText()->text(), "") << "no size, whatever the section holds";
    EXPECT_EQ(adult.detailsText()->text(), "All Adult Browser history");
    EXPECT_FALSE(adult.infoButton()->isHidden());
    EXPECT_EQ(adult.imageName(), "adult_history");

    EXPECT_EQ(card(3).detailsText()->text(), "Browser extensions, Preferences");
    EXPECT_EQ(card(3).sizeText()->text(), "3 KB");
    EXPECT_EQ(card(3).imageName(), "browser_extensions");
    EXPECT_TRUE(card(3).infoButton()->isHidden()) << "a reused cell hides the info button again";

    // Nothing to clean: neither the box nor the details can be used.
    SectionCard& system = card(4);
    EXPECT_FALSE(system.checkBox()->isEnabled());
    EXPECT_FALSE(system.detailsButton()->isEnabled());
    EXPECT_EQ(system.sizeText()->text(), "0 byte");
    EXPECT_EQ(system.imageName(), "system");

    SectionCard& promotion = card(5);
    EXPECT_EQ(promotion.nameText()->text(), "Thornsweep");
    EXPECT_EQ(promotion.detailsText()->text(), "Detects and Removes Adware");
    EXPECT_EQ(promotion.imageName(), "promotion");
    EXPECT_TRUE(promotion.checkBox()->isHidden());
    EXPECT_TRUE(promotion.sizeText()->isHidden());
    EXPECT_TRUE(promotion.detailsButton()->isHidden());
    EXPECT_FALSE(promotion.promotionButton()->isHidden());
    EXPECT_TRUE(promotion.infoButton()->isHidden());
}

TEST_F(ItemTableTest, TheTableAreaGrowsWithTheSectionsUpToFiveThenScrolls) {
    struct Case {
        std::size_t sections;
        int height;
        bool scrolls;
    };
    int barsAndTitle = -1;
    for (const Case& expected : {Case{0, 91, false}, Case{1, 90, false}, Case{3, 240, false}, Case{5, 390, false},
                                 Case{6, 389, true}, Case{9, 389, true}}) {
        SCOPED_TRACE(expected.sections);
        std::vector<std::string> names;
        for (std::size_t i = 0; i < expected.sections; ++i) {
            names.push_back("Section " + std::to_string(i));
        }
        launch(sectionsNamed(names));
        EXPECT_EQ(view().tableHeight(), expected.height);
        EXPECT_EQ(view().itemTable()->isHidden(), expected.sections == 0);
        EXPECT_EQ(view().itemTable()->numberOfRows(), static_cast<int>(expected.sections));
        EXPECT_EQ(view().itemTable()->verticalScrollBar()->maximum() > 0, expected.scrolls);
        // The window follows the table: everything else keeps its height.
        settle();
        const int rest = window().height() - view().tableHeight();
        EXPECT_TRUE(barsAndTitle == -1 || rest == barsAndTitle) << rest << " against " << barsAndTitle;
        barsAndTitle = rest;
        application.reset();
    }
}

// The tick rules themselves are the catalogue's (ticks_test); here, that a click goes through them and the box and
// the Clean button show the outcome.
TEST_F(ItemTableTest, ABoxTicksThroughTheCatalogueAndCleanFollowsWhatIsTicked) {
    launch(sectionsNamed({"A", "B", "C", "D", "E"}));

    // A section left mixed by the details panel becomes wholly ticked on the next click.
    item(0, 0)->set("isChecked", false);
    section(0)->set("isChecked", std::int64_t{-1});
    view().refreshTable();
    ASSERT_EQ(card(0).checkBox()->checkState(), Qt::PartiallyChecked);
    card(0).checkBox()->click();
    EXPECT_EQ(card(0).checkBox()->checkState(), Qt::Checked);
    EXPECT_EQ(tick(item(0, 0)), 1);
    card(3).checkBox()->click();
    EXPECT_EQ(card(3).checkBox()->checkState(), Qt::Unchecked);
    EXPECT_EQ(tick(item(3, 0)), 0) << "the fourth row passes its tick down as every row does";

    // Clean is there while anything is ticked.
    for (const int row : {0, 1, 2, 4}) {
        EXPECT_TRUE(bar().cleanButton()->isEnabled());
        card(row).checkBox()->click();
    }
    EXPECT_FALSE(bar().cleanButton()->isEnabled());
    card(2).checkBox()->click();
    EXPECT_TRUE(bar().cleanButton()->isEnabled());
}

// A builder the test holds until it lets go (or until a long while has passed, so a failing test ends).
class Gate {
public:
    void open() {
        {
            std::lock_guard lock(m_mutex);
            m_open = true;
        }
        m_changed.notify_all();
    }
    void pass() {
        std::unique_lock lock(m_mutex);
        m_changed.wait_for(lock, std::chrono::seconds(30), [this] { return m_open; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_open = false;
};

TEST_F(ItemTableTest, SectionsAppearOneByOneWhileTheWindowKeepsAnswering) {
    auto gate = std::make_shared<Gate>();
    std::vector<SectionBuilder> builders = sectionsNamed({"A"});
    builders.push_back([gate](ScanEnv&) {
        gate->pass();
        return BuilderOutcome{sectionOfSize("B", 1), 0, true};
    });
    start(CatalogueViewOptions{std::move(builders), nullptr});

    // The first section is shown while the second builder is still at work; the event loop runs all along.
    ASSERT_TRUE(QTest::qWaitFor([&] { return view().itemTable()->numberOfRows() == 1; }, 20000));
    EXPECT_EQ(view().tableHeight(), 90);
    EXPECT_FALSE(view().scanDriver().scanDone());
    EXPECT_TRUE(bar().indicator()->isAnimating());
    EXPECT_TRUE(bar().indicator()->isVisible());
    card(0).checkBox()->click();
    EXPECT_EQ(tick(section(0)), 0) << "the table answers clicks meanwhile";

    gate->open();
    waitForScan();
    EXPECT_EQ(view().itemTable()->numberOfRows(), 2);
    EXPECT_EQ(view().tableHeight(), 165);
    EXPECT_FALSE(bar().indicator()->isAnimating());
    EXPECT_FALSE(bar().indicator()->isVisible());
}

TEST_F(ItemTableTest, RefreshScansAgainWithFreshRecords) {
    launch(sectionsNamed({"A", "B"}));
    card(0).checkBox()->click();
    const RecordPtr before = section(0);
    bar().refreshButton()->click();
    waitForScan();
    EXPECT_NE(section(0), before);
    EXPECT_EQ(card(0).checkBox()->checkState(), Qt::Unchecked) << "the person's ticks are kept across scans";
}

TEST_F(ItemTableTest, TheSettingsBoxesShowTheStoredSettingsAndWriteThrough) {
    launch(sectionsNamed({"A"}));
    ASSERT_TRUE(QTest::qWaitFor([&] { return application->scheduler().timer() != nullptr; }));
    EXPECT_TRUE(bar().realTimeScanBox()->isChecked()) << "real-time is on unless stored off";
    EXPECT_FALSE(bar().runAtStartBox()->isChecked()) << "stored off by the fixture";
    EXPECT_FALSE(bar().hideTaskbarEntryBox()->isChecked()) << "the taskbar entry is stored as shown";

    const auto stored = [&](const QString& key) { return QSettings(settingsFile, QSettings::IniFormat).value(key); };
    bar().hideTaskbarEntryBox()->click();
    EXPECT_EQ(stored(keys::kTaskbarEntry), QVariant(false));
    EXPECT_FALSE(application->taskbar().showsEntry());
    bar().runAtStartBox()->click();
    EXPECT_EQ(stored(keys::kRunAtStart), QVariant(true));
    bar().realTimeScanBox()->click();
    EXPECT_EQ(stored(keys::kRealTimeScan), QVariant(false));
    EXPECT_EQ(application->scheduler().timer(), nullptr);

    // The status menu's toggle shows in the box too.
    application->statusMenu().menu()->actions().front()->trigger();
    EXPECT_TRUE(bar().realTimeScanBox()->isChecked());
}

TEST_F(ItemTableTest, WhileTheSystemdTimerPurgesTheWindowsHourlyTimerRestsAndTheTooltipSaysWhy) {
    launch(sectionsNamed({"A"}));
    ASSERT_TRUE(QTest::qWaitFor([&] { return application->scheduler().timer() != nullptr; }));
    const QString ownTip = bar().realTimeScanBox()->toolTip();

    // `schedule on` as the command does it, with a manager that only makes the enabling link; the folders do not
    // exist yet and appear while Tidewell watches.
    FakeServiceManager manager(unitFolder);
    const PurgeSchedule schedule(unitFolder, "/usr/bin/tidewell-cli", manager);
    ASSERT_TRUE(schedule.turnOn());
    ASSERT_TRUE(QTest::qWaitFor([&] { return application->purgeScheduledBySystem(); }));
    EXPECT_EQ(application->scheduler().timer(), nullptr) << "only one of the two purges runs";
    EXPECT_TRUE(bar().realTimeScanBox()->isChecked()) << "the setting itself stays";
    EXPECT_TRUE(bar().realTimeScanBox()->toolTip().contains("systemd timer"))
        << bar().realTimeScanBox()->toolTip().toStdString();
    application->setRealTimeScan(true);
    EXPECT_EQ(application->scheduler().timer(), nullptr) << "switching real-time on again starts no timer";

    ASSERT_TRUE(schedule.turnOff());
    ASSERT_TRUE(QTest::qWaitFor([&] { return application->scheduler().timer() != nullptr; }));
    EXPECT_EQ(bar().realTimeScanBox()->toolTip(), ownTip);
}

class UrlCatcher : public QObject {
    Q_OBJECT
public:
    QList<QUrl> opened;
public slots:
    void open(const QUrl& url) { opened.push_back(url); }
};

TEST_F(ItemTableTest, ThePromotionRowKeepsCleanEnabledAndItAndHelpOpenTheirPagesInTheBrowser) {
    std::vector<SectionBuilder> builders = sectionsNamed({"A"});
    builders.push_back(builderOf(promotionRow));
    launch(std::move(builders));
    card(0).checkBox()->click();
    EXPECT_EQ(tick(section(0)), 0);
    EXPECT_TRUE(bar().cleanButton()->isEnabled()) << "a record without a tick is not an unticked one";

    UrlCatcher catcher;
    QDesktopServices::setUrlHandler(QStringLiteral("https"), &catcher, "open");
    ASSERT_NE(bar().helpButton()->menu(), nullptr);
    const QList<QAction*> help = bar().helpButton()->menu()->actions();
    ASSERT_EQ(help.size(), 2);
    EXPECT_EQ(help[0]->text(), "Tidewell Help");
    EXPECT_EQ(help[1], bar().restoreDefaultsAction());
    EXPECT_EQ(help[1]->text(), "Restore Default Selection");
    help[0]->trigger();
    card(1).promotionButton()->click();
    QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
    EXPECT_EQ(catcher.opened, (QList<QUrl>{Application::helpPageUrl(), ItemTableSource::promotionPageUrl()}));
}

TEST_F(ItemTableTest, TheAdultHistoryInfoOpensInAWhitePopoverAtTheButtonAndClosesOnAClickOutside) {
    launch(std::vector<SectionBuilder>{
        builderOf([] { return sectionOfSize("Safari", 2); }),
        builderOf([] { return sectionNamed("Adult History", {itemNamed("Safari Adult History")}, true, "adult"); })});
    QToolButton& info = *card(1).infoButton();
    EXPECT_EQ(view().adultHistoryPopover(), nullptr);
    info.click();
    Popover* popover = view().adultHistoryPopover();
    ASSERT_NE(popover, nullptr);
    ASSERT_TRUE(popover->isShown());
    EXPECT_STREQ(popover->contentView()->metaObject()->className(), "tidewell::AdultHistoryInfoView");
    EXPECT_EQ(popover->popoverWindow()->color(), QColor(Qt::white));

    // The arrow's tip touches the middle of the button's lower edge.
    const PopoverWindow& shown = *popover->popoverWindow();
    const QPoint tip = shown.mapToGlobal(shown.arrowTip());
    const QPoint button = info.mapToGlobal(QPoint(info.width() / 2, info.height()));
    EXPECT_LE((tip - button).manhattanLength(), 2)
        << tip.x() << "," << tip.y() << " against " << button.x() << "," << button.y();
    EXPECT_EQ(shown.arrowDirection(), PopoverWindow::ArrowDirection::Up);

    QTest::mouseClick(window().windowHandle(), Qt::LeftButton, {}, QPoint(20, window().height() - 20));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !popover->isShown(); }, 2000));
}

} // namespace
} // namespace tidewell::testing

#include "item_table_test.moc"
