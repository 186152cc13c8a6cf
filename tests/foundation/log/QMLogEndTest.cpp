#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/prctl.h>
#include <unistd.h>

#include "foundation/log/QMLog.h"
#include "platform/processes/Termination.h"
#include "tests/foundation/log/LogTest.h"

namespace vornic {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class QMLogEndTest : public test::LogTest {};

TEST_F(QMLogEndTest, writesWhatIsQueuedWhenTheApplicationEnds) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        QMLog::sharedController().setAppName("Stored");
        QMLog::finishWriting();
        QMLog::fastAppendLog("last");
        platform::postWillTerminate();
        EXPECT_EQ(QMLog::sharedController().appName(), "Vornic");
        EXPECT_FALSE(QMLog::sharedController().hasFileHandle());
    });
    EXPECT_THAT(entries(), ElementsAre("last"));
    EXPECT_EQ(outcome.output, "");
}

TEST_F(QMLogEndTest, hearsOfOneEndOnly) {
    static_cast<void>(inChild([] {
        QMLog::createNewLog();
        QMLog::willTerminate();
        QMLog::sharedController().setAppName("Later");
        platform::postWillTerminate();
        EXPECT_EQ(QMLog::sharedController().appName(), "Later");
    }));
}

TEST_F(QMLogEndTest, dropsWhatIsLoggedAfterTheEnd) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        platform::postWillTerminate();
        QMLog::appendLog("dropped");
        std::thread([] { QMLog::appendLog("dropped"); }).join();
        QMLog::finishWriting();
        EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 14U);
        QMLog::willTerminate();
    });
    EXPECT_THAT(entries(), IsEmpty());
    EXPECT_EQ(outcome.output, "");
}

/// Gives root's rights up for good: with a way back to them a leak check at exit may not look at
/// its own process.
void giveRootUp() {
    ASSERT_EQ(setresgid(getgid(), getgid(), getgid()), 0);
    ASSERT_EQ(setresuid(getuid(), getuid(), getuid()), 0);
    ASSERT_EQ(prctl(PR_SET_DUMPABLE, 1, 0, 0, 0), 0);
}

TEST_F(QMLogEndTest, endsWithTheProcessWithoutBeingToldSo) {
    for (int i = 0; i < 20; ++i) {
        const test::ChildOutcome outcome = inChild([i] {
            giveRootUp();
            QMLog::createNewLog();
            for (int line = 0; line < i * 100; ++line) {
                QMLog::fastAppendLog("line %li", line);
            }
            std::exit(0);
        });
        ASSERT_EQ(outcome.status, 0) << outcome.errors;
    }
}

/// The threads of this process.
std::ptrdiff_t threadCount() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

TEST_F(QMLogEndTest, leavesNoThreadBehindTheEnd) {
    static_cast<void>(inChild([] {
        // A sanitizer starts a thread of its own with the first one of the program.
        std::thread([] {}).join();
        const std::ptrdiff_t before = threadCount();
        QMLog::createNewLog();
        QMLog::fastAppendLog("wakes the worker");
        QMLog::finishWriting();
        QMLog::willTerminate();
        // The thread itself may need a moment more than its last step.
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (threadCount() > before && std::chrono::steady_clock::now() < end) {
            std::this_thread::yield();
        }
        EXPECT_EQ(threadCount(), before);
    }));
}

TEST_F(QMLogEndTest, keepsItsFileFromProgramsThatAreStarted) {
    static_cast<void>(inChild([this] {
        QMLog::createNewLog();
        bool isFound = false;
        for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
            std::error_code ignored;
            if (std::filesystem::read_symlink(entry.path(), ignored) == generation(1)) {
                isFound = true;
                const int descriptor = std::stoi(entry.path().filename().string());
                EXPECT_EQ(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
            }
        }
        EXPECT_TRUE(isFound);
    }));
}

}  // namespace
}  // namespace vornic
