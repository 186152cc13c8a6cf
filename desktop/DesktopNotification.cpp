#include "desktop/DesktopNotification.h"

#include <QDBusMessage>
#include <QVariantMap>

namespace vornic {

void notifyDesktop(const std::optional<QDBusConnection>& bus, const QString& title,
                   const QString& text) {
    if (!bus) {
        return;
    }
    QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"),
        QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    const QVariantMap hints{
        {QStringLiteral("desktop-entry"), QStringLiteral("com.quillmark.Vornic")}};
    constexpr uint kNew = 0;
    constexpr int kAsTheDesktopLikes = -1;
    message << QStringLiteral("Vornic") << kNew << QStringLiteral("com.quillmark.Vornic") << title
            << text.toHtmlEscaped() << QStringList() << hints << kAsTheDesktopLikes;
    bus->send(message);
}

}  // namespace vornic
