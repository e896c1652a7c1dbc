#include <QLabel>
#include <QMouseEvent>
#include <QTimer>
#include <atomic>

#include "ui/compositing.hpp"
#include "ui/popover.hpp"
#include "ui/window_chrome.hpp"
#include "window_fixture.hpp"

namespace tidewell::testing {
namespace {

class WindowChromeTest : public WindowFixture {
protected:
    void TearDown() override {
        setDesktopCompositesForTesting(std::nullopt);
        WindowFixture::TearDown();
    }

    [[nodiscard]] FramelessWindow& custom() const { return *qobject_cast<FramelessWindow*>(&window()); }

    // The pointer at a place of the screen, as target sees it wherever it is now.
    static void sendMouse(QWidget& target, QEvent::Type type, QPoint global, Qt::MouseButtons buttons) {
        QMouseEvent event(type, QPointF(target.mapFromGlobal(global)), QPointF(global),
                          type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons, {});
        QApplication::sendEvent(&target, &event);
    }
};

TEST_F(WindowChromeTest, TheWindowHasNoSystemFrameButItsOwnTitledBarAndRoundedCorners) {
    setDesktopCompositesForTesting(true);
    launch(sectionsNamed({"A", "B"}));
    settle();
    EXPECT_TRUE(window().windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_EQ(custom().titleBar()->title(), QApplication::applicationDisplayName());
    EXPECT_EQ(window().width(), 560);

    const QImage image = window().grab().toImage();
    const auto alphaAt = [&](int x, int y) {
        const qreal ratio = image.devicePixelRatio();
        return qAlpha(image.pixel(static_cast<int>(x * ratio), static_cast<int>(y * ratio)));
    };
    EXPECT_EQ(alphaAt(0, 0), 0) << "the corner outside the rounding is see-through";
    EXPECT_EQ(alphaAt(window().width() - 1, window().height() - 1), 0);
    EXPECT_EQ(alphaAt(window().width() / 2, window().height() / 2), 255);
    EXPECT_EQ(alphaAt(FramelessWindow::kCornerRadius + 2, 0), 255) << "the rounding is no larger than its radius";

    // The quit and minimise buttons sit on the left of the bar.
    EXPECT_LT(custom().titleBar()->quitButton()->geometry().right(), custom().titleBar()->width() / 4);
    EXPECT_LT(custom().titleBar()->minimiseButton()->geometry().right(), custom().titleBar()->width() / 4);
}

TEST_F(WindowChromeTest, WithoutACompositorTheWindowAndThePopoverAreSquareAndOpaque) {
    // Offscreen nothing composites; see-through corners would show black on such a desktop.
    ASSERT_FALSE(desktopComposites());
    launch(sectionsNamed({"A"}));
    settle();
    EXPECT_FALSE(custom().isRounded());
    EXPECT_FALSE(window().testAttribute(Qt::WA_TranslucentBackground));
    const QImage image = window().grab().toImage();
    const qreal ratio = image.devicePixelRatio();
    for (const QPoint corner : {QPoint(0, 0), QPoint(window().width() - 1, 0), QPoint(0, window().height() - 1),
                                QPoint(window().width() - 1, window().height() - 1), QPoint(1, 1)}) {
        const QColor pixel =
            image.pixelColor(static_cast<int>(corner.x() * ratio), static_cast<int>(corner.y() * ratio));
        EXPECT_EQ(pixel.alpha(), 255) << corner.x() << "," << corner.y();
        EXPECT_GT(pixel.lightness(), 150) << "drawn, not left black: " << corner.x() << "," << corner.y();
    }

    // A popover is a plain box with no arrow band: every pixel is its own, and its top touches what it points at.
    Popover popover(new QLabel(QStringLiteral("Some words")));
    popover.showAt(QRect(40, 40, 20, 20), window());
    PopoverWindow& shown = *popover.popoverWindow();
    ASSERT_TRUE(popover.isShown());
    EXPECT_FALSE(shown.isShaped());
    EXPECT_FALSE(shown.testAttribute(Qt::WA_TranslucentBackground));
    const QImage box = shown.grab().toImage();
    for (const QPoint point : {QPoint(0, 0), QPoint(box.width() - 1, 0), QPoint(0, box.height() - 1),
                               QPoint(box.width() - 1, box.height() - 1), QPoint(box.width() / 2, 2)}) {
        EXPECT_EQ(box.pixelColor(point).alpha(), 255) << point.x() << "," << point.y();
        EXPECT_GT(box.pixelColor(point).lightness(), 150) << point.x() << "," << point.y();
    }
    EXPECT_EQ(shown.mapToGlobal(QPoint(0, 0)).y(), window().mapToGlobal(QPoint(0, 60)).y());
    EXPECT_EQ(shown.mapToGlobal(shown.arrowTip()).y(), shown.mapToGlobal(QPoint(0, 0)).y());
    popover.close();
}

TEST_F(WindowChromeTest, WithACompositorThePopoverIsRoundedWithItsArrow) {
    setDesktopCompositesForTesting(true);
    launch(sectionsNamed({"A"}));
    settle();
    Popover popover(new QLabel(QStringLiteral("Some words")));
    popover.showAt(QRect(40, 40, 20, 20), window());
    PopoverWindow& shown = *popover.popoverWindow();
    EXPECT_TRUE(shown.isShaped());
    const QImage box = shown.grab().toImage();
    EXPECT_EQ(box.pixelColor(0, 0).alpha(), 0) << "beside the arrow and outside the rounding is see-through";
    EXPECT_EQ(box.pixelColor(box.width() / 2, box.height() / 2).alpha(), 255);
    EXPECT_EQ(shown.height(),
              shown.contentView()->sizeHint().height() + 2 * PopoverWindow::kPadding + PopoverWindow::kArrowHeight);
    popover.close();
}

TEST_F(WindowChromeTest, DraggingTheTitleBarMovesTheWindow) {
    launch(sectionsNamed({"A"}));
    window().move(100, 80);
    settle();
    const QPoint start = window().pos();
    TitleBar& bar = *custom().titleBar();
    const QPoint grab = bar.mapToGlobal(QPoint(bar.width() / 2, bar.height() / 2));
    sendMouse(bar, QEvent::MouseButtonPress, grab, Qt::LeftButton);
    sendMouse(bar, QEvent::MouseMove, grab + QPoint(40, 25), Qt::LeftButton);
    sendMouse(bar, QEvent::MouseMove, grab + QPoint(70, 30), Qt::LeftButton);
    sendMouse(bar, QEvent::MouseButtonRelease, grab + QPoint(70, 30), Qt::NoButton);
    EXPECT_EQ(window().pos(), start + QPoint(70, 30));

    sendMouse(bar, QEvent::MouseMove, grab + QPoint(200, 200), Qt::NoButton);
    EXPECT_EQ(window().pos(), start + QPoint(70, 30)) << "released, the window stays";
}

TEST_F(WindowChromeTest, TheMinimiseButtonMinimisesAndTheHostBringsTheWindowBack) {
    launch(sectionsNamed({"A"}));
    custom().titleBar()->minimiseButton()->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return window().isMinimized(); }, 2000));
    application->minimiseWindow();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !window().isMinimized(); }, 2000));
}

TEST_F(WindowChromeTest, TheQuitButtonEndsTidewell) {
    launch(sectionsNamed({"A"}));
    QTimer::singleShot(0, custom().titleBar()->quitButton(), &QAbstractButton::click);
    QTimer::singleShot(10000, [] { QCoreApplication::exit(99); });
    EXPECT_EQ(QApplication::exec(), 0);
}

TEST_F(WindowChromeTest, AWindowClosedMidScanLetsTheScanGoWithoutWaitingOnIt) {
    // The first hand-over is queued but never run: the window goes first, the scan stops there, and nothing waits
    // for ever.
    auto runs = std::make_shared<std::atomic<int>>(0);
    std::vector<SectionBuilder> builders;
    for (int i = 0; i < 3; ++i) {
        builders.push_back([runs](ScanEnv&) {
            ++*runs;
            return BuilderOutcome{sectionOfSize("A", 1), 0, true};
        });
    }
    start(CatalogueViewOptions{std::move(builders), nullptr});
    application.reset();
    settle();
    EXPECT_LE(runs->load(), 1) << "no builder runs after the window has gone";
}

} // namespace
} // namespace tidewell::testing
