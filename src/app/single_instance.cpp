#include "app/single_instance.hpp"

#include <unistd.h>

#include <QCryptographicHash>
#include <QLocalSocket>

namespace tidewell {

namespace {

// The whole request; anything else on the socket is ignored.
constexpr char kReopenRequest[] = "reopen\n";

} // namespace

QString SingleInstance::serverNameFor(const QString& settingsFile) {
    const QByteArray hash = QCryptographicHash::hash(settingsFile.toUtf8(), QCryptographicHash::Sha1).toHex();
    return QStringLiteral("tidewell-%1-%2").arg(::getuid()).arg(QString::fromLatin1(hash.left(12)));
}

SingleInstance::SingleInstance(QString serverName, QObject* parent)
    : QObject(parent), m_serverName(std::move(serverName)) {}

bool SingleInstance::handOverToRunningInstance(std::chrono::milliseconds timeout) const {
    QLocalSocket socket;
    socket.connectToServer(m_serverName);
    const int waitMs = static_cast<int>(timeout.count());
    if (!socket.waitForConnected(waitMs)) {
        return false;
    }
    socket.write(kReopenRequest);
    if (!socket.waitForBytesWritten(waitMs)) {
        return false;
    }
    socket.disconnectFromServer();
    return true;
}

bool SingleInstance::listen() {
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_server.listen(m_serverName)) {
        // The name is taken by the socket of a Tidewell that ended without removing it (no one answered the
        // hand-over), so it is stale.
        QLocalServer::removeServer(m_serverName);
        if (!m_server.listen(m_serverName)) {
            return false;
        }
    }
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* client = m_server.nextPendingConnection()) {
            connect(client, &QLocalSocket::disconnected, client, &QObject::deleteLater);
            const auto readRequest = [this, client] {
                if (client->canReadLine() && client->readLine() == kReopenRequest) {
                    emit reopenRequested();
                }
            };
            connect(client, &QLocalSocket::readyRead, this, readRequest);
            readRequest();
        }
    });
    return true;
}

} // namespace tidewell
