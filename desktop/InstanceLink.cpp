#include "desktop/InstanceLink.h"

#include <QCryptographicHash>
#include <algorithm>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "desktop/HandOverProtocol.h"
#include "desktop/QtText.h"
#include "foundation/places/QMLocalPaths.h"

namespace vornic {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPause{50};
constexpr int kLongestQueue = 256;

int millisecondsUntil(Clock::time_point end) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
}

// What the desktop gave this start, so that what was started may take the keyboard.
QByteArray ownActivation() {
    const QByteArray token = qgetenv("XDG_ACTIVATION_TOKEN");
    return token.isEmpty() ? qgetenv("DESKTOP_STARTUP_ID") : token;
}

}  // namespace

InstanceLink::InstanceLink(std::string folder) : InstanceLink(std::move(folder), Patience()) {}

InstanceLink::InstanceLink(std::string folder, Patience patience)
    : folder_(std::move(folder)), patience_(patience) {}

std::string InstanceLink::folderFor(std::string_view display) {
    // A socket's path is short, and a display's name may be a path itself.
    constexpr int kDigits = 12;
    const QByteArray digest =
        QCryptographicHash::hash(QByteArray(display.data(), static_cast<qsizetype>(display.size())),
                                 QCryptographicHash::Sha256);
    return QMLocalPaths::tempDirectory() + "/vornic-" + std::to_string(getuid()) + "-" +
           digest.toHex().left(kDigits).toStdString();
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
    auto end = Clock::now() + patience_.forASign;
    while (!lock()) {
        const Answer answer = send(paths, end);
        if (answer == Answer::taken) {
            return true;
        }
        if (answer == Answer::notTaken) {
            // It has hung up: it is ending, and lets go of the lock as it does.
            end = Clock::now() + patience_.forASign;
        } else if (Clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(kPause);
    }
    return false;
}

InstanceLink::Answer InstanceLink::send(const Paths& paths, Clock::time_point end) const {
    QLocalSocket socket;
    socket.connectToServer(pathToQString(socketPath()));
    if (!socket.waitForConnected(millisecondsUntil(end))) {
        return Answer::none;
    }
    QByteArray message;
    if (const QByteArray activation = ownActivation(); !activation.isEmpty()) {
        message.append(hand_over::kActivation);
        message.append(activation);
        message.append(hand_over::kEndOfPath);
    }
    for (const std::string& path : paths) {
        message.append(path.c_str(), static_cast<qsizetype>(path.size()));
        message.append(hand_over::kEndOfPath);
    }
    message.append(hand_over::kEndOfPath);
    socket.write(message);
    while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(millisecondsUntil(end))) {
    }
    return awaitAnswer(socket, end);
}

// Hangs up, which takes the files back, when nothing is heard for too long.
InstanceLink::Answer InstanceLink::awaitAnswer(QLocalSocket& socket, Clock::time_point end) const {
    Answer answer = Answer::none;
    bool isCommitted = false;
    char word = 0;
    while (socket.bytesAvailable() > 0 || socket.waitForReadyRead(millisecondsUntil(end))) {
        if (socket.read(&word, 1) != 1) {
            break;
        }
        if (word == hand_over::kTaken) {
            return Answer::taken;
        }
        answer = Answer::notTaken;
        end = Clock::now() + (isCommitted ? patience_.forTheEnd : patience_.forASign);
        if (word == hand_over::kReady && !isCommitted) {
            isCommitted = true;
            end = Clock::now() + patience_.forTheEnd;
            socket.putChar(hand_over::kCommit);
            socket.flush();
        }
    }
    const bool isSilent = socket.state() == QLocalSocket::ConnectedState;
    return isSilent ? Answer::none : answer;
}

void InstanceLink::listen(FileReceiver& receiver) {
    if (!lock_) {
        return;
    }
    const QString path = pathToQString(socketPath());
    // Left behind by a program that was killed: the lock says that nobody listens there.
    QLocalServer::removeServer(path);
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    server_.setListenBacklogSize(kLongestQueue);
    QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this, &receiver] {
        while (QLocalSocket* const connection = server_.nextPendingConnection()) {
            new IncomingFiles(connection, receiver);  // which the connection owns
        }
    });
    server_.listen(path);
}

void InstanceLink::stop() {
    server_.close();
    for (QLocalSocket* const connection : server_.findChildren<QLocalSocket*>()) {
        connection->abort();
    }
    static_cast<void>(lock_.close());
}

}  // namespace vornic
