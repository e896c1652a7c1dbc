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
    // Changing the flags takes the window off screen; it comes back as it was.
    const bool wasVisible = m_window->isVisible();
    m_window->setWindowFlags((flags & ~Qt::WindowType_Mask) | type);
    if (wasVisible) {
        m_window->show();
    }
}

} // namespace tidewell
