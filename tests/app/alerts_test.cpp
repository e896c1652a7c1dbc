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
    EXPECT_TRUE(Alerts::confirm("Confirm", "Erase?"));
    pressInNextAlert({Qt::Key_Escape});
    EXPECT_FALSE(Alerts::confirm("Confirm", "Erase?"));
    ASSERT_EQ(Alerts::shownAlerts().size(), 2U);
    EXPECT_EQ(Alerts::shownAlerts().front().buttons, (QStringList{"Yes", "No"}));
}

} // namespace
} // namespace tidewell
