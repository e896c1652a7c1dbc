#include <gtest/gtest.h>

#include <QApplication>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include "app/alerts.hpp"

namespace tidewell {
namespace {

// Presses keys, in order, in the alert that is about to run, each while it is still up.
void pressInNextAlert(std::vector<Qt::Key> keys) {
    QTimer::singleShot(0, [keys] {
        for (const Qt::Key key : keys) {
            if (QWidget* box = QApplication::activeModalWidget()) {
                QTest::keyClick(box, key);
            }
        }
    });
}

class AlertsTest : public ::testing::Test {
protected:
    void SetUp() override { Alerts::resetSeam(); }
};

TEST_F(AlertsTest, YesAnswersReturnAndNoAnswersEscape) {
    pressInNextAlert({Qt::Key_Return});
    EXPECT_EQ(Alerts::createAlertForInformativeText("Erase?", "Confirm", nullptr), kAlertFirstButtonReturn);
    pressInNextAlert({Qt::Key_Escape});
    EXPECT_EQ(Alerts::createAlertForInformativeText("Erase?", "Confirm", nullptr), kAlertSecondButtonReturn);
    ASSERT_EQ(Alerts::shownAlerts().size(), 2U);
    EXPECT_EQ(Alerts::shownAlerts().front().buttons, (QStringList{"Yes", "No"}));
}

TEST_F(AlertsTest, TheOkAlertAsASheetDoesNotWaitAndStaysWithItsWindow) {
    QWidget window;
    window.show();
    Alerts::createAlertForInformativeText("Done", "Cleaned", true, &window);
    auto* sheet = window.findChild<QMessageBox*>();
    ASSERT_NE(sheet, nullptr) << "returned at once, with the sheet up";
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(sheet->windowModality(), Qt::WindowModal);
    EXPECT_EQ(sheet->informativeText(), "Done");
    sheet->close();

    Alerts::answerNextAlert(kAlertFirstButtonReturn);
    Alerts::createAlertForInformativeText("Done", "Cleaned", false, &window);
    EXPECT_EQ(Alerts::shownAlerts().size(), 2U);
}

} // namespace
} // namespace tidewell
