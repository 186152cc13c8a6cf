#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <functional>
#include <future>
#include <mutex>
#include <set>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "foundation/log/LogQueue.h"
#include "tests/support/machine/Waiting.h"

namespace vornic {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A queue whose writer keeps the texts, one at a time, and can be held up. The queue is left
/// behind closed, as the log leaves its own.
class LogQueueTest : public ::testing::Test {
  protected:
    ~LogQueueTest() override {
        release();
        queue.close();
    }

    std::size_t write(std::span<const LogQueue::Entry> entries) {
        std::unique_lock lock(mutex);
        ++begun;
        changed.notify_all();
        changed.wait(lock, [this] { return !isHeld; });
        const std::string text(entries.front().text);
        texts.push_back(text);
        writers.insert(std::this_thread::get_id());
        lock.unlock();
        if (onWrite) {
            onWrite(text);
        }
        return 1;
    }

    void hold() {
        const std::lock_guard lock(mutex);
        isHeld = true;
    }
    void release() {
        const std::lock_guard lock(mutex);
        isHeld = false;
        changed.notify_all();
    }
    void waitUntilBegun(int writes) {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return begun >= writes; });
    }
    std::vector<std::string> written() {
        const std::lock_guard lock(mutex);
        return texts;
    }

    std::mutex mutex;
    std::condition_variable changed;
    bool isHeld = false;
    int begun = 0;
    std::vector<std::string> texts;
    std::set<std::thread::id> writers;
    std::function<void(const std::string&)> onWrite;
    LogQueue queue{[this](std::span<const LogQueue::Entry> entries) { return write(entries); }};
};

TEST_F(LogQueueTest, writesInTheOrderOfQueuing) {
    for (int i = 0; i < 1000; ++i) {
        queue.add(std::to_string(i), 1, true);
    }
    queue.finish();
    const std::vector<std::string> all = written();
    ASSERT_EQ(all.size(), 1000U);
    for (std::size_t i = 0; i < all.size(); ++i) {
        ASSERT_EQ(all[i], std::to_string(i));
    }
}

TEST_F(LogQueueTest, handsOverTheTextAndItsLength) {
    std::vector<std::size_t> units;
    LogQueue own([&units](std::span<const LogQueue::Entry> entries) {
        for (const LogQueue::Entry& entry : entries) {
            EXPECT_EQ(entry.text.size(), entry.units);
            units.push_back(entry.units);
        }
        return entries.size();
    });
    own.add("a", 1, false);
    own.add("", 0, false);
    own.add("bcd", 3, false);
    own.finish();
    EXPECT_THAT(units, ElementsAre(1, 0, 3));
}

TEST_F(LogQueueTest, writesOnTheThreadThatWaitsWhenNobodyElseDoes) {
    queue.add("a", 1, false);
    queue.finish();
    EXPECT_THAT(writers, ElementsAre(std::this_thread::get_id()));
}

TEST_F(LogQueueTest, writesOnAThreadOfItsOwnWhenNobodyWaits) {
    hold();
    queue.add("a", 1, true);
    waitUntilBegun(1);
    release();
    queue.finish();
    EXPECT_EQ(writers.count(std::this_thread::get_id()), 0U);
}

TEST_F(LogQueueTest, writesSoonAfterALongRest) {
    for (const char* text : {"a", "b"}) {
        queue.add(text, 1, true);
        waitUntilBegun(text[0] - 'a' + 1);
        std::this_thread::sleep_for(std::chrono::milliseconds(60));
    }
    EXPECT_THAT(written(), ElementsAre("a", "b"));
}

TEST_F(LogQueueTest, writesWhenWokenWhatWasAddedWithoutWaking) {
    queue.add("a", 1, false);
    queue.wake();
    waitUntilBegun(1);
    queue.finish();
    EXPECT_THAT(written(), ElementsAre("a"));
}

TEST_F(LogQueueTest, waitsForTheThreadThatWritesAlready) {
    hold();
    queue.add("a", 1, true);
    waitUntilBegun(1);
    std::atomic<bool> isFinished = false;
    std::promise<pid_t> waiting;
    std::thread waiter([&] {
        waiting.set_value(gettid());
        queue.finish();
        isFinished = true;
    });
    EXPECT_TRUE(test::fallsAsleep(waiting.get_future().get()));
    EXPECT_FALSE(isFinished);
    release();
    waiter.join();
    EXPECT_THAT(written(), ElementsAre("a"));
}

TEST_F(LogQueueTest, waitsForNothingThatIsQueuedLater) {
    onWrite = [this](const std::string& text) {
        if (text == "endless") {
            std::thread([this] { queue.add("endless", 1, true); }).join();
        }
    };
    queue.add("endless", 1, false);
    queue.finish();
    queue.finish();
    EXPECT_GE(written().size(), 2U);
    onWrite = nullptr;
}

