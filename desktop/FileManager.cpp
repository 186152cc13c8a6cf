#include "desktop/FileManager.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QStringList>
#include <utility>

namespace vornic {

namespace {

constexpr int kLongestAnswerMilliseconds = 5000;

// A path holds any bytes, which only an address that spells them can carry (RFC 8089).
QString addressOf(const std::string& path) {
    return QStringLiteral("file://") +
           QString::fromLatin1(QByteArray::fromStdString(path).toPercentEncoding("/"));
}

}  // namespace

void revealInFileManager(const std::string& path, QObject* owner, std::function<void()> unable,
                         const QDBusConnection& bus) {
    if (!bus.isConnected()) {
        unable();
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList(addressOf(path)) << QString();
    auto* const watcher =
        new QDBusPendingCallWatcher(bus.asyncCall(call, kLongestAnswerMilliseconds), owner);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, owner,
                     [watcher, unable = std::move(unable)] {
                         watcher->deleteLater();
                         if (watcher->isError()) {
                             unable();
                         }
                     });
}

}  // namespace vornic
