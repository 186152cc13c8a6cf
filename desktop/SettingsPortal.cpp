#include "desktop/SettingsPortal.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QFile>
#include <utility>

namespace vornic {

namespace {

constexpr uint kDark = 1;
constexpr uint kLight = 2;

QString service() {
    return QStringLiteral("org.freedesktop.portal.Desktop");
}

QString object() {
    return QStringLiteral("/org/freedesktop/portal/desktop");
}

QString interface() {
    return QStringLiteral("org.freedesktop.portal.Settings");
}

QString appearance() {
    return QStringLiteral("org.freedesktop.appearance");
}

QString colorScheme() {
    return QStringLiteral("color-scheme");
}

}  // namespace

SettingsPortal::SettingsPortal(const QDBusConnection& bus, Listener listener)
    : listener_(std::move(listener)) {
    QDBusConnection connection = bus;
    connection.connect(service(), object(), interface(), QStringLiteral("SettingChanged"), this,
                       SLOT(settingChanged(QDBusMessage)));
    QDBusMessage question =
        QDBusMessage::createMethodCall(service(), object(), interface(), QStringLiteral("Read"));
    question << appearance() << colorScheme();
    auto* const answer = new QDBusPendingCallWatcher(connection.asyncCall(question), this);
    QObject::connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        if (reply.isValid()) {
            tell(reply.value().variant());
        }
        answer->deleteLater();
    });
}

std::optional<QDBusConnection> SettingsPortal::sessionBus() {
    const bool isThere =
        !qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") ||
        QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus"));
    return isThere ? std::optional(QDBusConnection::sessionBus()) : std::nullopt;
}

void SettingsPortal::settingChanged(const QDBusMessage& news) {
    const QVariantList arguments = news.arguments();
    if (arguments.size() == 3 && arguments[0] == appearance() && arguments[1] == colorScheme()) {
        tell(arguments[2]);
    }
}

void SettingsPortal::tell(const QVariant& value) {
    QVariant scheme = value;
    // How often it is packed depends on the way that it came.
    while (scheme.metaType() == QMetaType::fromType<QDBusVariant>()) {
        scheme = scheme.value<QDBusVariant>().variant();
    }
    switch (scheme.toUInt()) {
        case kDark:
            listener_(ColorScheme::dark);
            break;
        case kLight:
            listener_(ColorScheme::light);
            break;
        default:
            listener_(std::nullopt);
    }
}

}  // namespace vornic
