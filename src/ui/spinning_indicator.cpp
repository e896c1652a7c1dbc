#include "ui/spinning_indicator.hpp"

#include <QPainter>
#include <QPainterPath>
#include <chrono>

namespace tidewell {

namespace {

// One turn a second: quick enough to read as busy, slow enough to stay calm.
constexpr double kDegreesPerMillisecond = 0.36;
constexpr int kArcSpanDegrees = 100;

} // namespace

SpinningIndicator::SpinningIndicator(QWidget* parent) : QWidget(parent), m_color(46, 110, 142) {
    setObjectName(QStringLiteral("spinningIndicator"));
    setAttribute(Qt::WA_TranslucentBackground);
    // Redrawn at the display's pace; the angle follows the clock, so a slow frame never slows the turn.
    m_timer.setInterval(std::chrono::milliseconds(16));
    connect(&m_timer, &QTimer::timeout, this, qOverload<>(&QWidget::update));
    setFixedSize(sizeHint());
    hide();
}

void SpinningIndicator::startAnimation() {
    if (m_timer.isActive()) {
        return;
    }
    m_clock.start();
    m_timer.start();
    show();
}

void SpinningIndicator::stopAnimation() {
    m_timer.stop();
    hide();
}

void SpinningIndicator::setColor(const QColor& color) {
    m_color = color;
    update();
}

QSize SpinningIndicator::sizeHint() const {
    return {20, 20};
}

void SpinningIndicator::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal pen = 2.4;
    const QRectF ring = QRectF(rect()).adjusted(pen, pen, -pen, -pen);

    QColor faint = m_color;
    faint.setAlphaF(0.18F);
    painter.setPen(QPen(faint, pen));
    painter.drawEllipse(ring);

    const qint64 elapsed = m_clock.isValid() ? m_clock.elapsed() : 0;
    const int angle = static_cast<int>(static_cast<double>(elapsed) * kDegreesPerMillisecond) % 360;
    painter.setPen(QPen(m_color, pen, Qt::SolidLine, Qt::RoundCap));
    // Qt counts angles anticlockwise in sixteenths of a degree; a falling start angle turns the arc clockwise.
    painter.drawArc(ring, (90 - angle) * 16, -kArcSpanDegrees * 16);
}

} // namespace tidewell
