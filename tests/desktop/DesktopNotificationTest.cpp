#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <optional>

#include "desktop/DesktopNotification.h"
#include "tests/desktop/PortalTest.h"

namespace vornic::test {
namespace {

// The notifications of a desktop.
class FakeNotifications : public QDBusVirtualObject {
  public:
    explicit FakeNotifications(QDBusConnection bus) : bus_(std::move(bus)) {
        bus_.registerVirtualObject(QStringLiteral("/org/freedesktop/Notifications"), this);
        bus_.registerService(QStringLiteral("org.freedesktop.Notifications"));
    }
    ~FakeNotifications() override {
        bus_.unregisterObject(QStringLiteral("/org/freedesktop/Notifications"));
    }
    FakeNotifications(const FakeNotifications&) = delete;
    FakeNotifications& operator=(const FakeNotifications&) = delete;

    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        shown = message;
        return connection.send(message.createReply(QVariant(1U)));
    }

    std::optional<QDBusMessage> shown;

  private:
    QDBusConnection bus_;
};

class DesktopNotificationTest : public PortalTest {};

TEST_F(DesktopNotificationTest, asksTheDesktopToShowIt) {
    const FakeNotifications desktop(connection("desktop"));
    notifyDesktop(connection("program"), QStringLiteral("The batch has ended"),
                  QStringLiteral("2 files checked: 1 <b>sound</b> & more."));
    ASSERT_TRUE(waitUntil([&] { return desktop.shown.has_value(); }));
    EXPECT_EQ(desktop.shown->member(), QStringLiteral("Notify"));
    EXPECT_EQ(desktop.shown->signature(), QStringLiteral("susssasa{sv}i"));
    const QVariantList arguments = desktop.shown->arguments();
    EXPECT_EQ(arguments.at(3).toString(), QStringLiteral("The batch has ended"));
    EXPECT_EQ(arguments.at(4).toString(),
              QStringLiteral("2 files checked: 1 &lt;b&gt;sound&lt;/b&gt; &amp; more."));
}

}  // namespace
}  // namespace vornic::test
