// The main window as a person meets it on a desktop: with or without a status area, where it is placed, and what
// its title bar says about the disk.

#include <QCheckBox>
#include <QGuiApplication>
#include <QScreen>

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

} // namespace
} // namespace tidewell::testing
