#include "app/window_placement.hpp"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <algorithm>

namespace tidewell {

WindowPlacement::WindowPlacement(AppSettings& store, QObject* parent) : QObject(parent), m_store(store) {}

void WindowPlacement::govern(QWidget* window) {
    m_window = window;
    m_placed = false;
    m_centred = false;
    if (window != nullptr) {
        window->installEventFilter(this);
    }
}

QRect WindowPlacement::centred(const QSize& size, const QRect& area) {
    QRect rect(QPoint(), size);
    rect.moveCenter(area.center());
    return keptOn(rect, area);
}

QRect WindowPlacement::keptOn(const QRect& rect, const QRect& area) {
    QRect kept = rect;
    kept.moveRight(std::min(kept.right(), area.right()));
    kept.moveBottom(std::min(kept.bottom(), area.bottom()));
    kept.moveLeft(std::max(kept.left(), area.left()));
    kept.moveTop(std::max(kept.top(), area.top()));
    return kept;
}

QRect WindowPlacement::availableArea() const {
    const QScreen* screen = m_window ? m_window->screen() : nullptr;
    if (screen == nullptr) {
        screen = QGuiApplication::primaryScreen();
    }
    return screen != nullptr ? screen->availableGeometry() : QRect();
}

void WindowPlacement::moveTo(const QPoint& place) {
    m_ownMove = place;
    m_window->move(place);
}

void WindowPlacement::placeAtFirstShow() {
    m_placed = true;
    const QSize size = m_window->frameGeometry().size();
    if (const std::optional<QPoint> stored = m_store.pointAt(keys::kWindowPosition)) {
        const QRect there(*stored, size);
        const QList<QScreen*> screens = QGuiApplication::screens();
        const bool onAScreen = std::any_of(screens.begin(), screens.end(), [&there](const QScreen* screen) {
            return screen->availableGeometry().contains(there);
        });
        if (onAScreen) {
            moveTo(*stored);
            return;
        }
    }
    const QRect area = availableArea();
    if (area.isValid()) {
        m_centred = true;
        moveTo(centred(size, area).topLeft());
    }
}

void WindowPlacement::keepOnScreen() {
    const QRect area = availableArea();
    if (!area.isValid()) {
        return;
    }
    const QRect now = m_window->frameGeometry();
    const QRect wanted = m_centred ? centred(now.size(), area) : keptOn(now, area);
    if (wanted.topLeft() != now.topLeft()) {
        moveTo(wanted.topLeft());
    }
}

void WindowPlacement::remember() {
    if (m_window && m_placed) {
        m_store.setPoint(keys::kWindowPosition, m_window->pos());
    }
}

bool WindowPlacement::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_window) {
        return QObject::eventFilter(watched, event);
    }
    switch (event->type()) {
    case QEvent::Show:
        if (!m_placed) {
            placeAtFirstShow();
        } else {
            keepOnScreen();
        }
        break;
    case QEvent::Resize:
        if (m_placed && m_window->isVisible()) {
            keepOnScreen();
        }
        break;
    case QEvent::Move:
        if (m_ownMove && *m_ownMove == m_window->pos()) {
            m_ownMove.reset();
        } else if (m_placed && m_window->isVisible() && !m_ownMove) {
            // Moved by the person (or the window manager): it stays where it was put.
            m_centred = false;
        }
        break;
    case QEvent::Hide:
        remember();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace tidewell
