#pragma once

#include <QColor>
#include <QObject>
#include <QPointer>
#include <QWidget>

namespace tidewell {

/// The window of a popover: a rounded body in the popover's colour holding its content view,
/// with an arrow on its top or bottom edge that points at what the popover is about. It is a popup: a click
/// outside it closes it.
class PopoverWindow : public QWidget {
    Q_OBJECT
public:
    /// Up: the arrow is on the top edge and the popover hangs below what it points at; Down: the reverse.
    enum class ArrowDirection { Up, Down };

    static constexpr int kArrowHeight = 9;
    static constexpr int kArrowHalfWidth = 10;
    static constexpr int kCornerRadius = 8;
    static constexpr int kPadding = 16;

    /// A popover window around content, which it takes.
    explicit PopoverWindow(QWidget* content);

    [[nodiscard]] QWidget* contentView() const { return m_content; }
    void setColor(const QColor& color);
    [[nodiscard]] QColor color() const { return m_color; }

    /// Places the arrow: its direction, and its tip's distance from the window's left edge.
    void setArrow(ArrowDirection direction, int tipX);
    [[nodiscard]] ArrowDirection arrowDirection() const { return m_direction; }
    /// The tip of the arrow, in the window's coordinates.
    [[nodiscard]] QPoint arrowTip() const;

    /// Whether the popover is drawn rounded with its arrow; without a compositor it is a square, opaque box.
    [[nodiscard]] bool isShaped() const { return m_shaped; }

    /// The window's size for its content, arrow included.
    [[nodiscard]] QSize sizeHint() const override;

signals:
    /// The popover went off screen, by a click outside it or by closePopover.
    void closed();

protected:
    void paintEvent(QPaintEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void layOutContent();
    [[nodiscard]] int arrowHeight() const { return m_shaped ? kArrowHeight : 0; }

    QWidget* m_content;
    bool m_shaped;
    QColor m_color{Qt::white};
    ArrowDirection m_direction = ArrowDirection::Up;
    int m_tipX = 0;
};

/// Shows a content view in a popover whose arrow points at a rectangle of another view,
/// below it where the screen has room and above it otherwise, kept on the screen.
class Popover : public QObject {
    Q_OBJECT
public:
    /// A controller for content, which the popover takes.
    explicit Popover(QWidget* content, QObject* parent = nullptr);
    ~Popover() override;
    Popover(const Popover&) = delete;
    Popover& operator=(const Popover&) = delete;

    /// The popover's colour (white unless set).
    void setColor(const QColor& color);

    /// Shows the popover with its arrow at the middle of rect's near edge; rect is in view's coordinates.
    void showAt(const QRect& rect, QWidget& view);
    void close();
    [[nodiscard]] bool isShown() const;

    [[nodiscard]] PopoverWindow* popoverWindow() const { return m_window; }
    [[nodiscard]] QWidget* contentView() const { return m_window->contentView(); }

private:
    PopoverWindow* m_window;
};

} // namespace tidewell
