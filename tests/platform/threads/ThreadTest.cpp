#include <atomic>
#include <cerrno>
#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/syscall.h>

#include "base/Exception.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/machine/Waiting.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic::platform {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

class ThreadTest : public ::testing::Test {
  protected:
    void SetUp() override { MainThread::setLoop(nullptr); }
    void TearDown() override { EXPECT_TRUE(joinDetachedThreads(seconds(10))); }
};

TEST_F(ThreadTest, waitsForEveryThread) {
    std::atomic<int> ended{0};
    for (int number = 0; number < 5; ++number) {
        // One ends after the other, the last one while this thread waits for it.
        detachNewThread([&ended, number, waiting = gettid()] {
            EXPECT_TRUE(test::becomesTrue([&] { return ended == number; }));
            EXPECT_TRUE(number < 4 || test::fallsAsleep(waiting));
            ++ended;
        });
    }
    EXPECT_TRUE(joinDetachedThreads(seconds(10)));
    EXPECT_EQ(ended, 5);
}

TEST_F(ThreadTest, hasNothingToWaitForAtFirst) {
    EXPECT_TRUE(joinDetachedThreads(milliseconds(0)));
}

TEST_F(ThreadTest, reportsThatAThreadOutlivedTheLimit) {
    std::atomic<bool> stop{false};
    detachNewThread([&stop] { stop.wait(false); });
    const auto begin = steady_clock::now();
    EXPECT_FALSE(joinDetachedThreads(milliseconds(60)));
    EXPECT_GE(steady_clock::now() - begin, milliseconds(60));
    stop = true;
    stop.notify_all();
    EXPECT_TRUE(joinDetachedThreads(milliseconds::max()));
}

TEST_F(ThreadTest, dispatchesEventsOfTheMainThreadWhileItWaits) {
    std::atomic<int> handedOver{0};
    for (int number = 0; number < 3; ++number) {
        detachNewThread([&handedOver] {
            for (int count = 0; count < 100; ++count) {
                MainThread::performAndWait([&handedOver] { ++handedOver; });
            }
        });
    }
    EXPECT_TRUE(joinDetachedThreads(seconds(30)));
    EXPECT_EQ(handedOver, 300);
}

TEST_F(ThreadTest, wakesTheMainThreadWhenTheLastOneEnds) {
    detachNewThread([waiting = gettid()] { EXPECT_TRUE(test::fallsAsleep(waiting)); });
    const auto begin = steady_clock::now();
    EXPECT_TRUE(joinDetachedThreads(seconds(10)));
    EXPECT_LT(steady_clock::now() - begin, seconds(5));
}

TEST_F(ThreadTest, releasesWhatTheFunctionHeldBeforeItCountsAsEnded) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watch = held;
    detachNewThread([held = std::move(held)] {});
    EXPECT_TRUE(joinDetachedThreads(seconds(10)));
    EXPECT_TRUE(watch.expired());
}

TEST_F(ThreadTest, waitsForThreadsThatThreadsStarted) {
    std::atomic<int> ended{0};
    detachNewThread([&ended, waiting = gettid()] {
        detachNewThread([&ended, waiting] {
            EXPECT_TRUE(test::fallsAsleep(waiting));
            ++ended;
        });
        ++ended;
    });
    EXPECT_TRUE(joinDetachedThreads(seconds(10)));
    EXPECT_EQ(ended, 2);
}

TEST_F(ThreadTest, canBeWaitedForOnAnotherThread) {
    std::atomic<int> ended{0};
    std::promise<pid_t> waiting;
    detachNewThread([&ended, &waiting] {
        EXPECT_TRUE(test::fallsAsleep(waiting.get_future().get()));
        ++ended;
    });
    std::thread([&ended, &waiting] {
        waiting.set_value(gettid());
        EXPECT_TRUE(joinDetachedThreads(seconds(10)));
        EXPECT_EQ(ended, 1);
    }).join();
}

TEST_F(ThreadTest, isStartedByManyThreadsAtOnce) {
    std::atomic<int> ended{0};
    std::vector<std::thread> starters;
    starters.reserve(4);
    for (int number = 0; number < 4; ++number) {
        starters.emplace_back([&ended] {
            for (int count = 0; count < 50; ++count) {
                detachNewThread([&ended] { ++ended; });
            }
        });
    }
    for (std::thread& starter : starters) {
        starter.join();
    }
    EXPECT_TRUE(joinDetachedThreads(seconds(30)));
    EXPECT_EQ(ended, 200);
}

TEST_F(ThreadTest, raisesWhenTheSystemHasNoThreadToGive) {
    EXPECT_TRUE(test::passesInChild([] {
        ASSERT_TRUE(test::failSystemCall(SYS_clone3, EAGAIN));
        ASSERT_TRUE(test::failSystemCall(SYS_clone, EAGAIN));
        bool ran = false;
        EXPECT_THROW(detachNewThread([&ran] { ran = true; }), Exception);
        EXPECT_TRUE(joinDetachedThreads(milliseconds(0)));
        EXPECT_FALSE(ran);
    }));
}

TEST_F(ThreadTest, dispatchesEventsWhileALongFunctionRuns) {
    std::promise<void> dispatched;
    MainThread::perform([&dispatched] { dispatched.set_value(); });
    std::future_status status = std::future_status::deferred;
    EXPECT_TRUE(performWhileDispatching([&] {
        EXPECT_FALSE(MainThread::isCurrent());
        status = dispatched.get_future().wait_for(seconds(20));
    }));
    EXPECT_EQ(status, std::future_status::ready);
}

TEST_F(ThreadTest, runsALongFunctionInPlaceOffTheMainThread) {
    std::thread([] {
        std::thread::id runner;
        EXPECT_TRUE(performWhileDispatching([&runner] { runner = std::this_thread::get_id(); }));
        EXPECT_EQ(runner, std::this_thread::get_id());
    }).join();
}

TEST_F(ThreadTest, leavesALongFunctionBehindWhenTheProgramQuits) {
    const auto release = std::make_shared<std::promise<void>>();
    const auto hasEnded = std::make_shared<std::atomic<bool>>(false);
    MainThread::perform([] { MainThread::shutdown(); });
    EXPECT_FALSE(performWhileDispatching([release, hasEnded] {
        release->get_future().wait();
        *hasEnded = true;
    }));
    EXPECT_FALSE(*hasEnded);
    MainThread::restart();
    release->set_value();
    EXPECT_TRUE(joinDetachedThreads(seconds(20)));
    EXPECT_TRUE(*hasEnded);
}

TEST_F(ThreadTest, runsALongFunctionInPlaceWhenTheSystemHasNoThreadToGive) {
    EXPECT_TRUE(test::passesInChild([] {
        ASSERT_TRUE(test::failSystemCall(SYS_clone3, EAGAIN));
        ASSERT_TRUE(test::failSystemCall(SYS_clone, EAGAIN));
        std::thread::id runner;
        EXPECT_TRUE(performWhileDispatching([&runner] { runner = std::this_thread::get_id(); }));
        EXPECT_EQ(runner, std::this_thread::get_id());
    }));
}

}  // namespace
}  // namespace vornic::platform
