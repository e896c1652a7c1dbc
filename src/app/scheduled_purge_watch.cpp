#include "app/scheduled_purge_watch.hpp"

#include <QDir>
#include <QFileInfo>

#include "platform/purge_schedule.hpp"

namespace tidewell {

namespace {

// The folders whose entries tell the timer's state: the enabling folder and the unit folder when they exist, and
// while the unit folder does not, the nearest folder above it, where it will appear.
QStringList foldersToWatch(const QString& unitFolder) {
    QStringList folders;
    const QString wants = unitFolder + QStringLiteral("/timers.target.wants");
    if (QFileInfo(wants).isDir()) {
        folders << wants;
    }
    QString folder = unitFolder;
    while (!QFileInfo(folder).isDir() && folder != QDir::rootPath()) {
        folder = QFileInfo(folder).absolutePath();
    }
    folders << folder;
    folders.sort();
    return folders;
}

} // namespace

ScheduledPurgeWatch::ScheduledPurgeWatch(QString unitFolder, QObject* parent)
    : QObject(parent), m_unitFolder(std::move(unitFolder)) {
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &ScheduledPurgeWatch::look);
    look();
}

void ScheduledPurgeWatch::look() {
    // A folder made between listing and watching sends no change, so the list is made again until it holds still
    // (a few rounds at most: `schedule on` makes at most three folders, and a folder that cannot be watched must
    // not keep this going).
    for (int round = 0; round < 4; ++round) {
        const QStringList folders = foldersToWatch(m_unitFolder);
        QStringList watched = m_watcher.directories();
        watched.sort();
        if (folders == watched) {
            break;
        }
        if (!watched.isEmpty()) {
            m_watcher.removePaths(watched);
        }
        m_watcher.addPaths(folders);
    }
    const bool on = purgeTimerEnabledIn(m_unitFolder.toStdString());
    if (on != m_on) {
        m_on = on;
        emit changed(on);
    }
}

} // namespace tidewell
