#include <algorithm>
#include <atomic>
#include <chrono>
#include <new>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/Exception.h"
#include "platform/threads/MainThread.h"
#include "tests/support/machine/Waiting.h"

namespace vornic::platform {
namespace {

using std::chrono::milliseconds;

/// Asked while static objects are initialised, before `main`.
const bool kWasMainThread = MainThread::isCurrent();

class MainThreadTest : public ::testing::Test {
  protected:
    void SetUp() override { MainThread::setLoop(nullptr); }
    void TearDown() override {
        MainThread::restart();
        MainThread::setLoop(nullptr);
    }

    /// Dispatches until the flag is set.
    static void dispatchUntil(const std::atomic<bool>& flag) {
        while (!flag) {
            MainThread::dispatchOne(milliseconds(10));
        }
    }
};

TEST_F(MainThreadTest, isTheThreadThatInitialisedStaticObjects) {
    EXPECT_TRUE(kWasMainThread);
    EXPECT_TRUE(MainThread::isCurrent());
    bool current = true;
    std::thread([&] { current = MainThread::isCurrent(); }).join();
    EXPECT_FALSE(current);
}

TEST_F(MainThreadTest, canBeAdopted) {
    bool current = false;
    std::thread([&] {
        MainThread::adopt();
        current = MainThread::isCurrent();
    }).join();
    EXPECT_TRUE(current);
    EXPECT_FALSE(MainThread::isCurrent());
    MainThread::adopt();
    EXPECT_TRUE(MainThread::isCurrent());
}

TEST_F(MainThreadTest, runsInPlaceOnTheMainThread) {
    bool ran = false;
    MainThread::performAndWait([&] { ran = true; });
    EXPECT_TRUE(ran);
    EXPECT_THROW(MainThread::performAndWait([] { throw RangeException("far"); }), RangeException);
}

TEST_F(MainThreadTest, runsThereAndLetsTheCallerWait) {
    std::atomic<bool> done{false};
    bool onMainThread = false;
    std::thread worker([&] {
        MainThread::performAndWait([&] { onMainThread = MainThread::isCurrent(); });
        EXPECT_TRUE(onMainThread);
        done = true;
    });
    dispatchUntil(done);
    worker.join();
}

TEST_F(MainThreadTest, throwsToTheCallerWhatTheFunctionThrew) {
    std::atomic<bool> done{false};
    std::string reason;
    std::thread worker([&] {
        try {
            MainThread::performAndWait([] { throw Exception("NSName", "the reason"); });
        } catch (const Exception& exception) {
            reason = exception.name() + ": " + exception.reason();
        }
        EXPECT_THROW(MainThread::performAndWait([] { throw std::bad_alloc(); }), std::bad_alloc);
        done = true;
    });
    dispatchUntil(done);
    worker.join();
    EXPECT_EQ(reason, "NSName: the reason");
}

TEST_F(MainThreadTest, performsLaterAndInOrder) {
    std::vector<int> ran;
    MainThread::perform([&] { ran.push_back(1); });
    MainThread::perform([&] { ran.push_back(2); });
    EXPECT_TRUE(ran.empty());
    EXPECT_TRUE(MainThread::dispatchOne(milliseconds(0)));
    EXPECT_TRUE(MainThread::dispatchOne(milliseconds(0)));
    EXPECT_FALSE(MainThread::dispatchOne(milliseconds(0)));
    EXPECT_EQ(ran, (std::vector<int>{1, 2}));
}

TEST_F(MainThreadTest, performsAfterADelayOnTheMainThread) {
    std::atomic<bool> done{false};
    std::thread([&] {
        MainThread::performAfter(milliseconds(10), [&] {
            EXPECT_TRUE(MainThread::isCurrent());
            done = true;
        });
    }).join();
    EXPECT_FALSE(done);
    dispatchUntil(done);
    EXPECT_TRUE(done);
}

TEST_F(MainThreadTest, keepsTheOrderOfAThreadsHandOvers) {
    std::atomic<bool> done{false};
    std::vector<int> ran;
    std::thread worker([&] {
        for (int number = 0; number < 100; ++number) {
            MainThread::perform([&ran, number] { ran.push_back(number); });
        }
        MainThread::performAndWait([&] { ran.push_back(100); });
        done = true;
    });
    dispatchUntil(done);
    worker.join();
    ASSERT_EQ(ran.size(), 101U);
    EXPECT_TRUE(std::is_sorted(ran.begin(), ran.end()));
}

/// Waits until a hand-over has reached the loop.
class CountingLoop : public MainThreadLoop {
  public:
    void post(std::function<void()> function) override {
        inner_.post(std::move(function));
        ++posted;
    }
    void postAfter(milliseconds delay, std::function<void()> function) override {
        inner_.postAfter(delay, std::move(function));
    }
    bool dispatchOne(milliseconds limit) override { return inner_.dispatchOne(limit); }
    std::atomic<int> posted{0};

