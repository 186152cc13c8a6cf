#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "foundation/tasks/TaskOutput.h"

namespace vornic {
namespace {

TEST(TaskOutputTest, isTheOutputWhenThereIsAny) {
    TaskOutput captured;
    captured.addError("warning");
    captured.addOutput("one ");
    captured.addOutput("two");
    EXPECT_EQ(std::move(captured).result(), "one two");
}

TEST(TaskOutputTest, isTheErrorTextWhenThereIsNoOutput) {
    TaskOutput captured;
    captured.addError("it ");
    captured.addError("failed");
    captured.addError("");
    EXPECT_EQ(std::move(captured).result(), "it failed");
}

TEST(TaskOutputTest, isEmptyWhenNothingWasWritten) {
    EXPECT_EQ(TaskOutput().result(), "");
}

TEST(TaskOutputTest, appendsTheLastErrorChunkAgainWithEachChunkOfOutput) {
    TaskOutput captured;
    captured.addError("a");
    captured.addError("b");
    captured.addOutput("1");
    captured.addOutput("2");
    captured.addError("c");
    captured.addOutput("3");
    EXPECT_EQ(captured.error(), "abbbcc");
    EXPECT_EQ(captured.output(), "123");
}

TEST(TaskOutputTest, appendsNoErrorChunkAgainBeforeThereIsOne) {
    TaskOutput captured;
    captured.addOutput("1");
    captured.addError("a");
    EXPECT_EQ(captured.error(), "a");
}

TEST(TaskOutputTest, appendsNoErrorChunkAgainAfterTheEndOfThatStream) {
    TaskOutput captured;
    captured.addError("a");
    captured.addError("");
    captured.addOutput("1");
    EXPECT_EQ(captured.error(), "a");
}

TEST(TaskOutputTest, keepsAChunkThatRepeatsAMillionTimesOnce) {
    constexpr std::size_t kTimes = 1'000'000;
    TaskOutput captured;
    captured.addError(std::string(65536, 'e'));
    for (std::size_t time = 0; time < kTimes; ++time) {
        captured.addOutput("x");
    }
    EXPECT_EQ(std::move(captured).result(), std::string(kTimes, 'x'));
}

}  // namespace
}  // namespace vornic
