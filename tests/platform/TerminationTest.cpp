#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/Termination.h"
#include "tests/support/ChildProcess.h"

namespace vornic::platform {
namespace {

TEST(TerminationTest, callsObserversInTheOrderOfRegistration) {
    std::vector<int> called;
    const std::size_t first = addWillTerminateObserver([&] { called.push_back(1); });
    const std::size_t second = addWillTerminateObserver([&] { called.push_back(2); });
    const std::size_t third = addWillTerminateObserver([&] { called.push_back(3); });
    EXPECT_NE(first, second);
    removeWillTerminateObserver(second);
    removeWillTerminateObserver(12345);
    postWillTerminate();
    EXPECT_EQ(called, (std::vector<int>{1, 3}));
    removeWillTerminateObserver(first);
    removeWillTerminateObserver(third);
    postWillTerminate();
    EXPECT_EQ(called.size(), 2U);
}

TEST(TerminationTest, letsAnObserverRemoveItselfAndOthers) {
    std::vector<int> called;
    std::size_t second = 0;
    std::size_t first = 0;
    first = addWillTerminateObserver([&] {
        called.push_back(1);
        removeWillTerminateObserver(first);
        removeWillTerminateObserver(second);
    });
    second = addWillTerminateObserver([&] { called.push_back(2); });
    postWillTerminate();
    EXPECT_EQ(called, (std::vector<int>{1}));
}

TEST(TerminationTest, takesRegistrationsFromAnyThread) {
    std::atomic<int> called{0};
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&called] {
            for (int count = 0; count < 100; ++count) {
                removeWillTerminateObserver(addWillTerminateObserver([&called] { ++called; }));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    postWillTerminate();
    EXPECT_EQ(called, 0);
}

TEST(TerminationTest, notesTheFirstSignalAndGoesOn) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        EXPECT_TRUE(test::passesInChild([number] {
            std::signal(number, SIG_DFL);
            EXPECT_EQ(interruption(), 0);
            EXPECT_EQ(interruptionFlag()->load(), 0);
            catchInterruptions();
            errno = ENOENT;
            raise(number);
            EXPECT_EQ(errno, ENOENT);
            EXPECT_EQ(interruption(), number);
            EXPECT_EQ(interruptionFlag()->load(), number);
        })) << number;
    }
}

TEST(TerminationTest, endsAtOnceOnTheSecondSignal) {
    for (const int second : {SIGINT, SIGTERM}) {
        const int status = test::ChildProcess([second] {
                               std::signal(SIGINT, SIG_DFL);
                               std::signal(SIGTERM, SIG_DFL);
                               catchInterruptions();
                               raise(SIGINT);
                               raise(second);
                               // Not reached.
                               _exit(0);
                           }).wait();
        ASSERT_TRUE(WIFSIGNALED(status)) << status;
        EXPECT_EQ(WTERMSIG(status), second);
    }
}

TEST(TerminationTest, letsSystemCallsReturnEarly) {
    EXPECT_TRUE(test::passesInChild([] {
        std::signal(SIGTERM, SIG_DFL);
        catchInterruptions();
        std::array<int, 2> ends{};
        ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
        const pid_t self = getpid();
        // A process of its own, so that only the reading thread can take the signal.
        test::ChildProcess sender([self] {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            kill(self, SIGTERM);
        });
        char byte = 0;
        EXPECT_EQ(read(ends[0], &byte, 1), -1);
        EXPECT_EQ(errno, EINTR);
        EXPECT_EQ(interruption(), SIGTERM);
    }));
}

TEST(TerminationTest, leavesASignalIgnoredThatTheStarterIgnores) {
    EXPECT_TRUE(test::passesInChild([] {
        std::signal(SIGHUP, SIG_IGN);
        catchInterruptions();
        raise(SIGHUP);
        raise(SIGHUP);
        EXPECT_EQ(interruption(), 0);
    }));
}

}  // namespace
}  // namespace vornic::platform
