// The main window as a person meets it on a desktop: with or without a status area, where it is placed, and what
// its title bar says about the disk.

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QGuiApplication>
#include <QScreen>

#include "app/window_placement.hpp"
#include "ui/section_card.hpp"
#include "ui/widgets.hpp"
#include "window_fixture.hpp"

namespace tidewell::testing {
namespace {

class WindowLifeTest : public WindowFixture {};

TEST_F(WindowLifeTest, WithoutAStatusAreaTheHideBoxIsDisabledAndSaysWhy) {
    statusArea = false;
    launch(sectionsNamed({"Mail"}));
    settle();
    QCheckBox* hide = bar().hideTaskbarEntryBox();
    EXPECT_FALSE(hide->isEnabled());
    EXPECT_TRUE(hide->toolTip().contains("no status area")) << hide->toolTip().toStdString();

    // A status area that appears enables it at the next showing of the choices.
    statusArea = true;
    application->setRealTimeScan(false);
    EXPECT_TRUE(hide->isEnabled());
    EXPECT_EQ(hide->toolTip(), "Keep Tidewell in the status menu only");
}

TEST_F(WindowLifeTest, TheFirstStartCentresTheWindowWhollyOnScreenAndLaterStartsPutItBack) {
    const std::vector<std::string> names{"Safari", "Chrome", "Firefox", "System", "Mail", "Flash", "Adult History"};
    launch(sectionsNamed(names));
    settle();
    const QRect area = window().screen()->availableGeometry();
    EXPECT_TRUE(area.contains(window().frameGeometry())) << "grown by the scan, it still lies wholly on screen";
    EXPECT_LE((window().frameGeometry().center() - area.center()).manhattanLength(), 2);

    window().move(20, 10);
    settle();
    application.reset();
    launch(sectionsNamed(names));
    settle();
    EXPECT_EQ(window().pos(), QPoint(20, 10)) << "the last place, still on screen";

    // A place no screen holds any more (a screen since taken away) is not used.
    application.reset();
    AppSettings(settingsFile).setPoint(keys::kWindowPosition, QPoint(5000, 4000));
    launch(sectionsNamed(names));
    settle();
    EXPECT_TRUE(area.contains(window().frameGeometry()));
}

TEST(WindowPlacementRules, AWindowIsKeptUnderATopPanelAndAboveTheBottomOfTheScreen) {
    // A 1024 x 768 screen with a 30-pixel panel at the top.
    const QRect area(0, 30, 1024, 738);
    const QRect centred = WindowPlacement::centred(QSize(560, 700), area);
    EXPECT_TRUE(area.contains(centred));
    EXPECT_EQ(centred.top(), 49);
    // Placed from another window's corner, it would run off the bottom: it is moved up, not cut.
    const QRect kept = WindowPlacement::keptOn(QRect(QPoint(300, 200), QSize(560, 700)), area);
    EXPECT_EQ(kept.bottom(), area.bottom());
    EXPECT_EQ(kept.left(), 300);
    // Too tall for the area: its top stays reachable.
    EXPECT_EQ(WindowPlacement::keptOn(QRect(QPoint(0, 0), QSize(400, 900)), area).top(), 30);
}

} // namespace
} // namespace tidewell::testing

namespace tidewell::testing {
namespace {

TEST_F(WindowLifeTest, ReturnAndEscapeCloseTheDetailsPanel) {
    launch(sectionsNamed({"Mail"}));
    window().activateWindow();
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
        view().showDetails(0);
        settle();
        ASSERT_TRUE(panel().isVisible());
        QTest::keyClick(&panel(), key);
        settle();
        EXPECT_FALSE(panel().isVisible()) << "key " << key;
    }
}

// A click on a card's name, summary or size ticks and unticks it as its box would; a click on its details button
// does not. The box that has the keyboard's focus shows it, and so does its card.
TEST_F(WindowLifeTest, AClickOnACardsTextTogglesItsTickAndFocusIsVisible) {
    launch(sectionsNamed({"Mail"}));
    SectionCard& card = *view().cardAt(0);
    ASSERT_EQ(tickOf(*section(0)), Tick::On);
    for (QWidget* part : {static_cast<QWidget*>(card.nameText()), static_cast<QWidget*>(card.detailsText()),
                          static_cast<QWidget*>(card.sizeText())}) {
        const Tick before = tickOf(*section(0));
        QTest::mouseClick(part, Qt::LeftButton, {}, QPoint(2, part->height() / 2));
        EXPECT_NE(tickOf(*section(0)), before) << part->objectName().toStdString();
        EXPECT_EQ(card.checkBox()->tick(), tickOf(*section(0)));
    }
    const Tick before = tickOf(*section(0));
    view().showDetails(0);
    settle();
    panel().doneButton()->click();
    EXPECT_EQ(tickOf(*section(0)), before);

    window().activateWindow();
    const QImage unfocused = card.grab().toImage();
    const QImage boxUnfocused = card.checkBox()->grab().toImage();
    card.checkBox()->setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(card.checkBox()->hasFocus());
    EXPECT_NE(card.grab().toImage(), unfocused) << "the card shows the focus";
    EXPECT_NE(card.checkBox()->grab().toImage(), boxUnfocused) << "so does the box";
}

// Ticking a whole card turns on rows a person keeps on purpose too: the bottom bar says what they take with them,
// each once, until the next change of the ticks brings the total back.
TEST_F(WindowLifeTest, TickingACardWithRowsKeptOnPurposeSaysWhatGoes) {
    const auto warnedItem = [](const std::string& name, std::string_view warning) {
        RecordPtr item = itemNamed(name, true, false);
        RecordRole role = item->role();
        role.tickWarning = warning;
        item->setRole(role);
        return item;
    };
    launch(std::vector<SectionBuilder>{builderOf([&] {
        return sectionNamed("Browser Extensions",
                            {itemNamed("Cookies", true, false), warnedItem("Tab Tidy v1", "the extension"),
                             warnedItem("Tab Tidy v2", "the extension"),
                             warnedItem("Reset Browsers Preferences to Defaults", "the browsers' settings")});
    })});
    SectionCard& card = *view().cardAt(0);
    if (tickOf(*section(0)) != Tick::Off) {
        card.checkBox()->click();
    }
    ASSERT_EQ(tickOf(*section(0)), Tick::Off);
    EXPECT_TRUE(bar().statusText()->text().endsWith(" selected")) << "unticking warns of nothing";
    card.checkBox()->click();
    ASSERT_EQ(tickOf(*section(0)), Tick::On);
    EXPECT_EQ(bar().statusText()->text(), "Cleaning will remove the extension and the browsers' settings.");
    card.checkBox()->click();
    EXPECT_TRUE(bar().statusText()->text().endsWith(" selected")) << bar().statusText()->text().toStdString();
}

} // namespace
} // namespace tidewell::testing
