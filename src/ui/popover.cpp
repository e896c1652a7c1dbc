#include "ui/popover.hpp"

#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <algorithm>

#include "ui/compositing.hpp"

namespace tidewell {

namespace {

// Keep a popover this far from the screen's edges.
constexpr int kScreenMargin = 6;

} // namespace

// --- PopoverWindow ---

PopoverWindow::PopoverWindow(QWidget* content)
    : QWidget(nullptr, Qt::Popup | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint), m_content(content),
      m_shaped(desktopComposites()) {
    setObjectName(QStringLiteral("PopoverWindow"));
    // Without a compositor the see-through corners and the band beside the arrow would show black: the popover is
    // then a plain opaque rectangle that touches what it points at.
    setAttribute(Qt::WA_TranslucentBackground, m_shaped);
    m_content->setParent(this);
    layOutContent();
}

void PopoverWindow::setColor(const QColor& color) {
    m_color = color;
    update();
}

void PopoverWindow::setArrow(ArrowDirection direction, int tipX) {
    m_direction = direction;
    m_tipX = tipX;
    layOutContent();
    update();
}

QPoint PopoverWindow::arrowTip() const {
    return {m_tipX, m_direction == ArrowDirection::Up ? 0 : height()};
}

QSize PopoverWindow::sizeHint() const {
    const QSize content = m_content->sizeHint();
    return {content.width() + 2 * kPadding, content.height() + 2 * kPadding + arrowHeight()};
}

void PopoverWindow::layOutContent() {
    const QSize content = m_content->sizeHint();
    const int top = kPadding + (m_direction == ArrowDirection::Up ? arrowHeight() : 0);
    m_content->setGeometry(kPadding, top, content.width(), content.height());
    resize(sizeHint());
}

void PopoverWindow::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    if (!m_shaped) {
        painter.fillRect(rect(), m_color);
        painter.setPen(QColor(208, 208, 208));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
        return;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    const bool up = m_direction == ArrowDirection::Up;
    const QRectF body =
        QRectF(rect()).adjusted(0.5, up ? kArrowHeight + 0.5 : 0.5, -0.5, up ? -0.5 : -kArrowHeight - 0.5);
    QPainterPath outline;
    outline.addRoundedRect(body, kCornerRadius, kCornerRadius);
    const qreal tip =
        std::clamp<qreal>(m_tipX, kCornerRadius + kArrowHalfWidth, width() - kCornerRadius - kArrowHalfWidth);
    const qreal edge = up ? body.top() : body.bottom();
    QPainterPath arrow;
    arrow.moveTo(tip - kArrowHalfWidth, edge + (up ? 1 : -1));
    arrow.lineTo(tip, up ? 0.5 : height() - 0.5);
    arrow.lineTo(tip + kArrowHalfWidth, edge + (up ? 1 : -1));
    arrow.closeSubpath();
    outline = outline.united(arrow);
    painter.setPen(QPen(QColor(208, 208, 208), 1));
    painter.setBrush(m_color);
    painter.drawPath(outline);
}

void PopoverWindow::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    emit closed();
}

// --- Popover ---

Popover::Popover(QWidget* content, QObject* parent) : QObject(parent), m_window(new PopoverWindow(content)) {}

Popover::~Popover() {
    delete m_window;
}

void Popover::setColor(const QColor& color) {
    m_window->setColor(color);
}

void Popover::showAt(const QRect& rect, QWidget& view) {
    const QSize size = m_window->sizeHint();
    const QPoint below = view.mapToGlobal(QPoint(rect.center().x(), rect.bottom() + 1));
    const QPoint above = view.mapToGlobal(QPoint(rect.center().x(), rect.top()));
    const QScreen* screen = view.screen();
    const QRect area = screen != nullptr ? screen->availableGeometry().marginsRemoved(
                                               QMargins(kScreenMargin, kScreenMargin, kScreenMargin, kScreenMargin))
                                         : QRect(QPoint(), QSize(1 << 20, 1 << 20));

    // Below the rectangle unless the screen ends first; then above it.
    const bool fitsBelow = below.y() + size.height() <= area.bottom();
    const PopoverWindow::ArrowDirection direction =
        fitsBelow ? PopoverWindow::ArrowDirection::Up : PopoverWindow::ArrowDirection::Down;
    const QPoint tip = fitsBelow ? below : above;
    const int left =
        std::clamp(tip.x() - size.width() / 2, area.left(), std::max(area.left(), area.right() - size.width()));
    const int top = fitsBelow ? tip.y() : tip.y() - size.height();

    m_window->setArrow(direction, tip.x() - left);
    m_window->move(left, top);
    m_window->show();
    m_window->raise();
}

void Popover::close() {
    m_window->hide();
}

bool Popover::isShown() const {
    return m_window->isVisible();
}

} // namespace tidewell
