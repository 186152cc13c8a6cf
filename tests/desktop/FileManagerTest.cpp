#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QTest>
#include <memory>
#include <string>

#include "desktop/FileManager.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/support/programs/ProgramRunner.h"

// File managers on a message bus of the test's own.

namespace vornic::test {
namespace {

constexpr const char* kBus = "/usr/bin/dbus-daemon";

// A file manager that keeps the addresses that it is asked to show.
class FileManager : public QDBusVirtualObject {
  public:
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        asked = message.member() + u' ' + message.arguments().first().toStringList().join(u' ');
        return connection.send(message.createReply());
    }
    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return QString(); }

    QString asked;
};

class FileManagerTest : public DesktopTest {
  protected:
    FileManagerTest() {
        if (!exists(kBus)) {
            return;
        }
        const std::string address = "unix:path=" + sandbox.path("bus");
        daemon = std::make_unique<RunningProgram>(
            ProgramSettings{.program = kBus,
                            .arguments = {"--session", "--nofork", "--nopidfile",
                                          "--address=" + address, "--print-address"},
                            .environment = {"HOME=" + sandbox.home(), "PATH=/usr/bin:/bin"}});
        EXPECT_TRUE(daemon->readUntil("unix:path="));
        bus = std::make_unique<QDBusConnection>(QDBusConnection::connectToBus(
            QString::fromStdString(address), QStringLiteral("file manager test")));
    }
    ~FileManagerTest() override {
        QDBusConnection::disconnectFromBus(QStringLiteral("file manager test"));
    }
    void SetUp() override {
        if (!bus) {
            GTEST_SKIP() << "needs dbus-daemon";
        }
        ASSERT_TRUE(bus->isConnected());
    }

    std::unique_ptr<RunningProgram> daemon;
    std::unique_ptr<QDBusConnection> bus;
    QObject owner;
    bool isUnable = false;
};

TEST_F(FileManagerTest, asksForTheFileWhateverItsBytes) {
    FileManager manager;
    ASSERT_TRUE(
        bus->registerVirtualObject(QStringLiteral("/org/freedesktop/FileManager1"), &manager));
    ASSERT_TRUE(bus->registerService(QStringLiteral("org.freedesktop.FileManager1")));
    revealInFileManager(
        "/My cuts/a\xff#.xml", &owner, [this] { isUnable = true; }, *bus);
    ASSERT_TRUE(waitUntil([&manager] { return !manager.asked.isEmpty(); }));
    EXPECT_EQ(manager.asked, QStringLiteral("ShowItems file:///My%20cuts/a%FF%23.xml"));
    QTest::qWait(50);
    EXPECT_FALSE(isUnable);
}

TEST_F(FileManagerTest, reportsThatThereIsNone) {
    revealInFileManager(
        "/a.xml", &owner, [this] { isUnable = true; }, *bus);
    EXPECT_TRUE(waitUntil([this] { return isUnable; }));
}

TEST_F(FileManagerTest, reportsThatThereIsNoBus) {
    revealInFileManager(
        "/a.xml", &owner, [this] { isUnable = true; }, QDBusConnection(QStringLiteral("none")));
    EXPECT_TRUE(isUnable);
}

}  // namespace
}  // namespace vornic::test
