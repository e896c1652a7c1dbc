#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>

namespace tidewell {

/// Whether the systemd user timer of `tidewell-cli schedule on` runs the hourly purge, kept up to date while its
/// units come and go: it watches the user's unit folder (or, until that exists, the nearest folder above it) and
/// the timer's enabling folder, and reads the files again at every change.
class ScheduledPurgeWatch : public QObject {
    Q_OBJECT
public:
    /// Starts watching unitFolder, which need not exist yet, and reads whether the timer is on now.
    explicit ScheduledPurgeWatch(QString unitFolder, QObject* parent = nullptr);

    [[nodiscard]] bool isOn() const { return m_on; }

signals:
    /// The timer was turned on or off.
    void changed(bool on);

private:
    void look();

    QString m_unitFolder;
    QFileSystemWatcher m_watcher;
    bool m_on = false;
};

} // namespace tidewell
