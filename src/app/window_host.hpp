#pragma once

#include <QByteArray>
#include <QObject>
#include <optional>

#include "app/settings_model.hpp"
#include "layout/disk_root.hpp"
#include "platform/folder_grant.hpp"

namespace tidewell {

/// What the main window asks of the application around it: the disk it shows, the person's three choices (shown
/// and changed in its bottom bar), the grant that bounds a clean, the help page, and the window's own minimise and
/// quit. The main window knows the application only through this interface; everything here runs on the main
/// thread.
class WindowHost : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    /// The disk the window scans and cleans.
    [[nodiscard]] virtual const DiskRoot& disk() const = 0;

    /// The window has loaded: the stored choices are read and applied on the main thread's next turn (so the
    /// window has finished loading first), and settingsChanged follows.
    virtual void restoreSettings() = 0;
    /// The current choices.
    [[nodiscard]] virtual const SettingsModel& settings() const = 0;
    /// Whether the systemd timer of `tidewell-cli schedule on` runs the hourly purge, so the window's own rests.
    [[nodiscard]] virtual bool purgeScheduledBySystem() const = 0;
    /// A person's choice in the bottom bar: stored and applied at once (the hourly timer and the status menu, the
    /// login item, the taskbar entry), then settingsChanged.
    virtual void setRealTimeScan(bool on) = 0;
    virtual void setRunAtStart(bool on) = 0;
    virtual void setShowsTaskbarEntry(bool show) = 0;

    /// Whether the desktop has a status area holding Tidewell's icon; without one the window is the only way in,
    /// so it cannot be hidden in favour of the icon.
    [[nodiscard]] virtual bool statusAreaAvailable() const = 0;

    /// The grant that bounds a clean: the first started grant; nothing before one is started, and then a clean
    /// removes nothing.
    [[nodiscard]] virtual std::optional<FolderGrant> cleaningGrant() const = 0;

    /// The person's ticks as last stored (see ui/selection_memory), empty when none are; and storing them, empty
    /// bytes forgetting them so that every item starts at its default again.
    [[nodiscard]] virtual QByteArray storedSelection() const = 0;
    virtual void storeSelection(const QByteArray& selection) = 0;

    /// Opens the help page in the default browser.
    virtual void openHelp() = 0;
    /// The title bar's buttons: minimise the window (or bring it back when minimised), and end Tidewell.
    virtual void minimiseWindow() = 0;
    virtual void quit() = 0;

signals:
    /// A choice, or whether the systemd timer runs the purge, may have changed.
    void settingsChanged();
};

} // namespace tidewell
