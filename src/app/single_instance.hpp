#pragma once

#include <QLocalServer>
#include <QObject>
#include <QString>
#include <chrono>

namespace tidewell {

/// One Tidewell per user and settings file: the first start listens on a local socket; a later start hands over
/// to it (asking it to come forward) and ends.
class SingleInstance : public QObject {
    Q_OBJECT
public:
    /// The socket for a settings file, per user: "tidewell-<uid>-<hash of the file's path>". Two starts with
    /// different settings (another XDG_CONFIG_HOME, as `make run` uses) are two Tidewells.
    static QString serverNameFor(const QString& settingsFile);

    explicit SingleInstance(QString serverName, QObject* parent = nullptr);

    /// Asks a running Tidewell on this socket to come forward. True when one took the request, and this start
    /// should end; false when none answered within timeout.
    [[nodiscard]] bool handOverToRunningInstance(std::chrono::milliseconds timeout = std::chrono::seconds(2)) const;

    /// Starts listening (only this user may connect); a socket left by a Tidewell that crashed is replaced. Each
    /// hand-over received emits reopenRequested. False when the socket cannot be made.
    bool listen();

signals:
    void reopenRequested();

private:
    QString m_serverName;
    QLocalServer m_server;
};

} // namespace tidewell
