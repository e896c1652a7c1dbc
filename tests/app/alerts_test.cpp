#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
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

TEST_F(AlertsTest, TheConfirmationIsSizedToItsTextAndCentredOnItsWindow) {
    QWidget window;
    window.setGeometry(140, 90, 560, 640);
    window.show();
    const QString informative = QStringLiteral("2.7 MB will be erased from Safari, Chrome, Firefox, Mail and System. "
                                               "Programs that use these files may need to be restarted.");
    QRect shown;
    bool wrapped = true;
    QTimer::singleShot(0, [&] {
        QWidget* box = QApplication::activeModalWidget();
        ASSERT_NE(box, nullptr);
        shown = box->frameGeometry();
        for (const QLabel* label : box->findChildren<QLabel*>()) {
            if (label->text() == informative) {
                // All of the text is on screen: the label is as tall as its wrapped lines.
                wrapped = label->height() >= label->heightForWidth(label->width());
            }
        }
        QTest::keyClick(box, Qt::Key_Escape);
    });
    EXPECT_FALSE(
        Alerts::confirm(QStringLiteral("Are you sure you want to erase selected privacy data?"), informative, &window));
    ASSERT_TRUE(shown.isValid());
    EXPECT_GE(shown.width(), 420) << "wide enough for its title bar";
    EXPECT_LT(shown.width(), window.width()) << "not stretched beyond what its text needs";
    EXPECT_LE((shown.center() - window.geometry().center()).manhattanLength(), 2)
        << shown.center().x() << "," << shown.center().y();
    EXPECT_TRUE(wrapped);
}

} // namespace
} // namespace tidewell
