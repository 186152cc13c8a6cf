#include <algorithm>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include <gmock/gmock.h>
#include <sys/resource.h>

#include "foundation/log/QMLog.h"
#include "tests/foundation/log/LogTest.h"

namespace vornic {
namespace {

using ::testing::ElementsAre;

class QMLogFailuresTest : public test::LogTest {};

TEST_F(QMLogFailuresTest, printsTheTextsThatItCannotLog) {
    const test::ChildOutcome outcome = inChild([this] {
        QMLog::appendLog("50% lost");
        QMLog::appendLog("%@", "and %@ too");
        QMLog::finishWriting();
        EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 0U);
        EXPECT_EQ(QMLog::sharedController().bytesWritten(), 0U);
        EXPECT_FALSE(test::exists(generation(1)));
    });
    EXPECT_EQ(
        outcome.output,
        "Unable to log the following information: 50% lost\nUnable to open log for output\n"
        "Unable to log the following information: and %@ too\nUnable to open log for output\n");
}

TEST_F(QMLogFailuresTest, losesTextsSilentlyWithoutPrinting) {
    std::filesystem::create_directories(library());
    std::ofstream(library() + "/Logs") << "in the way";
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog("Vornic", true);
        QMLog::appendLog("lost");
        QMLog::finishWriting();
    });
    EXPECT_EQ(outcome.output, "");
}

TEST_F(QMLogFailuresTest, opensAnExistingLogAtItsEndWithoutAHeader) {
    writeGeneration(1, "2026-11-21 07:05:00 +0000 - old");
    static_cast<void>(inChild([] {
        QMLog::appendLog("new");
        QMLog::finishWriting();
        EXPECT_TRUE(QMLog::sharedController().hasFileHandle());
        EXPECT_EQ(QMLog::sharedController().bytesWritten(),
                  std::string_view("2026-11-21 07:05:00 +0000 - new\n").size());
    }));
    EXPECT_THAT(test::logMessages(test::readBytes(generation(1))), ElementsAre("old", "new"));
}

TEST_F(QMLogFailuresTest, triesAgainWithEachLineToOpenTheLog) {
    const test::ChildOutcome outcome = inChild([this] {
        QMLog::appendLog("lost");
        QMLog::finishWriting();
        writeGeneration(1, "2026-11-21 07:05:00 +0000 - old");
        QMLog::appendLog("found");
        QMLog::finishWriting();
    });
    EXPECT_THAT(test::logMessages(test::readBytes(generation(1))), ElementsAre("old", "found"));
    EXPECT_THAT(outcome.output, ::testing::Not(::testing::HasSubstr("found")));
}

/// Lets no file of this process grow beyond a size.
void limitFileSize(std::uint64_t size) {
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    const rlimit limit{.rlim_cur = size, .rlim_max = RLIM_INFINITY};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
}

TEST_F(QMLogFailuresTest, printsAnExceptionOfWriting) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        QMLog::finishWriting();
        const std::uint64_t written = QMLog::sharedController().bytesWritten();
        limitFileSize(written);
        QMLog::appendLog("full");
        QMLog::finishWriting();
        EXPECT_EQ(QMLog::sharedController().bytesWritten(), written);
        // The length of a text whose writing raised is not taken off.
        EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 4U);
        limitFileSize(RLIM_INFINITY);
        QMLog::appendLog("room again");
        QMLog::finishWriting();
    });
    EXPECT_THAT(
        outcome.output,
        ::testing::MatchesRegex("Exception writing to log: The log file cannot be written: .+\n"));
    EXPECT_THAT(entries(), ElementsAre("room again"));
}

TEST_F(QMLogFailuresTest, losesOnlyTheLinesForWhichThereIsNoRoom) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        QMLog::finishWriting();
        limitFileSize(QMLog::sharedController().bytesWritten() + 10 * 30);
        for (int i = 0; i < 12; ++i) {
            QMLog::fastAppendLog("%li", i % 10);
        }
        QMLog::finishWriting();
        EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 2U);
    });
    EXPECT_EQ(entries().size(), 10U);
    EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 2);
}

TEST_F(QMLogFailuresTest, beginsANewLineBehindOneForWhichThereWasTooLittleRoom) {
    static_cast<void>(inChild([] {
        QMLog::createNewLog();
        QMLog::finishWriting();
        limitFileSize(QMLog::sharedController().bytesWritten() + 30 + 10);
        QMLog::fastAppendLog("1");
        QMLog::fastAppendLog("2");
        QMLog::finishWriting();
        QMLog::fastAppendLog("3");
        QMLog::finishWriting();
        limitFileSize(RLIM_INFINITY);
        QMLog::appendLog("4");
        QMLog::appendLog("5");
        QMLog::finishWriting();
    }));
    const std::string date = "....-..-.. ..:..:.. .0000 - ";
    EXPECT_THAT(
        test::readBytes(generation(1)),
        ::testing::ContainsRegex("\n" + date + "1\n....-..-..\n" + date + "4\n" + date + "5\n$"));
}

TEST_F(QMLogFailuresTest, losesAnExceptionOfWritingSilentlyWithoutPrinting) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog("Vornic", true);
        QMLog::finishWriting();
        limitFileSize(QMLog::sharedController().bytesWritten());
        QMLog::appendLog("full");
        QMLog::finishWriting();
    });
    EXPECT_EQ(outcome.output, "");
}

}  // namespace
}  // namespace vornic
