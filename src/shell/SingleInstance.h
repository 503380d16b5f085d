#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <memory>

class QLocalServer;
class QLocalSocket;

namespace korvel {

// One KorvelEdit per user: the first start listens on a local socket named from the instance
// tag "MARLOW KTE 1.00" and the user id, in the user's run-time folder; a later start hands its
// file to it and ends.

// The socket's path: in $XDG_RUNTIME_DIR when it is the user's own folder, else in the
// temporary folder, where the socket itself is kept to the user.
QString InstanceSocketPath();

// Either this process becomes the instance (server set), or another instance answered (running
// set). Checking and claiming happen under a lock, so two starts at the same moment end with
// one instance; a socket left by an instance that crashed is taken over. Both null when the
// socket could not be made: the program then runs on its own.
struct InstanceClaim {
    std::unique_ptr<QLocalServer> server;
    std::unique_ptr<QLocalSocket> running;
};
InstanceClaim ClaimInstance(const QString& socketPath);

// Sends path (absolute, or empty to bring the instance to the front only) and waits until the
// instance has handled it. False when it refused the record or did not answer in timeoutMs.
bool HandOver(QLocalSocket& running, const QString& path, int timeoutMs);

// Takes the hand-overs that reach server: each complete, well-formed record from a process of
// this user is given to handle, and its sender told once handle returns. Anything else (another
// identifier, a wrong length, no terminating 0, a peer that sends nothing for a while) is
// dropped without a word.
class HandoverReceiver : public QObject {
    Q_OBJECT
public:
    using Handler = std::function<void(const QString& path)>;
    static constexpr int kDefaultRecordTimeoutMs = 5000;
    // A peer that has not sent its whole record after recordTimeoutMs is dropped.
    HandoverReceiver(std::unique_ptr<QLocalServer> server, Handler handle,
                     int recordTimeoutMs = kDefaultRecordTimeoutMs, QObject* parent = nullptr);
    ~HandoverReceiver() override;

private:
    void acceptPending();
    void take(QLocalSocket* peer);

    std::unique_ptr<QLocalServer> server_;
    Handler handle_;
    int recordTimeoutMs_;
};

} // namespace korvel
