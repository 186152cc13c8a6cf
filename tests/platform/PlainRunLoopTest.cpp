#include <chrono>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/MainThread.h"

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
    std::thread poster([&] {
        std::this_thread::sleep_for(milliseconds(20));
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

}  // namespace
}  // namespace vornic::platform