  private:
    PlainRunLoop inner_;
};

TEST_F(MainThreadTest, endsTheWaitingAtShutdownWithoutRunningTheFunction) {
    const auto loop = std::make_shared<CountingLoop>();
    MainThread::setLoop(loop);
    bool ran = false;
    std::thread worker([&] { MainThread::performAndWait([&] { ran = true; }); });
    while (loop->posted == 0) {
        std::this_thread::yield();
    }
    MainThread::shutdown();
    worker.join();
    while (MainThread::dispatchOne(milliseconds(0))) {
    }
    EXPECT_FALSE(ran);
}

TEST_F(MainThreadTest, returnsAtOnceAfterShutdown) {
    MainThread::shutdown();
    bool ran = false;
    std::thread([&] { MainThread::performAndWait([&] { ran = true; }); }).join();
    EXPECT_FALSE(ran);
    MainThread::performAndWait([&] { ran = true; });
    EXPECT_TRUE(ran);
}

TEST_F(MainThreadTest, handsOverAgainAfterRestart) {
    MainThread::shutdown();
    MainThread::restart();
    std::atomic<bool> done{false};
    bool ran = false;
    std::thread worker([&] {
        MainThread::performAndWait([&] { ran = true; });
        done = true;
    });
    dispatchUntil(done);
    worker.join();
    EXPECT_TRUE(ran);
}

TEST_F(MainThreadTest, waitsForAFunctionThatRunsWhenTheShutdownComes) {
    std::atomic<bool> returned{false};
    bool finished = false;
    std::thread worker([&] {
        const pid_t waiting = gettid();
        // What the function refers to lives in this call.
        int local = 1;
        MainThread::performAndWait([&] {
            MainThread::shutdown();
            EXPECT_TRUE(test::fallsAsleep(waiting));
            EXPECT_FALSE(returned);
            finished = local == 1;
        });
        returned = true;
    });
    while (!MainThread::dispatchOne(milliseconds(10))) {
    }
    worker.join();
    EXPECT_TRUE(finished);
}

TEST_F(MainThreadTest, dispatchesFromWithinADispatchedFunction) {
    std::atomic<bool> done{false};
    std::vector<int> ran;
    std::thread worker([&] {
        MainThread::performAndWait([&] {
            ran.push_back(1);
            while (ran.size() < 2) {
                MainThread::dispatchOne(milliseconds(10));
            }
        });
        done = true;
    });
    std::thread other([&] { MainThread::performAndWait([&] { ran.push_back(2); }); });
    dispatchUntil(done);
    worker.join();
    other.join();
    EXPECT_EQ(ran.size(), 2U);
}

TEST_F(MainThreadTest, survivesManyThreadsAndAShutdownAmongThem) {
    constexpr int kThreads = 4;
    std::atomic<int> running{kThreads};
    int count = 0;
    std::vector<std::thread> workers;
    workers.reserve(kThreads);
    for (int number = 0; number < kThreads; ++number) {
        workers.emplace_back([&] {
            for (int call = 0; call < 500; ++call) {
                MainThread::performAndWait([&] { ++count; });
                if (call % 50 == 0) {
                    MainThread::perform([&] { ++count; });
                }
            }
            --running;
        });
    }
    while (running > 0) {
        MainThread::dispatchOne(milliseconds(1));
        if (count == 1000) {
            MainThread::shutdown();
        }
    }
    for (std::thread& worker : workers) {
        worker.join();
    }
    EXPECT_GE(count, 1000);
    while (MainThread::dispatchOne(milliseconds(0))) {
    }
    EXPECT_LE(count, 1000 + kThreads * 11);
}

}  // namespace
}  // namespace vornic::platform
