#ifndef VORNIC_TESTS_DESKTOP_PORTAL_TEST_H
#define VORNIC_TESTS_DESKTOP_PORTAL_TEST_H

#include <QDBusConnection>

#include "tests/desktop/DesktopTest.h"
#include "tests/desktop/FakePortal.h"
#include "tests/support/machine/SessionBus.h"

namespace vornic::test {

/// Tests with a message bus of their own.
class PortalTest : public DesktopTest {
  protected:
    void SetUp() override {
        if (daemon.address().empty()) {
            GTEST_SKIP() << "needs dbus-daemon";
        }
    }
    ~PortalTest() override {
        QDBusConnection::disconnectFromBus(QStringLiteral("desktop"));
        QDBusConnection::disconnectFromBus(QStringLiteral("program"));
    }

    /// A connection of its own for each name.
    [[nodiscard]] QDBusConnection connection(const char* name) const {
        return QDBusConnection::connectToBus(QString::fromStdString(daemon.address()),
                                             QString::fromLatin1(name));
    }

    SessionBus daemon{sandbox.folder()};
};

}  // namespace vornic::test

#endif
