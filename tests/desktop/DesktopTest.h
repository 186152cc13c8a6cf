#ifndef VORNIC_TESTS_DESKTOP_DESKTOP_TEST_H
#define VORNIC_TESTS_DESKTOP_DESKTOP_TEST_H

#include <QApplication>
#include <QElapsedTimer>
#include <chrono>
#include <functional>

#include <gtest/gtest.h>

#include "foundation/log/QMLog.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::test {

/// Lets the event loop run until something holds. @return false when it does not within the limit.
inline bool waitUntil(const std::function<bool()>& holds,
                      std::chrono::milliseconds limit = std::chrono::seconds(20)) {
    QElapsedTimer elapsed;
    elapsed.start();
    while (!holds()) {
        if (elapsed.hasExpired(limit.count())) {
            return false;
        }
        QApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
}

/// Waits until nothing of an application is going on any more.
inline void settle() {
    platform::joinDetachedThreads(std::chrono::seconds(20));
    QMLog::finishWriting();
    while (platform::MainThread::dispatchOne(std::chrono::milliseconds(0))) {
    }
}

/// Base class of tests with windows and a home folder of their own.
class DesktopTest : public SandboxTest {
  protected:
    // An application that has ended in a test before ended all waiting for the main thread.
    DesktopTest() { platform::MainThread::restart(); }
};

}  // namespace vornic::test

#endif
