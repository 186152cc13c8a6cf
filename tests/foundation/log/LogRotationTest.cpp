#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "foundation/log/QMLog.h"
#include "tests/foundation/log/LogTest.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;

class LogRotationTest : public test::LogTest {};

/// The bytes of an entry besides its text.
constexpr std::uint64_t kEntryFrame = std::string_view("2026-11-21 07:05:00 +0000 - \n").size();
constexpr std::uint64_t kFull = 5'000'000;

/// Queues entries until exactly `target` bytes of the generation will be written.
void fillTo(std::uint64_t target) {
    constexpr std::uint64_t kLargestText = 30'000;
    QMLog::finishWriting();
    std::uint64_t rest = target - QMLog::sharedController().bytesWritten();
    while (rest > 0) {
        std::uint64_t text = std::min(kLargestText, rest - kEntryFrame);
        if (rest - text - kEntryFrame < 2 * kEntryFrame && rest - text - kEntryFrame > 0) {
            text -= 2 * kEntryFrame;
        }
        QMLog::fastAppendLog("%@", std::string(text, 'x'));
        rest -= text + kEntryFrame;
    }
    QMLog::finishWriting();
}

TEST_F(LogRotationTest, startsTheNextGenerationWithTheEntryThatReachesTheLimit) {
    static_cast<void>(inChild([this] {
        QMLog::createNewLog();
        fillTo(kFull);
        EXPECT_EQ(fs::file_size(generation(2)), kFull);
        QMLog::appendLog("next");
        QMLog::finishWriting();
        EXPECT_EQ(QMLog::sharedController().bytesWritten(), fs::file_size(generation(1)));
        EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 0U);
    }));
    EXPECT_THAT(entries(), ElementsAre("Log truncated at 500KB", "next"));
    EXPECT_FALSE(test::exists(generation(3)));
}

TEST_F(LogRotationTest, startsNoGenerationOneByteBelowTheLimit) {
    static_cast<void>(inChild([this] {
        QMLog::createNewLog();
        fillTo(kFull - 1);
        EXPECT_EQ(QMLog::sharedController().bytesWritten(), kFull - 1);
        EXPECT_FALSE(test::exists(generation(2)));
        QMLog::appendLog("the last");
        QMLog::finishWriting();
        EXPECT_TRUE(test::exists(generation(2)));
    }));
    EXPECT_THAT(entries(), ElementsAre("Log truncated at 500KB"));
    EXPECT_EQ(entries(generation(2)).back(), "the last");
}

TEST_F(LogRotationTest, keepsEveryLineInOrderOverFullGenerations) {
    constexpr int kLines = 350'000;
    static_cast<void>(inChild([] {
        QMLog::createNewLog();
        for (int line = 0; line < kLines; ++line) {
            QMLog::fastAppendLog("%li a line of a usual length", line);
        }
        QMLog::finishWriting();
    }));
    int next = 0;
    int number = 5;
    while (!test::exists(generation(number))) {
        --number;
    }
    EXPECT_GE(number, 4);
    for (bool isFirst = true; number >= 1; --number, isFirst = false) {
        const std::string log = test::readBytes(generation(number));
        std::vector<std::string> lines = entries(generation(number));
        if (!isFirst) {
            ASSERT_EQ(lines.front(), "Log truncated at 500KB");
            lines.erase(lines.begin());
        }
        for (const std::string& line : lines) {
            ASSERT_EQ(std::stoi(line), next++);
        }
        if (number > 1) {
            EXPECT_GE(log.size(), kFull);
            EXPECT_LT(log.size(), kFull + lines.back().size() + kEntryFrame);
        }
    }
    EXPECT_EQ(next, kLines);
}

TEST_F(LogRotationTest, printsAgainAfterAFullGeneration) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog("", true);
        fillTo(kFull);
        EXPECT_FALSE(QMLog::sharedController().noPrinting());
        QMLog::appendLogAndPrint("printed");
    });
    EXPECT_EQ(outcome.output, "printed\n");
}

TEST_F(LogRotationTest, keepsItsNameOverAFullGeneration) {
    static_cast<void>(inChild([] {
        QMLog::sharedController().setAppName("Stored");
        QMLog::createNewLog();
        fillTo(kFull);
    }));
    EXPECT_THAT(entries(generation(1, "Stored")), ElementsAre("Log truncated at 500KB"));
    EXPECT_EQ(fs::file_size(generation(2, "Stored")), kFull);
}

TEST_F(LogRotationTest, startsTheNextGenerationFromAnyThreadThatWrites) {
    static_cast<void>(inChild([] {
        QMLog::createNewLog();
        fillTo(kFull - 100);
        std::thread([] {
            for (int i = 0; i < 10; ++i) {
                QMLog::appendLog("%li short enough to be waited for", i);
            }
        }).join();
    }));
    EXPECT_THAT(entries(),
                ElementsAre("Log truncated at 500KB", "2 short enough to be waited for",
                            ::testing::_, ::testing::_, ::testing::_, ::testing::_, ::testing::_,
                            ::testing::_, "9 short enough to be waited for"));
}

TEST_F(LogRotationTest, goesOnInAFullGenerationThatCannotBeMovedOn) {
    fs::create_directories(generation(5));
    writeGeneration(4, "old 4");
    const test::ChildOutcome outcome = inChild([this] {
        QMLog::createNewLog();
        fillTo(kFull);
        EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 0U);
        QMLog::appendLog("next");
        QMLog::finishWriting();
        EXPECT_TRUE(QMLog::sharedController().hasFileHandle());
        EXPECT_LT(QMLog::sharedController().bytesWritten(), 1000U) << "counts from the limit on";
    });
    EXPECT_EQ(outcome.output,
              "Unable to move file " + generation(4) + " to " + generation(5) + ".\n");
    const std::vector<std::string> lines = entries();
    ASSERT_GE(lines.size(), 3U);
    EXPECT_THAT(std::vector<std::string>(lines.end() - 2, lines.end()),
                ElementsAre("Log truncated at 500KB", "next"));
    EXPECT_GT(fs::file_size(generation(1)), kFull);
}

TEST_F(LogRotationTest, isDisabledByAFullGenerationWhenTheSwitchWasSetMeanwhile) {
    const test::ChildOutcome outcome = inChild([this] {
        QMLog::createNewLog();
        setGlobalPreference("1");
        fillTo(kFull);
        EXPECT_TRUE(QMLog::sharedController().loggingDisabled());
    });
    EXPECT_EQ(outcome.output, "Logging is disabled\n");
    EXPECT_FALSE(test::exists(generation(2)));
}

}  // namespace
}  // namespace vornic
