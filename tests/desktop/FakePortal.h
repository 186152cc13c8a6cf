#ifndef VORNIC_TESTS_DESKTOP_FAKE_PORTAL_H
#define VORNIC_TESTS_DESKTOP_FAKE_PORTAL_H

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>

namespace vornic::test {

/// The settings service of a desktop, with one setting.
class FakePortal : public QDBusVirtualObject {
  public:
    FakePortal(QDBusConnection bus, uint scheme) : bus_(std::move(bus)), scheme_(scheme) {
        bus_.registerVirtualObject(QStringLiteral("/org/freedesktop/portal/desktop"), this);
        bus_.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
    }
    ~FakePortal() override {
        bus_.unregisterObject(QStringLiteral("/org/freedesktop/portal/desktop"));
    }
    FakePortal(const FakePortal&) = delete;
    FakePortal& operator=(const FakePortal&) = delete;

    /// What the user does in the desktop's settings.
    void choose(const QString& group, const QString& key, uint scheme) {
        QDBusMessage news =
            QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/portal/desktop"),
                                       kInterface, QStringLiteral("SettingChanged"));
        news << group << key << QVariant::fromValue(QDBusVariant(scheme));
        bus_.send(news);
    }
    void choose(uint scheme) { choose(kGroup, kKey, scheme); }

    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        const bool isAsked = message.interface() == kInterface &&
                             message.member() == QLatin1String("Read") &&
                             message.arguments() == QVariantList{kGroup, kKey};
        if (!isAsked) {
            return false;
        }
        const QDBusVariant inner(scheme_);
        return connection.send(
            message.createReply(QVariant::fromValue(QDBusVariant(QVariant::fromValue(inner)))));
    }

  private:
    inline static const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");
    inline static const QString kGroup = QStringLiteral("org.freedesktop.appearance");
    inline static const QString kKey = QStringLiteral("color-scheme");

    QDBusConnection bus_;
    uint scheme_;
};

}  // namespace vornic::test

#endif
