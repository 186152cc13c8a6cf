// A double for a machine without memory: from a moment on, blocks are refused.

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <limits>
#include <new>
#include <span>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <unistd.h>

#include "foundation/log/LogQueue.h"
#include "tests/foundation/log/LogTest.h"

namespace {

constexpr int kEnough = std::numeric_limits<int>::max();

// So many blocks more are granted; never fewer than none. NOLINTNEXTLINE
std::atomic<int> grants = kEnough;

bool isGranted() {
    int left = grants;
    while (left != kEnough && left > 0 && !grants.compare_exchange_weak(left, left - 1)) {
    }
    return left > 0;
}

}  // namespace

void* operator new(std::size_t size) {
    void* memory = isGranted() ? std::malloc(size) : nullptr;
    return memory != nullptr ? memory : throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

namespace vornic {
namespace {

using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

/// What hangs is ended by the alarm.
constexpr unsigned kSecondsForAChild = 20;

constexpr const char* kText = "a text that is too long to be kept inside of a string object";

TEST(LogQueueMemory, isWantedForATextAndNothingElse) {
    std::vector<std::string> written;
    LogQueue queue([&written](std::span<const LogQueue::Entry> entries) {
        const int left = grants.exchange(kEnough);
        written.emplace_back(entries.front().text);
        grants = left;
        return std::size_t{1};
    });
    EXPECT_TRUE(queue.add("a", 1, false));
    queue.finish();
    EXPECT_TRUE(queue.add("b", 1, false));
    grants = 0;
    const bool isAdded = queue.add(kText, 60, true);
    queue.wake();
    queue.finish();
    const std::size_t left = queue.count();
    grants = kEnough;
    EXPECT_FALSE(isAdded);
    EXPECT_EQ(left, 0U);
    EXPECT_TRUE(queue.add("c", 1, false));
    queue.finish();
    EXPECT_THAT(written, ElementsAre("a", "b", "c"));
    queue.close();
}

TEST(LogQueueMemory, mayRunOutInTheWriterAndNobodyWaitsForEver) {
    int calls = 0;
    LogQueue queue([&calls](std::span<const LogQueue::Entry> entries) {
        ++calls;
        return entries.front().text == "b" ? throw std::bad_alloc() : std::size_t{1};
    });
    for (const char* text : {"a", "b", "c"}) {
        queue.add(text, 1, false);
    }
    queue.finish();
    EXPECT_EQ(queue.count(), 0U);
    EXPECT_FALSE(queue.isWriter());
    queue.add("d", 1, true);
    queue.finish();
    EXPECT_EQ(calls, 4);
    queue.close();
}

/// Lets an exception out of a function that promises that there is none: nobody catches it.
void throwUncaught(const std::exception_ptr& exception) noexcept {
    std::rethrow_exception(exception);
}

class LogMemoryTest : public test::LogTest {
  protected:
    /// Runs a function in a child that is granted so many blocks, then all it wants once more.
    [[nodiscard]] test::ChildOutcome withGrants(int count,
                                                const std::function<void()>& function) const {
        return inChild([&] {
            alarm(kSecondsForAChild);
            QMLog::createNewLog();
            QMLog::fastAppendLog("before");
            QMLog::finishWriting();
            grants = count;
            function();
            grants = kEnough;
            QMLog::appendLog("after");
            QMLog::finishWriting();
        });
    }
    void expectToGoOn(const std::function<void()>& function) {
        for (int count = 0; count < 40; ++count) {
            SCOPED_TRACE(count);
            std::filesystem::remove_all(logFolder());
            EXPECT_EQ(withGrants(count, function).status, 0);
            const std::vector<std::string> all = entries();
            ASSERT_FALSE(all.empty());
            EXPECT_EQ(all.back(), "after");
        }
    }
};

TEST_F(LogMemoryTest, mayRunOutWhileTheMainThreadLogs) {
    expectToGoOn([] {
        QMLog::appendLog("%@ %li", kText, 1);
        QMLog::fastAppendLog("%@ 100%", kText);
        QMLog::appendLogAndDebugPrint("%@", kText);
        QMLog::finishWriting();
        QMLog::appendLogAndPrint("%@", kText);
        QMLog::finishWriting();
    });
}

TEST_F(LogMemoryTest, mayRunOutWhileAnotherThreadLogs) {
    // The thread is there before the memory is not.
    expectToGoOn([] {
        const int count = grants.exchange(kEnough);
        std::atomic<bool> isScarce = false;
        std::thread other([&isScarce] {
            while (!isScarce) {
                std::this_thread::yield();
            }
            QMLog::appendLog("short");
            QMLog::appendLog("%@%@%@", kText, kText, kText);
            QMLog::finishWriting();
        });
        grants = count;
        isScarce = true;
        other.join();
    });
}

TEST_F(LogMemoryTest, mayRunOutWhileAGenerationIsStarted) {
    expectToGoOn([] { QMLog::createNewLog("name"); });
}

TEST_F(LogMemoryTest, reportsThatATextIsLost) {
    const test::ChildOutcome outcome = withGrants(0, [] { QMLog::appendLog("%@", kText); });
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "Exception writing to log: Not enough memory.\n");
    EXPECT_THAT(entries(), ElementsAre("before", "after"));
}

TEST_F(LogMemoryTest, mayHaveRunOutWhenAnExceptionEndsTheProgram) {
    for (int count = 0; count < 20; ++count) {
        SCOPED_TRACE(count);
        const test::ChildOutcome outcome = withGrants(kEnough, [count] {
            const std::exception_ptr exception = std::make_exception_ptr(std::runtime_error(kText));
            grants = count;
            throwUncaught(exception);
        });
        EXPECT_EQ(outcome.status, -SIGABRT);
        EXPECT_THAT(outcome.output + outcome.errors, AnyOf(HasSubstr(kText), HasSubstr("memory")));
    }
}

}  // namespace
}  // namespace vornic