TEST_F(LogQueueTest, writesFirstWhatTheWriterItselfQueues) {
    onWrite = [this](const std::string& text) {
        if (text == "a") {
            EXPECT_TRUE(queue.isWriter());
            queue.add("header 1", 1, true);
            queue.add("header 2", 1, true);
            // Cannot wait for itself.
            queue.finish();
        } else if (text == "header 1") {
            queue.add("inner", 1, true);
        }
    };
    for (const char* text : {"a", "b", "c"}) {
        queue.add(text, 1, false);
    }
    queue.finish();
    EXPECT_THAT(written(), ElementsAre("a", "header 1", "inner", "header 2", "b", "c"));
    EXPECT_FALSE(queue.isWriter());
    EXPECT_EQ(queue.count(), 0U);
}

TEST_F(LogQueueTest, countsWhatIsNotYetWritten) {
    hold();
    for (int i = 0; i < 5; ++i) {
        queue.add("a", 1, true);
    }
    waitUntilBegun(1);
    EXPECT_EQ(queue.count(), 5U);
    release();
    queue.finish();
    EXPECT_EQ(queue.count(), 0U);
}

TEST_F(LogQueueTest, dropsWhatHasNotBegunWhenCancelled) {
    hold();
    queue.add("a", 1, true);
    waitUntilBegun(1);
    queue.add("b", 1, true);
    queue.cancelAll();
    queue.add("c", 1, true);
    release();
    queue.finish();
    EXPECT_THAT(written(), ElementsAre("a", "c"));
    EXPECT_EQ(queue.count(), 0U);
}

TEST_F(LogQueueTest, dropsWhatTheWriterHasTakenButNotBegunWhenCancelled) {
    for (const char* text : {"a", "b", "c"}) {
        queue.add(text, 1, false);
    }
    hold();
    queue.wake();
    waitUntilBegun(1);
    queue.cancelAll();
    release();
    queue.finish();
    EXPECT_THAT(written(), ElementsAre("a"));
    EXPECT_EQ(queue.count(), 0U);
}

TEST_F(LogQueueTest, takesNothingMoreOnceClosed) {
    queue.add("a", 1, false);
    queue.close();
    queue.add("b", 1, true);
    queue.wake();
    queue.finish();
    EXPECT_THAT(written(), IsEmpty());
    EXPECT_EQ(queue.count(), 0U);
}

TEST_F(LogQueueTest, closesWithoutWaitingLongForAWriterThatHangs) {
    hold();
    queue.add("a", 1, true);
    waitUntilBegun(1);
    const auto start = std::chrono::steady_clock::now();
    queue.close();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    release();
    queue.finish();
}

TEST_F(LogQueueTest, canBeClosedByItsWriter) {
    onWrite = [this](const std::string&) { queue.close(); };
    queue.add("a", 1, true);
    queue.finish();
    EXPECT_THAT(written(), ElementsAre("a"));
}

TEST_F(LogQueueTest, givesLargeBuffersBackAndGoesOn) {
    const std::string large(3'000'000, 'x');
    for (int i = 0; i < 3; ++i) {
        queue.add(large, large.size(), false);
        queue.add("small", 5, false);
        queue.finish();
    }
    EXPECT_EQ(written().size(), 6U);
    EXPECT_EQ(written()[4], large);
}

TEST_F(LogQueueTest, losesNoTextOfManyThreadsThatWaitAndDoNotWait) {
    constexpr int kThreads = 4;
    constexpr int kTexts = 2000;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([this, thread] {
            for (int i = 0; i < kTexts; ++i) {
                const bool waits = i % (thread + 2) == 0;
                queue.add(std::to_string(thread), 1, !waits);
                if (waits) {
                    queue.finish();
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    queue.finish();
    EXPECT_EQ(written().size(), std::size_t{kThreads} * kTexts);
}

/// The signals that the calling thread holds back.
sigset_t blockedSignals() {
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    return blocked;
}

TEST_F(LogQueueTest, keepsSignalsForTheProgramAwayFromItsThread) {
    sigset_t blocked = blockedSignals();
    ASSERT_EQ(sigismember(&blocked, SIGINT), 0);
    onWrite = [&blocked](const std::string&) { blocked = blockedSignals(); };
    hold();
    queue.add("a", 1, true);
    waitUntilBegun(1);
    release();
    queue.finish();
    ASSERT_EQ(writers.count(std::this_thread::get_id()), 0U);
    EXPECT_EQ(sigismember(&blocked, SIGINT), 1);
    EXPECT_EQ(sigismember(&blocked, SIGTERM), 1);
    EXPECT_EQ(sigismember(&blocked, SIGSEGV), 0);
    EXPECT_EQ(sigismember(&blocked, SIGABRT), 0);
    const sigset_t own = blockedSignals();
    EXPECT_EQ(sigismember(&own, SIGINT), 0);
}

}  // namespace
}  // namespace vornic
