#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QWheelEvent>

#include "window_fixture.hpp"

namespace tidewell::testing {
namespace {

class DetailsPanelTest : public WindowFixture {
protected:
    /// A grouped section ("Browser Extensions"-like): rows given as (name, caption).
    static RecordPtr groupedSection(const std::vector<std::pair<std::string, bool>>& rows) {
        RecordList items;
        for (const auto& [name, caption] : rows) {
            items.push_back(itemNamed(name, !caption));
        }
        auto section = sectionNamed("Browser Extensions", std::move(items), true, "Browser_ext");
        section->set("isFromThornsweep", true);
        return section;
    }

    /// Opens the panel for row and checks it is the very record of the catalogue.
    void open(int row) {
        view().showDetails(row);
        ASSERT_TRUE(panel().isVisible());
        ASSERT_EQ(panel().section(), section(row));
    }

    [[nodiscard]] Qt::CheckState shown(int row) const { return panelRow(row).checkBox()->checkState(); }
    void click(int row) const { panelRow(row).checkBox()->click(); }
};

TEST_F(DetailsPanelTest, ThePanelIsSizedForItsRowsCappedAtFourPlainOrSixGrouped) {
    launch(std::vector<SectionBuilder>{builderOf([] { return sectionOfSize("Three", 3); }),
                                       builderOf([] { return sectionOfSize("Ten", 10); }), builderOf([] {
                                           std::vector<std::pair<std::string, bool>> rows{{"Safari Extensions", true}};
                                           for (int i = 0; i < 9; ++i) {
                                               rows.emplace_back("Extension " + std::to_string(i), false);
                                           }
                                           return groupedSection(rows);
                                       }),
                                       builderOf([] { return sectionOfSize("D", 1); }),
                                       builderOf([] { return sectionOfSize("E", 1); }),
                                       builderOf([] { return sectionOfSize("F", 1); })});
    const CellTable& table = *panel().table();

    open(0);
    EXPECT_EQ(panel().titleText()->text(), "Three");
    EXPECT_EQ(table.rowHeight(), 50);
    EXPECT_TRUE(table.alternatesRows());
    EXPECT_EQ(table.numberOfRows(), 3);
    EXPECT_EQ(panel().tableHeight(), 152);
    EXPECT_EQ(view().itemTable()->scrollPosition(), 8) << "the item table moves to (0, 8) under the panel";
    panel().doneButton()->click();
    EXPECT_FALSE(panel().isVisible());

    open(1);
    EXPECT_EQ(table.numberOfRows(), 10);
    EXPECT_EQ(panel().tableHeight(), 202);
    panel().finish();

    open(2);
    EXPECT_EQ(table.rowHeight(), 36);
    EXPECT_FALSE(table.alternatesRows());
    EXPECT_EQ(panel().tableHeight(), 218);
    EXPECT_EQ(panelRow(0).height(), 36);
}

TEST_F(DetailsPanelTest, CaptionsAreBoldOnABandAndSizesShowOnlyWhereItemsHaveThem) {
    launch(std::vector<SectionBuilder>{builderOf([] {
        auto section = groupedSection({{"Safari Extensions", true}, {"Clip Saver", false}, {"Reset", true}});
        section->list("List")->at(1)->set("sizeText", std::string());
        section->list("List")->at(2)->remove("sizeText");
        section->list("List")->at(2)->set("isEnabled", false);
        return section;
    })});
    open(0);
    DetailsRow& caption = panelRow(0);
    EXPECT_FALSE(caption.band()->isHidden());
    EXPECT_TRUE(caption.nameText()->font().bold());
    EXPECT_EQ(caption.nameText()->text(), "Safari Extensions");
    EXPECT_EQ(caption.nameText()->toolTip(), "Safari Extensions");
    EXPECT_EQ(caption.checkBox()->toolTip(), "Safari Extensions");
    EXPECT_EQ(caption.sizeText()->text(), "1 KB");

    DetailsRow& item = panelRow(1);
    EXPECT_TRUE(item.band()->isHidden());
    EXPECT_FALSE(item.nameText()->font().bold());
    EXPECT_FALSE(item.sizeText()->isHidden()) << "an empty size text is still a size text";
    EXPECT_EQ(item.sizeText()->text(), "");

    EXPECT_TRUE(panelRow(2).sizeText()->isHidden()) << "no size text at all: hidden";
    EXPECT_FALSE(panelRow(2).checkBox()->isEnabled());
}

// The tick rules are the catalogue's (ticks_test); here, that a click passes the state its own row shows and the
// table shows the outcome, reloaded after every click but one on the last row of a grouped section.
TEST_F(DetailsPanelTest, AClickPassesWhatItsRowShowsAndTheTableShowsTheOutcome) {
    launch(std::vector<SectionBuilder>{
        builderOf([] {
            return sectionNamed("Mail", {itemNamed("Caches"), itemNamed("Logs"), itemNamed("Logs", true, false)});
        }),
        builderOf([] {
            return groupedSection({{"Safari Extensions", true},
                                   {"A", false},
                                   {"B", false},
                                   {"Reset Browsers Preferences to Defaults", true}});
        })});
    open(0);
    int reloads = panel().table()->reloadCount();
    click(0);
    EXPECT_EQ(tick(item(0, 0)), 0);
    EXPECT_EQ(shown(0), Qt::Unchecked);
    EXPECT_GT(panel().table()->reloadCount(), reloads);

    // The third row shares the second's name: clicking it, unticked, ticks the second, and the reload shows so.
    click(2);
    EXPECT_EQ(tick(item(0, 1)), 1);
    EXPECT_EQ(tick(item(0, 2)), 0);
    EXPECT_EQ(shown(2), Qt::Unchecked);
    EXPECT_EQ(shown(1), Qt::Checked);
    click(1);
    EXPECT_EQ(tick(item(0, 1)), 0);
    EXPECT_EQ(shown(1), Qt::Unchecked);
    panel().finish();

    // A group's item shows in its caption's tri-state; the last row changes itself and the table is left as drawn.
    open(1);
    click(1);
    EXPECT_EQ(tick(item(1, 0)), -1);
    EXPECT_EQ(shown(0), Qt::PartiallyChecked);
    click(0);
    EXPECT_EQ(shown(1), Qt::Checked);
    reloads = panel().table()->reloadCount();
    click(3);
    EXPECT_EQ(tick(item(1, 3)), 0);
    EXPECT_EQ(shown(3), Qt::Unchecked);
    EXPECT_EQ(panel().table()->reloadCount(), reloads);
}

TEST_F(DetailsPanelTest, DoneFoldsTheRowsIntoTheSectionsTick) {
    launch(sectionsNamed({"A"}));
    const auto doneWith = [&](std::initializer_list<bool> ticks) {
        open(0);
        std::size_t row = 0;
        for (const bool on : ticks) {
            item(0, row++)->set("isChecked", on);
        }
        panel().doneButton()->click();
        return card(0).checkBox()->checkState();
    };
    EXPECT_EQ(doneWith({true, true}), Qt::Checked);
    EXPECT_EQ(tick(section(0)), 1);
    EXPECT_EQ(doneWith({true, false}), Qt::PartiallyChecked);
    EXPECT_EQ(tick(section(0)), -1);
    EXPECT_TRUE(bar().cleanButton()->isEnabled()) << "mixed counts as ticked";
    EXPECT_EQ(doneWith({false, false}), Qt::Unchecked);
    EXPECT_EQ(tick(section(0)), 0);
    EXPECT_FALSE(bar().cleanButton()->isEnabled());
    EXPECT_EQ(panel().section(), section(0)) << "kept after closing";
}

TEST_F(DetailsPanelTest, TheVeilKeepsClicksAndScrollingFromTheTableBeneath) {
    launch(sectionsNamed({"A", "B", "C", "D", "E", "F", "G"}));
    open(1);
    ASSERT_TRUE(panel().isVisible());
    settle();

    // A real click at the first row's box, through the window: it lands on the veil.
    QCheckBox& box = *card(0).checkBox();
    const QPoint atBox = box.mapTo(&window(), box.rect().center());
    ASSERT_EQ(window().childAt(atBox), &panel());
    QTest::mouseClick(window().windowHandle(), Qt::LeftButton, {}, atBox);
    EXPECT_EQ(tick(section(0)), 1);

    QScrollBar& scroll = *view().itemTable()->verticalScrollBar();
    const int before = scroll.value();
    QWheelEvent wheel(QPointF(10, 10), panel().mapToGlobal(QPointF(10, 10)), {}, {0, -240}, Qt::NoButton, {},
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(&panel(), &wheel);
    EXPECT_TRUE(wheel.isAccepted());
    EXPECT_EQ(scroll.value(), before);

    panel().finish();
    QTest::mouseClick(window().windowHandle(), Qt::LeftButton, {}, atBox);
    EXPECT_EQ(tick(section(0)), 0) << "with the panel closed the click reaches the box";
}

TEST_F(DetailsPanelTest, AShortWindowGrowsForThePanelAndShrinksBackAfterDone) {
    launch(std::vector<SectionBuilder>{builderOf([] { return sectionOfSize("A", 10); })});
    settle();
    const int shortHeight = window().height();
    open(0);
    settle();
    const QWidget& card = *panel().card();
    EXPECT_GT(window().height(), shortHeight);
    EXPECT_TRUE(panel().rect().contains(card.geometry())) << "the whole card is in view";
    panel().finish();
    settle();
    EXPECT_EQ(window().height(), shortHeight);
}

// Ticking a row that takes away something a person would miss says so in one line beside Done; unticking, or
// ticking an ordinary row, says nothing new, and the next open starts without it.
TEST_F(DetailsPanelTest, TickingARowThatRemovesSavedPasswordsOrAnExtensionWarnsInOneLine) {
    launch(std::vector<SectionBuilder>{builderOf([] {
        RecordList items;
        items.push_back(itemNamed("Cookies", true, false));
        items.push_back(itemNamed("Passwords (Work)", true, false));
        RecordRole warned = items.back()->role();
        warned.tickWarning = "saved passwords";
        items.back()->setRole(warned);
        return sectionNamed("Chrome", std::move(items));
    })});
    open(0);
    const QLabel* warning = panel().tickWarning();
    EXPECT_TRUE(warning->isHidden());
    click(0);
    EXPECT_TRUE(warning->isHidden()) << "an ordinary row";
    click(1);
    ASSERT_TRUE(warning->isVisible());
    EXPECT_EQ(warning->text(), "Cleaning will remove saved passwords.");
    EXPECT_GE(warning->mapTo(&panel(), QPoint()).y(), panel().card()->y()) << "inside the card";
    EXPECT_LE(warning->mapTo(&panel(), QPoint(0, warning->height())).y(),
              panel().card()->geometry().bottom() + 1);

    panel().doneButton()->click();
    open(0);
    EXPECT_TRUE(warning->isHidden()) << "a new open starts quiet";
    click(1);
    EXPECT_TRUE(warning->isHidden()) << "unticking warns of nothing";
}

} // namespace
} // namespace tidewell::testing
