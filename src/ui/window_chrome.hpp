#pragma once

#include <QAbstractButton>
#include <QPoint>
#include <QPointer>
#include <QWidget>
#include <optional>

class QLabel;
class QVBoxLayout;

namespace tidewell {

/// One of the title bar's own round buttons, quit or minimise, drawn from Tidewell's images. It
/// darkens a little under the pointer and when pressed.
class WindowButton : public QAbstractButton {
    Q_OBJECT
public:
    enum class Kind { Quit, Minimise };

    explicit WindowButton(Kind kind, QWidget* parent = nullptr);
    [[nodiscard]] Kind kind() const { return m_kind; }
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    Kind m_kind;
    bool m_hovered = false;
};

/// The title bar of a window without a system frame. It shows the window's title in the middle
/// and the quit and minimise buttons on the left, and moves its window when dragged: through the windowing
/// system's own move where it offers one, else by following the pointer.
class TitleBar : public QWidget {
    Q_OBJECT
public:
    explicit TitleBar(QWidget* parent = nullptr);

    /// The bar's height.
    static constexpr int kHeight = 38;

    void setTitle(const QString& title);
    [[nodiscard]] QString title() const;
    [[nodiscard]] WindowButton* quitButton() const { return m_quit; }
    [[nodiscard]] WindowButton* minimiseButton() const { return m_minimise; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    QLabel* m_title;
    WindowButton* m_quit;
    WindowButton* m_minimise;
    // Where the pointer holds the window, from the window's top-left corner, while it is dragged by hand.
    std::optional<QPoint> m_grab;
};

/// A window without a system frame, with rounded corners (radius 6; square without a compositor), its own title bar
/// (TitleBar) and one content view under it. The window is as large as the content asks (its width fixed,
/// its height following the content), so a content that grows or shrinks resizes it.
///
/// The bar's quit and minimise buttons only say they were pressed (quitRequested, minimiseRequested); the
/// application decides what they do.
class FramelessWindow : public QWidget {
    Q_OBJECT
public:
    explicit FramelessWindow(QWidget* parent = nullptr);

    static constexpr int kCornerRadius = 6;

    /// Puts view under the title bar; the window owns it. A view set before is deleted.
    void setContentView(QWidget* view);
    [[nodiscard]] QWidget* contentView() const { return m_content; }
    [[nodiscard]] TitleBar* titleBar() const { return m_titleBar; }
    /// Whether the corners are rounded: only where a compositor shows what lies behind them.
    [[nodiscard]] bool isRounded() const { return testAttribute(Qt::WA_TranslucentBackground); }
    /// The part of the window under the title bar, in the window's coordinates.
    [[nodiscard]] QRect contentRect() const;

signals:
    void quitRequested();
    void minimiseRequested();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    TitleBar* m_titleBar;
    QVBoxLayout* m_layout;
    QPointer<QWidget> m_content;
};

} // namespace tidewell
