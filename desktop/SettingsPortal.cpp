#include "desktop/SettingsPortal.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
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
    // Must be written as the toolkit itself would write it.
    const QByteArray slot =
        QMetaObject::normalizedSignature(SLOT(settingChanged(QString, QString, QDBusVariant)));
    connection.connect(service(), object(), interface(), QStringLiteral("SettingChanged"), this,
                       slot.constData());
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

void SettingsPortal::settingChanged(const QString& group, const QString& key,
                                    const QDBusVariant& value) {
    if (group == appearance() && key == colorScheme()) {
        tell(value.variant());
    }
}

void SettingsPortal::tell(const QVariant& value) {
    QVariant scheme = value;
    // The answer is packed once more than the news is.
    if (scheme.canConvert<QDBusVariant>()) {
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
