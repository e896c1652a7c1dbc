#pragma once

#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QWidget>
#include <optional>

#include "app/settings.hpp"

namespace tidewell {

/// Where the main window lies on the screen. The first time it shows it is centred on the available area (the
/// screen less its panels) and lies wholly on it; a later start puts it back where it was last, if that place is
/// still wholly on a screen, and centres it otherwise. The window grows while the scan fills it: a window that has
/// not been moved is kept centred as it grows, and any window is moved up or in so that it stays wholly on its
/// screen. The place is stored at "MainWindowPosition" whenever the window hides and when Tidewell ends.
class WindowPlacement : public QObject {
    Q_OBJECT
public:
    explicit WindowPlacement(AppSettings& store, QObject* parent = nullptr);

    /// The window to place; it is placed at its first showing.
    void govern(QWidget* window);
    /// Stores where the window lies now (nothing before it has been placed).
    void remember();

    /// The rectangle of that size centred on area, moved to lie wholly on it as far as it fits.
    [[nodiscard]] static QRect centred(const QSize& size, const QRect& area);
    /// rect moved the least to lie wholly on area (its top-left corner wins when it is larger).
    [[nodiscard]] static QRect keptOn(const QRect& rect, const QRect& area);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void placeAtFirstShow();
    void keepOnScreen();
    void moveTo(const QPoint& place);
    [[nodiscard]] QRect availableArea() const;

    AppSettings& m_store;
    QPointer<QWidget> m_window;
    bool m_placed = false;
    // Whether the window still lies where Tidewell centred it: then it is kept centred as it grows.
    bool m_centred = false;
    // Where Tidewell last moved the window, so that its own moves are not taken for a person's.
    std::optional<QPoint> m_ownMove;
};

} // namespace tidewell
