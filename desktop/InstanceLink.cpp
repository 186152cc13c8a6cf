#include "desktop/InstanceLink.h"

#include <QLocalSocket>
#include <chrono>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "desktop/QtText.h"
#include "foundation/QMLocalPaths.h"

namespace vornic {

namespace {

// How long a start waits for the program that holds the lock, which may be starting itself.
constexpr std::chrono::seconds kLongestWait{5};
constexpr std::chrono::milliseconds kPause{50};
constexpr int kAnswerMilliseconds = 2000;
// More than a command line can hold.
constexpr qint64 kLongestMessage = qint64{8} * 1024 * 1024;
constexpr char kTaken = '+';
// What ends a message; a path holds no NUL byte and is never empty.
constexpr char kEnd = '\0';

}  // namespace

std::string InstanceLink::defaultFolder() {
    return QMLocalPaths::tempDirectory() + "/vornic-" + std::to_string(getuid());
}

bool InstanceLink::makeFolder() const {
    struct stat status {};
    static_cast<void>(mkdir(folder_.c_str(), S_IRWXU));
    return lstat(folder_.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == getuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

bool InstanceLink::lock() {
    platform::FileDescriptor file(open(
        (folder_ + "/lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
    if (!file || flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        return false;
    }
    lock_ = std::move(file);
    return true;
}

bool InstanceLink::handOver(const Paths& paths) {
    if (!makeFolder()) {
        return false;
    }
    const auto deadline = std::chrono::steady_clock::now() + kLongestWait;
    while (!lock()) {
        if (send(paths)) {
            return true;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(kPause);
    }
    return false;
}

bool InstanceLink::send(const Paths& paths) const {
    QLocalSocket socket;
    socket.connectToServer(pathToQString(socketPath()));
    if (!socket.waitForConnected(kAnswerMilliseconds)) {
        return false;
    }
    QByteArray message;
    for (const std::string& path : paths) {
        message.append(path.c_str(), static_cast<qsizetype>(path.size()));
        message.append('\0');
    }
    message.append(kEnd);
    socket.write(message);
    while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(kAnswerMilliseconds)) {
    }
    char answer = 0;
    return socket.waitForReadyRead(kAnswerMilliseconds) && socket.read(&answer, 1) == 1 &&
           answer == kTaken;
}

void InstanceLink::listen(std::function<void(const Paths&)> receive) {
    if (!lock_) {
        return;
    }
    receive_ = std::move(receive);
    const QString path = pathToQString(socketPath());
    // Left behind by a program that was killed: the lock says that nobody listens there.
    QLocalServer::removeServer(path);
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] {
        while (QLocalSocket* const socket = server_.nextPendingConnection()) {
            QObject::connect(socket, &QLocalSocket::readyRead, &server_,
                             [this, socket] { receiveFrom(socket); });
            QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        }
    });
    server_.listen(path);
}

void InstanceLink::receiveFrom(QLocalSocket* socket) {
    if (socket->bytesAvailable() > kLongestMessage) {
        socket->abort();
        return;
    }
    const QByteArray message = socket->peek(socket->bytesAvailable());
    const bool isWhole = message == QByteArray(1, kEnd) || message.endsWith(QByteArray(2, kEnd));
    if (!isWhole) {
        return;
    }
    Paths paths;
    for (const QByteArray& path : message.split('\0')) {
        if (!path.isEmpty()) {
            paths.push_back(path.toStdString());
        }
    }
    socket->readAll();
    socket->putChar(kTaken);
    socket->flush();
    receive_(paths);
}

}  // namespace vornic
