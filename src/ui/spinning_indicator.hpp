#pragma once

#include <QColor>
#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

namespace tidewell {

/// An indeterminate spinning indicator, a short arc turning on a faint ring. It is only
/// seen while it turns: stopping it hides it, starting it shows it.
class SpinningIndicator : public QWidget {
    Q_OBJECT
public:
    explicit SpinningIndicator(QWidget* parent = nullptr);

    /// Shows the indicator and starts turning; starting it again changes nothing.
    void startAnimation();
    /// Stops turning and hides it.
    void stopAnimation();
    [[nodiscard]] bool isAnimating() const { return m_timer.isActive(); }

    /// The colour of the arc (the ring is a faint shade of it).
    void setColor(const QColor& color);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QTimer m_timer;
    QElapsedTimer m_clock;
    QColor m_color;
};

} // namespace tidewell
