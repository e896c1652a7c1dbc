#include "app/taskbar_policy.hpp"

#include <QTimer>

namespace tidewell {

void TaskbarPolicy::govern(QWidget* window) {
    m_window = window;
    apply();
}

void TaskbarPolicy::setShowsEntry(bool show) {
    m_showsEntry = show;
    apply();
    if (!show) {
        QTimer::singleShot(kSettleDelay, this, &TaskbarPolicy::entryHidden);
    }
}

void TaskbarPolicy::apply() {
    if (!m_window) {
        return;
    }
    const Qt::WindowType type = m_showsEntry ? Qt::Window : Qt::Tool;
    const Qt::WindowFlags flags = m_window->windowFlags();
    if ((flags & Qt::WindowType_Mask) == type) {
        return;
    }
    // Changing the flags takes the window off screen; it comes back where and as it was, in front, never hidden
    // or minimised by the change.
    const bool wasVisible = m_window->isVisible();
    const QPoint place = m_window->pos();
    m_window->setWindowFlags((flags & ~Qt::WindowType_Mask) | type);
    if (wasVisible) {
        m_window->move(place);
        m_window->setWindowState(m_window->windowState() & ~Qt::WindowMinimized);
        m_window->show();
        m_window->raise();
        m_window->activateWindow();
    }
}

} // namespace tidewell
