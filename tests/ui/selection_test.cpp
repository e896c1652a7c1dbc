// The person's ticks outlive the records they were made on: a Refresh, a clean and a restart each scan afresh, and
// the ticks come back by section and item name from the settings file.

#include <QAction>
#include <QPushButton>
#include <QSettings>

#include "catalogue/ticks.hpp"
#include "support/fake_running_apps.hpp"
#include "ui/selection_memory.hpp"
#include "ui/window_clean.hpp"
#include "window_fixture.hpp"

namespace tidewell::testing {
namespace {

class SelectionTest : public WindowFixture {
protected:
    // Mail lists "Mail 3" from the second scan on: an item new since the ticks were stored.
    int mailScans = 0;

    CatalogueViewOptions options() {
        return CatalogueViewOptions{
            std::vector<SectionBuilder>{builderOf([] { return sectionOfSize("Safari", 2); }),
                                        builderOf([this] { return sectionOfSize("Mail", ++mailScans > 1 ? 3 : 2); })},
            std::make_shared<FakeRunningApps>(std::initializer_list<std::set<std::string>>{{}})};
    }

    // Safari as a whole, then Mail 1 alone in the details panel.
    void untickSafariAndTheFirstMail() {
        card(0).checkBox()->click();
        view().showDetails(1);
        panelRow(0).checkBox()->click();
        panel().doneButton()->click();
        settle();
    }

    void expectTheTicksKept(const char* after) {
        SCOPED_TRACE(after);
        EXPECT_EQ(tick(section(0)), 0);
        EXPECT_EQ(tick(item(0, 0)), 0);
        EXPECT_EQ(tick(item(0, 1)), 0);
        EXPECT_EQ(tick(item(1, 0)), 0);
        EXPECT_EQ(tick(item(1, 1)), 1);
        EXPECT_EQ(tick(section(1)), -1);
        EXPECT_EQ(card(0).checkBox()->tick(), Tick::Off) << "the boxes show it";
        EXPECT_EQ(card(1).checkBox()->tick(), Tick::Mixed);
    }
};

TEST_F(SelectionTest, TicksSurviveRefreshCleanAndRestartAndNewItemsStartAtTheirDefault) {
    launch(options());
    untickSafariAndTheFirstMail();
    expectTheTicksKept("the clicks");
    const QString stored = QSettings(settingsFile, QSettings::IniFormat).value(keys::kSelection).toString();
    EXPECT_TRUE(stored.contains("\"Mail 1\"") && stored.contains("\"Safari\"")) << stored.toStdString();

    bar().refreshButton()->click();
    waitForScan();
    settle();
    expectTheTicksKept("Refresh");
    ASSERT_EQ(section(1)->list("List")->size(), 3U);
    EXPECT_EQ(tick(item(1, 2)), 1) << "Mail 3 is new: it starts at its default";
    EXPECT_EQ(tick(section(1)), -1) << "the section follows its items when one is new";

    Alerts::answerNextAlert(kAlertFirstButton);
    bar().cleanButton()->click();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !view().clean().isBusy(); }, 10000));
    waitForScan();
    settle();
    expectTheTicksKept("a clean");

    application.reset();
    launch(options());
    settle();
    expectTheTicksKept("a restart");

    // Help > Restore Default Selection: every item back at its default, and nothing stored.
    bar().restoreDefaultsAction()->trigger();
    waitForScan();
    settle();
    EXPECT_EQ(tick(section(0)), 1);
    EXPECT_EQ(tick(item(0, 0)), 1);
    EXPECT_EQ(tick(item(1, 0)), 1);
    EXPECT_EQ(tick(section(1)), 1);
    EXPECT_FALSE(QSettings(settingsFile, QSettings::IniFormat).contains(keys::kSelection));
}

TEST(SelectionMemory, TwinNamesKeepTheirOwnTicksAndSectionsNotScannedKeepWhatWasStored) {
    const RecordPtr first = sectionNamed("Chrome", {itemNamed("Cookies"), itemNamed("Cookies"), itemNamed("Cache")});
    Section(first).items()[1].setTick(Tick::Off);
    settleSectionTick(Section(first));
    const QByteArray earlier = rememberedSelection({Section(sectionOfSize("Mail", 1))}, {});
    const QByteArray both = rememberedSelection({Section(first)}, earlier);

    const RecordPtr again = sectionNamed("Chrome", {itemNamed("Cookies"), itemNamed("Cookies"), itemNamed("Cache")});
    EXPECT_TRUE(restoreSelection(Section(again), both));
    EXPECT_EQ(Section(again).items()[0].tick(), Tick::On);
    EXPECT_EQ(Section(again).items()[1].tick(), Tick::Off) << "the second of two equal names keeps its own tick";
    EXPECT_EQ(Section(again).tick(), Tick::Mixed);
    EXPECT_TRUE(restoreSelection(Section(sectionOfSize("Mail", 1)), both)) << "Mail was kept while Chrome was stored";
    EXPECT_FALSE(restoreSelection(Section(sectionOfSize("Firefox", 1)), both));
    EXPECT_FALSE(restoreSelection(Section(sectionOfSize("Firefox", 1)), "not json"));
}

} // namespace
} // namespace tidewell::testing
