#include <chrono>

#include <gtest/gtest.h>

#include "foundation/copies/FileCopyProgress.h"
#include "platform/threads/Thread.h"
#include "tests/foundation/copies/RecordingCopyDelegate.h"

namespace vornic {
namespace {

using Totals = std::vector<std::uint64_t>;

constexpr std::uint64_t kShortestInterval = 20'971'520;

class FileCopyProgressTest : public ::testing::Test {
  protected:
    [[nodiscard]] FileCopyProgress progressOf(std::uint64_t sourceSize) const {
        return {sourceSize, recording.delegate, std::make_shared<FileCopySettings>()};
    }
    static void waitForBackgroundCalls() {
        EXPECT_TRUE(platform::joinDetachedThreads(std::chrono::seconds(30)));
    }
    [[nodiscard]] Totals reported() const {
        waitForBackgroundCalls();
        return recording.totals();
    }

    test::RecordingCopyDelegate recording;
};

TEST_F(FileCopyProgressTest, reportsWhenTwentyMebibytesMoreAreCopied) {
    FileCopyProgress progress = progressOf(100'000'000);
    progress.advance(kShortestInterval - 1, false);
    progress.advance(kShortestInterval + 5, false);
    progress.advance(2 * kShortestInterval + 4, false);
    progress.advance(2 * kShortestInterval + 5, false);
    EXPECT_EQ(reported(), (Totals{kShortestInterval + 5, 2 * kShortestInterval + 5}));
    EXPECT_EQ(recording.questions(), 2);
}

TEST_F(FileCopyProgressTest, reportsAFiveHundredthOfALargeFile) {
    constexpr std::uint64_t kInterval = 50'000'000;
    FileCopyProgress progress = progressOf(500 * kInterval + 499);
    progress.advance(kInterval - 1, false);
    progress.advance(kInterval, false);
    EXPECT_EQ(reported(), Totals{kInterval});
}

TEST_F(FileCopyProgressTest, reportsTheEndInAnyCase) {
    FileCopyProgress progress = progressOf(7);
    progress.advance(7, true);
    EXPECT_EQ(reported(), Totals{7});
    EXPECT_EQ(recording.questions(), 1);
}

TEST_F(FileCopyProgressTest, isCancelledOnceTheAnswerIsFalse) {
    FileCopyProgress progress = progressOf(7);
    progress.advance(7, true);
    waitForBackgroundCalls();
    EXPECT_FALSE(progress.isCancelled());
    recording.delegate->fileCopyShouldContinue = [](const auto&) { return false; };
    progress.advance(8, true);
    waitForBackgroundCalls();
    EXPECT_TRUE(progress.isCancelled());
}

TEST_F(FileCopyProgressTest, letsAnAnswerComeWhenItIsGone) {
    {
        FileCopyProgress progress = progressOf(7);
        progress.advance(7, true);
    }
    EXPECT_EQ(reported(), Totals{7});
    EXPECT_EQ(recording.questions(), 1);
}

TEST_F(FileCopyProgressTest, takesNoDelegate) {
    FileCopyProgress progress(7, nullptr, std::make_shared<FileCopySettings>());
    progress.advance(7, true);
    EXPECT_FALSE(progress.isCancelled());
}

}  // namespace
}  // namespace vornic
