#include "desktop/IncomingFiles.h"

#include <QByteArray>
#include <QPointer>
#include <chrono>

#include <poll.h>

#include "desktop/HandOverProtocol.h"

namespace vornic {

namespace {

// More than a command line can hold.
constexpr qint64 kLongestMessage = qint64{8} * 1024 * 1024;
constexpr std::chrono::seconds kSignOfLifeInterval{1};

}  // namespace

IncomingFiles::IncomingFiles(QLocalSocket* connection, FileReceiver& receiver)
    : QObject(connection), connection_(*connection), receiver_(receiver) {
    connect(connection, &QLocalSocket::readyRead, this, [this] { read(); });
    connect(connection, &QLocalSocket::disconnected, connection, &QObject::deleteLater);
    connect(&signOfLife_, &QTimer::timeout, this, [this] { say(hand_over::kHeard); });
}

void IncomingFiles::read() {
    if (connection_.bytesAvailable() > kLongestMessage) {
        connection_.abort();
    } else if (!isOffered_) {
        readPaths();
    } else if (connection_.readAll().contains(hand_over::kCommit)) {
        take();
    }
}

void IncomingFiles::readPaths() {
    using hand_over::kEndOfPath;
    const QByteArray message = connection_.peek(connection_.bytesAvailable());
    const bool isWhole =
        message == QByteArray(1, kEndOfPath) || message.endsWith(QByteArray(2, kEndOfPath));
    if (!isWhole) {
        return;
    }
    connection_.readAll();
    QList<QByteArray> parts = message.split(kEndOfPath);
    if (parts.constFirst().startsWith(hand_over::kActivation)) {
        activation_ = parts.takeFirst().mid(1).toStdString();
    }
    for (const QByteArray& path : parts) {
        if (!path.isEmpty()) {
            paths_.push_back(path.toStdString());
        }
    }
    isOffered_ = true;
    answerOffer();
}

void IncomingFiles::answerOffer() {
    say(hand_over::kHeard);
    signOfLife_.start(kSignOfLifeInterval);
    receiver_.whenDecided([self = QPointer<IncomingFiles>(this)](bool mayOpen) {
        if (!self) {
            return;
        }
        self->signOfLife_.stop();
        if (mayOpen) {
            self->say(hand_over::kReady);
        } else {
            self->connection_.abort();
        }
    });
}

void IncomingFiles::take() {
    const QPointer<IncomingFiles> self(this);
    const bool isTaken = !isTakenBack() && receiver_.receive(paths_, activation_);
    // Opening files may have let other events come in between.
    if (!self) {
        return;
    }
    if (isTaken) {
        say(hand_over::kTaken);
    } else {
        connection_.abort();
    }
}

void IncomingFiles::say(char word) {
    connection_.putChar(word);
    connection_.flush();
}

// Whether the other program has hung up, which the toolkit tells only later.
bool IncomingFiles::isTakenBack() const {
    pollfd state{
        .fd = static_cast<int>(connection_.socketDescriptor()), .events = POLLRDHUP, .revents = 0};
    return connection_.state() != QLocalSocket::ConnectedState || poll(&state, 1, 0) != 0;
}

}  // namespace vornic
