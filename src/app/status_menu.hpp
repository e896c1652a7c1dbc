#pragma once

#include <QObject>
#include <memory>

class QMenu;
class QSystemTrayIcon;

namespace tidewell {

/// Tidewell's status menu, "StatusMenu", and its icon in the desktop's status area. Its three entries, in order:
/// "Real Time Scan", "Open Main Console" and "Quit"; each also carries its title as its key equivalent, in the
/// property "keyEquivalent" (a title is no key sequence, so it never becomes a shortcut). The entries only say
/// they were chosen; the application decides what they do.
class StatusMenu : public QObject {
    Q_OBJECT
public:
    /// The menu with its three entries; no icon until the first refresh.
    explicit StatusMenu(QObject* parent = nullptr);
    ~StatusMenu() override;
    StatusMenu(const StatusMenu&) = delete;
    StatusMenu& operator=(const StatusMenu&) = delete;

    /// Makes the icon on first use (also while the desktop has no status area, so that one appearing later shows
    /// it; a click on it opens the menu, as the right button does) and retitles the first entry "Real-time Scan Enabled" or "Real-time Scan Disabled", checked
    /// accordingly. Until the first refresh the entry reads "Real Time Scan".
    void refresh(bool realTimeScanOn);

    [[nodiscard]] QMenu* menu() const { return m_menu.get(); }
    /// The icon; null before the first refresh.
    [[nodiscard]] QSystemTrayIcon* icon() const { return m_icon.get(); }

signals:
    void realTimeScanChosen();
    void mainWindowChosen();
    void quitChosen();

private:
    std::unique_ptr<QMenu> m_menu;
    std::unique_ptr<QSystemTrayIcon> m_icon;
};

} // namespace tidewell
