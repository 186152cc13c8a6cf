#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include "platform/processes/Termination.h"
#include "tests/support/machine/Waiting.h"
#include "tests/support/programs/ChildProcess.h"

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
    threads.reserve(4);
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
            ASSERT_NE(std::signal(number, SIG_DFL), SIG_ERR);
            EXPECT_EQ(interruption(), 0);
            EXPECT_EQ(interruptionFlag()->load(), 0);
            catchInterruptions();
            errno = ENOENT;
            EXPECT_EQ(raise(number), 0);
            EXPECT_EQ(errno, ENOENT);
            EXPECT_EQ(interruption(), number);
            EXPECT_EQ(interruptionFlag()->load(), number);
        })) << number;
    }
}

TEST(TerminationTest, wakesWhoeverWaitsForASignal) {
    EXPECT_TRUE(test::passesInChild([] {
        ASSERT_NE(std::signal(SIGTERM, SIG_DFL), SIG_ERR);
        EXPECT_EQ(interruptionDescriptor(), -1);
        catchInterruptions();
        pollfd waited{interruptionDescriptor(), POLLIN, 0};
        ASSERT_GE(waited.fd, 0);
        EXPECT_EQ(poll(&waited, 1, 0), 0);
        EXPECT_EQ(raise(SIGTERM), 0);
        EXPECT_EQ(poll(&waited, 1, 0), 1);
        catchInterruptions();
        EXPECT_EQ(interruptionDescriptor(), waited.fd);
    }));
}

TEST(TerminationTest, endsAtOnceOnTheSecondSignal) {
    for (const int second : {SIGINT, SIGTERM}) {
        const int status = test::ChildProcess([second] {
                               ASSERT_NE(std::signal(SIGINT, SIG_DFL), SIG_ERR);
                               ASSERT_NE(std::signal(SIGTERM, SIG_DFL), SIG_ERR);
                               catchInterruptions();
                               EXPECT_EQ(raise(SIGINT), 0);
                               EXPECT_EQ(raise(second), 0);
                               // Not reached.
                               _exit(0);
                           }).wait();
        ASSERT_TRUE(WIFSIGNALED(status)) << status;
        EXPECT_EQ(WTERMSIG(status), second);
    }
}

TEST(TerminationTest, letsSystemCallsReturnEarly) {
    EXPECT_TRUE(test::passesInChild([] {
        ASSERT_NE(std::signal(SIGTERM, SIG_DFL), SIG_ERR);
        catchInterruptions();
        std::array<int, 2> ends{};
        ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
        const pid_t reader = getpid();
        test::ChildProcess sender([reader] {
            EXPECT_TRUE(test::fallsAsleep(reader));
            kill(reader, SIGTERM);
        });
        char byte = 0;
        EXPECT_EQ(read(ends[0], &byte, 1), -1);
        EXPECT_EQ(errno, EINTR);
        EXPECT_EQ(interruption(), SIGTERM);
    }));
}

TEST(TerminationTest, leavesASignalIgnoredThatTheStarterIgnores) {
    EXPECT_TRUE(test::passesInChild([] {
        ASSERT_NE(std::signal(SIGHUP, SIG_IGN), SIG_ERR);
        catchInterruptions();
        EXPECT_EQ(raise(SIGHUP), 0);
        EXPECT_EQ(raise(SIGHUP), 0);
        EXPECT_EQ(interruption(), 0);
    }));
}

}  // namespace
}  // namespace vornic::platform
