#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>
#include <chrono>

namespace tidewell {

/// Whether the main window has a taskbar entry, what a dock icon is on this desktop. With an entry the window is a
/// normal window; without one it is a tool window, which desktops leave out of the taskbar, and Tidewell is a
/// status-menu application.
class TaskbarPolicy : public QObject {
    Q_OBJECT
public:
    /// How long after the entry is hidden the desktop has settled, so that a window left behind others can come
    /// forward.
    static constexpr std::chrono::milliseconds kSettleDelay{200};

    using QObject::QObject;

    /// The window whose entry this policy governs (the main window as made); it takes the current policy at once.
    void govern(QWidget* window);

    /// Shows or hides the entry. Hiding it emits entryHidden once the desktop has settled (kSettleDelay later),
    /// since losing the entry can leave the window behind other windows.
    void setShowsEntry(bool show);
    [[nodiscard]] bool showsEntry() const { return m_showsEntry; }

signals:
    /// The entry was hidden a moment ago and the change has settled.
    void entryHidden();

private:
    void apply();

    QPointer<QWidget> m_window;
    bool m_showsEntry = true;
};

} // namespace tidewell
