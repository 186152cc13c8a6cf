#include <string>
#include <thread>

#include "desktop/QtRunLoop.h"
#include "platform/threads/MainThread.h"
#include "tests/desktop/DesktopTest.h"

namespace vornic::test {
namespace {

using platform::MainThread;

TEST(QtRunLoop, runsFunctionsInTheOrderInWhichTheyWerePosted) {
    std::string order;
    for (const char letter : {'a', 'b', 'c'}) {
        MainThread::perform([&order, letter] { order += letter; });
    }
    EXPECT_EQ(order, "");
    EXPECT_TRUE(waitUntil([&order] { return order.size() == 3; }));
    EXPECT_EQ(order, "abc");
}

TEST(QtRunLoop, runsWhatAnotherThreadWaitsForOnTheMainThread) {
    bool wasMain = false;
    bool isDone = false;
    std::thread other([&] {
        MainThread::performAndWait([&] { wasMain = MainThread::isCurrent(); });
        MainThread::perform([&] { isDone = true; });
    });
    EXPECT_TRUE(waitUntil([&isDone] { return isDone; }));
    other.join();
    EXPECT_TRUE(wasMain);
}

TEST(QtRunLoop, runsALaterFunctionAfterItsDelay) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    Clock::time_point ran = start;
    std::thread([&ran] {
        MainThread::performAfter(std::chrono::milliseconds(60), [&ran] { ran = Clock::now(); });
    }).join();
    EXPECT_TRUE(waitUntil([&] { return ran != start; }));
    EXPECT_GE(ran - start, std::chrono::milliseconds(59));
}

TEST(QtRunLoop, dispatchesWhatIsPendingAndReportsWhenNothingIs) {
    while (MainThread::dispatchOne(std::chrono::milliseconds(0))) {
    }
    bool ran = false;
    MainThread::perform([&ran] { ran = true; });
    EXPECT_TRUE(MainThread::dispatchOne(std::chrono::milliseconds(1000)));
    EXPECT_TRUE(ran);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(MainThread::dispatchOne(std::chrono::milliseconds(30)));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(29));
}

}  // namespace
}  // namespace vornic::test
