#include "shell/SingleInstance.h"

#include "shell/HandoverRecord.h"

#include <QDir>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QPointer>
#include <QTimer>
#include <memory>
#include <span>
#include <sys/socket.h>
#include <unistd.h>

namespace korvel {

namespace {

constexpr char kInstanceTag[] = "MARLOW KTE 1.00";
constexpr int kConnectTimeoutMs = 1000;
constexpr char kHandled = 1;

std::span<const std::byte> Bytes(const QByteArray& data) {
    return std::as_bytes(std::span(data.constData(), static_cast<std::size_t>(data.size())));
}

// Only a process of this user may hand a file over.
bool FromThisUser(const QLocalSocket& peer) {
    ucred credentials{};
    socklen_t length = sizeof credentials;
    return ::getsockopt(static_cast<int>(peer.socketDescriptor()), SOL_SOCKET, SO_PEERCRED,
                        &credentials, &length) == 0 &&
           credentials.uid == ::getuid();
}

} // namespace

QString InstanceSocketPath() {
    const QString name = QStringLiteral("%1.%2").arg(QLatin1String(kInstanceTag)).arg(::getuid());
    const QFileInfo runtime(qEnvironmentVariable("XDG_RUNTIME_DIR"));
    const bool usable =
        !runtime.filePath().isEmpty() && runtime.isDir() && runtime.ownerId() == ::getuid();
    return QDir(usable ? runtime.absoluteFilePath() : QDir::tempPath()).filePath(name);
}

InstanceClaim ClaimInstance(const QString& socketPath) {
    InstanceClaim claim;
    // The lock makes looking for the instance and becoming it one step; a lock left by a
    // process that died is stale and taken over.
    QLockFile lock(socketPath + QStringLiteral(".lock"));
    if (!lock.lock())
        return claim;
    auto running = std::make_unique<QLocalSocket>();
    running->connectToServer(socketPath);
    if (running->waitForConnected(kConnectTimeoutMs)) {
        claim.running = std::move(running);
        return claim;
    }
    // Nobody answers: what is there was left by an instance that ended without removing it.
    QLocalServer::removeServer(socketPath);
    auto server = std::make_unique<QLocalServer>();
    server->setSocketOptions(QLocalServer::UserAccessOption);
    if (server->listen(socketPath))
        claim.server = std::move(server);
    return claim;
}

bool HandOver(QLocalSocket& running, const QString& path, int timeoutMs) {
    const std::vector<std::byte> record = MakeHandoverRecord(path.toStdU16String());
    running.write(reinterpret_cast<const char*>(record.data()), static_cast<qint64>(record.size()));
    if (!running.waitForBytesWritten(timeoutMs))
        return false;
    // The answer comes once the instance has opened the file, which may wait for the user.
    if (running.bytesAvailable() == 0 && !running.waitForReadyRead(timeoutMs))
        return false;
    char answer = 0;
    return running.getChar(&answer) && answer == kHandled;
}

HandoverReceiver::HandoverReceiver(std::unique_ptr<QLocalServer> server, Handler handle,
                                   int recordTimeoutMs, QObject* parent)
    : QObject(parent), server_(std::move(server)), handle_(std::move(handle)),
      recordTimeoutMs_(recordTimeoutMs) {
    connect(server_.get(), &QLocalServer::newConnection, this, &HandoverReceiver::acceptPending);
    // Starts that came while the window was being made wait in the queue.
    acceptPending();
}

HandoverReceiver::~HandoverReceiver() = default;

void HandoverReceiver::acceptPending() {
    while (QLocalSocket* peer = server_->nextPendingConnection())
        take(peer);
}

void HandoverReceiver::take(QLocalSocket* peer) {
    connect(peer, &QLocalSocket::disconnected, peer, &QObject::deleteLater);
    if (!FromThisUser(*peer)) {
        peer->abort();
        return;
    }
    auto* timeout = new QTimer(peer);
    timeout->setSingleShot(true);
    connect(timeout, &QTimer::timeout, peer, &QLocalSocket::abort);
    timeout->start(recordTimeoutMs_);
    auto received = std::make_shared<QByteArray>();
    connect(peer, &QLocalSocket::readyRead, this, [this, peer, timeout, received] {
        received->append(peer->readAll());
        const auto have = static_cast<std::size_t>(received->size());
        const std::optional<std::size_t> size = HandoverRecordSize(Bytes(*received));
        if (!size && have < kHandoverHeaderBytes)
            return; // the header is still coming
        if (!size || have > *size) {
            peer->abort();
            return;
        }
        if (have < *size)
            return;
        const std::optional<std::u16string> path = ParseHandoverRecord(Bytes(*received));
        if (!path) {
            peer->abort();
            return;
        }
        timeout->stop();
        disconnect(peer, &QLocalSocket::readyRead, this, nullptr);
        // Opening the file may ask the user first; the sender may be gone by the end.
        const QPointer<QLocalSocket> guard(peer);
        handle_(QString::fromStdU16String(*path));
        if (guard.isNull())
            return;
        guard->putChar(kHandled);
        guard->flush();
        guard->disconnectFromServer();
    });
}

} // namespace korvel
