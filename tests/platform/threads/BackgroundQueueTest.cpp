#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/syscall.h>

#include "platform/threads/BackgroundQueue.h"
#include "platform/threads/Thread.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic::platform {
namespace {

/// Holds functions up until it is opened, and counts those that wait.
class Gate {
  public:
    void pass() {
        std::unique_lock lock(mutex_);
        ++waiting_;
        changed_.notify_all();
        changed_.wait(lock, [this] { return open_; });
    }
    /// @return false when so many did not come in time.
    bool awaits(std::size_t count, std::chrono::milliseconds limit = std::chrono::seconds(20)) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, limit, [&] { return waiting_ >= count; });
    }
    void open() {
        const std::lock_guard lock(mutex_);
        open_ = true;
        changed_.notify_all();
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t waiting_ = 0;
    bool open_ = false;
};

void waitForAll() {
    EXPECT_TRUE(joinDetachedThreads(std::chrono::seconds(30)));
}

TEST(BackgroundQueueTest, runsFunctionsOnAnotherThread) {
    std::thread::id thread;
    BackgroundQueue::perform([&] { thread = std::this_thread::get_id(); });
    waitForAll();
    EXPECT_NE(thread, std::thread::id());
    EXPECT_NE(thread, std::this_thread::get_id());
}

TEST(BackgroundQueueTest, returnsBeforeTheFunctionHasRunAndRunsOthersMeanwhile) {
    Gate gate;
    BackgroundQueue::perform([&] { gate.pass(); });
    BackgroundQueue::perform([&] { gate.pass(); });
    EXPECT_TRUE(gate.awaits(2));
    gate.open();
    waitForAll();
}

TEST(BackgroundQueueTest, letsNoMoreThanItsThreadsRunAndTheRestWait) {
    Gate gate;
    std::atomic<std::size_t> done = 0;
    constexpr std::size_t kFunctions = BackgroundQueue::kMostThreads + 5;
    for (std::size_t index = 0; index < kFunctions; ++index) {
        BackgroundQueue::perform([&] {
            gate.pass();
            ++done;
        });
    }
    EXPECT_TRUE(gate.awaits(BackgroundQueue::kMostThreads));
    EXPECT_FALSE(gate.awaits(BackgroundQueue::kMostThreads + 1, std::chrono::milliseconds(50)));
    gate.open();
    waitForAll();
    EXPECT_EQ(done, kFunctions);
}

TEST(BackgroundQueueTest, takesFunctionsFromManyThreads) {
    std::atomic<int> done = 0;
    std::vector<std::thread> callers;
    for (int caller = 0; caller < 4; ++caller) {
        callers.emplace_back([&] {
            for (int count = 0; count < 200; ++count) {
                BackgroundQueue::perform([&] { ++done; });
            }
        });
    }
    for (std::thread& caller : callers) {
        caller.join();
    }
    waitForAll();
    EXPECT_EQ(done, 800);
}

TEST(BackgroundQueueTest, runsFunctionsInPlaceWhereNoThreadCanBeHad) {
    EXPECT_TRUE(test::passesInChild([] {
        ASSERT_TRUE(test::failSystemCall(SYS_clone3, EAGAIN));
        ASSERT_TRUE(test::failSystemCall(SYS_clone, EAGAIN));
        std::thread::id thread;
        BackgroundQueue::perform([&] { thread = std::this_thread::get_id(); });
        EXPECT_EQ(thread, std::this_thread::get_id());
        BackgroundQueue::perform([&] { thread = std::thread::id(); });
        EXPECT_EQ(thread, std::thread::id());
    }));
}

}  // namespace
}  // namespace vornic::platform
