#include <chrono>
#include <functional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/threads/MainThread.h"
#include "tests/support/machine/Waiting.h"

namespace vornic::platform {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

TEST(PlainRunLoopTest, runsOneEventACallInTheOrderOfPosting) {
    PlainRunLoop loop;
    std::vector<int> ran;
    loop.post([&] { ran.push_back(1); });
    loop.post([&] { ran.push_back(2); });
    EXPECT_TRUE(loop.dispatchOne(milliseconds(0)));
    EXPECT_EQ(ran, (std::vector<int>{1}));
    EXPECT_TRUE(loop.dispatchOne(milliseconds(0)));
    EXPECT_EQ(ran, (std::vector<int>{1, 2}));
    EXPECT_FALSE(loop.dispatchOne(milliseconds(0)));
}

TEST(PlainRunLoopTest, waitsNoLongerThanItsLimit) {
    PlainRunLoop loop;
    const auto begin = steady_clock::now();
    EXPECT_FALSE(loop.dispatchOne(milliseconds(30)));
    const auto elapsed = steady_clock::now() - begin;
    EXPECT_GE(elapsed, milliseconds(30));
    EXPECT_LT(elapsed, milliseconds(3000));
    EXPECT_FALSE(loop.dispatchOne(milliseconds(-5)));
}

TEST(PlainRunLoopTest, wakesForAnEventFromAnotherThread) {
    PlainRunLoop loop;
    bool ran = false;
    std::thread poster([&, waiting = gettid()] {
        EXPECT_TRUE(test::fallsAsleep(waiting));
        loop.post([&ran] { ran = true; });
    });
    EXPECT_TRUE(loop.dispatchOne(milliseconds::max()));
    EXPECT_TRUE(ran);
    poster.join();
}

TEST(PlainRunLoopTest, letsAnEventPostAndDispatchOthers) {
    PlainRunLoop loop;
    int depth = 0;
    loop.post([&] {
        loop.post([&] { depth = 2; });
        depth = 1;
        EXPECT_TRUE(loop.dispatchOne(milliseconds(0)));
        EXPECT_EQ(depth, 2);
    });
    EXPECT_TRUE(loop.dispatchOne(milliseconds(0)));
    EXPECT_FALSE(loop.dispatchOne(milliseconds(0)));
}

TEST(PlainRunLoopTest, runsADelayedFunctionOnceWhenItsTimeHasCome) {
    PlainRunLoop loop;
    int runs = 0;
    const auto begin = steady_clock::now();
    loop.postAfter(milliseconds(40), [&] { ++runs; });
    EXPECT_FALSE(loop.dispatchOne(milliseconds(0)));
    EXPECT_FALSE(loop.dispatchOne(milliseconds(10)));
    EXPECT_EQ(runs, 0);
    EXPECT_TRUE(loop.dispatchOne(milliseconds::max()));
    EXPECT_GE(steady_clock::now() - begin, milliseconds(40));
    EXPECT_EQ(runs, 1);
    EXPECT_FALSE(loop.dispatchOne(milliseconds(60)));
    EXPECT_EQ(runs, 1);
}

TEST(PlainRunLoopTest, runsDelayedFunctionsInTheOrderOfTheirTimes) {
    PlainRunLoop loop;
    std::vector<int> ran;
    loop.postAfter(milliseconds(60), [&] { ran.push_back(3); });
    loop.postAfter(milliseconds(20), [&] { ran.push_back(2); });
    loop.postAfter(milliseconds(-5), [&] { ran.push_back(1); });
    for (int event = 0; event < 3; ++event) {
        EXPECT_TRUE(loop.dispatchOne(milliseconds::max()));
    }
    EXPECT_EQ(ran, (std::vector<int>{1, 2, 3}));
}

TEST(PlainRunLoopTest, runsWhatIsPostedBeforeWhatIsDelayed) {
    PlainRunLoop loop;
    std::vector<int> ran;
    loop.postAfter(milliseconds(20), [&] { ran.push_back(2); });
    loop.post([&] { ran.push_back(1); });
    EXPECT_TRUE(loop.dispatchOne(milliseconds::max()));
    EXPECT_TRUE(loop.dispatchOne(milliseconds::max()));
    EXPECT_EQ(ran, (std::vector<int>{1, 2}));
}

TEST(PlainRunLoopTest, runsADueFunctionThoughOthersKeepPosting) {
    PlainRunLoop loop;
    bool ran = false;
    std::function<void()> repost = [&] { loop.post(repost); };
    loop.post(repost);
    loop.postAfter(milliseconds(5), [&] { ran = true; });
    const auto begin = steady_clock::now();
    while (!ran && steady_clock::now() - begin < std::chrono::seconds(10)) {
        loop.dispatchOne(milliseconds(0));
    }
    EXPECT_TRUE(ran);
}

TEST(PlainRunLoopTest, wakesForADelayFromAnotherThread) {
    PlainRunLoop loop;
    bool ran = false;
    std::thread poster([&, waiting = gettid()] {
        EXPECT_TRUE(test::fallsAsleep(waiting));
        loop.postAfter(milliseconds(10), [&ran] { ran = true; });
    });
    EXPECT_TRUE(loop.dispatchOne(milliseconds::max()));
    EXPECT_TRUE(ran);
    poster.join();
}

TEST(PlainRunLoopTest, neverRunsWhatIsTooFarAhead) {
    PlainRunLoop loop;
    loop.postAfter(milliseconds::max(), [] { ADD_FAILURE() << "ran"; });
    EXPECT_FALSE(loop.dispatchOne(milliseconds(20)));
}

}  // namespace
}  // namespace vornic::platform
