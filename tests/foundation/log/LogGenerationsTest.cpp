#include <filesystem>
#include <fstream>
#include <string>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "foundation/log/LogGenerations.h"
#include "foundation/log/QMLog.h"
#include "platform/processes/ProcessInfo.h"
#include "platform/settings/Bundle.h"
#include "tests/foundation/log/LogTest.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

class LogGenerationsTest : public test::LogTest {
  protected:
    [[nodiscard]] std::string contents(int number) const {
        return test::readBytes(generation(number));
    }
    [[nodiscard]] bool isThere(int number) const { return test::exists(generation(number)); }

    [[nodiscard]] test::ChildOutcome startLog(bool noPrinting = false) const {
        return inChild([noPrinting] {
            QMLog::createNewLog("", noPrinting);
            QMLog::finishWriting();
        });
    }
};

TEST_F(LogGenerationsTest, knowsTheFoldersOfTheUserAndOfTheMachine) {
    EXPECT_EQ(vornic::logFolder(true), logFolder());
    EXPECT_EQ(vornic::logFolder(false), "/var/lib/quillmark/Logs/Quillmark");
}

// The header

TEST_F(LogGenerationsTest, beginsALogWithItsHeader) {
    static_cast<void>(inChild([] {
        QMLog::createNewLog();
        QMLog::finishWriting();
        EXPECT_EQ(QMLog::sharedController().bytesWritten(),
                  fs::file_size(QMLog::availableLogs().at(0)));
    }));
    const std::string system = "System: macOS " + platform::operatingSystemVersionString() + ", " +
                               std::to_string(platform::processorCount()) + " CPU(s), ";
    EXPECT_THAT(
        test::logMessages(contents(1)),
        ElementsAre(MatchesRegex("Log started: ....-..-.. ..:..:.. \\+0000"), "Version: 7",
                    MatchesRegex("Path: /.+/test-foundation"),
                    ::testing::AllOf(::testing::StartsWith(system), MatchesRegex(".+ [0-9]+\\."
                                                                                 "[0-9][0-9] GB "
                                                                                 "RAM")),
                    "Running in 64-bit mode"));
    EXPECT_EQ(static_cast<unsigned char>(contents(1).front()), '2') << "a byte order mark";
}

TEST_F(LogGenerationsTest, reportsTheMemoryInUnitsOf1024) {
    static_cast<void>(startLog());
    const std::string line = test::logMessages(contents(1)).at(3);
    const double shown = std::stod(line.substr(line.find("CPU(s), ") + 8));
    const double bytes = static_cast<double>(platform::physicalMemory());
    EXPECT_NEAR(shown, bytes / 1024 / 1024 / 1024, 0.006);
}

TEST_F(LogGenerationsTest, leavesTheVersionOutWhenTheBundleHasNone) {
    const platform::Bundle own = bundle(nullptr);
    static_cast<void>(test::runInChild([&] {
        platform::Bundle::setMainBundle(own);
        QMLog::createNewLog();
        QMLog::finishWriting();
    }));
    EXPECT_THAT(test::logMessages(contents(1)),
                ElementsAre(MatchesRegex("Log started: .+"), MatchesRegex("Path: /.+"),
                            MatchesRegex("System: .+"), "Running in 64-bit mode"));
}

TEST_F(LogGenerationsTest, leavesVersionAndPathOutWithoutABundle) {
    static_cast<void>(test::runInChild([&] {
        platform::Bundle::setMainBundle(platform::Bundle(sandbox.path("None.app")));
        QMLog::createNewLog();
        QMLog::finishWriting();
    }));
    EXPECT_THAT(test::logMessages(contents(1)),
                ElementsAre(MatchesRegex("Log started: .+"), MatchesRegex("System: .+"),
                            "Running in 64-bit mode"));
}

TEST_F(LogGenerationsTest, printsNothingOnAFirstRun) {
    ASSERT_FALSE(test::exists(library()));
    const test::ChildOutcome outcome = startLog();
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_TRUE(isThere(1));
}

// Moving on

TEST_F(LogGenerationsTest, movesEachGenerationOnePlaceOn) {
    writeGeneration(1, "old 1");
    writeGeneration(2, "old 2");
    writeGeneration(3, "old 3");
    EXPECT_EQ(startLog().output, "");
    EXPECT_THAT(entries(), IsEmpty());
    EXPECT_EQ(contents(2), "old 1\n");
    EXPECT_EQ(contents(3), "old 2\n");
    EXPECT_EQ(contents(4), "old 3\n");
    EXPECT_FALSE(isThere(5));
}

TEST_F(LogGenerationsTest, dropsTheFifthGeneration) {
    for (int number = 1; number <= 5; ++number) {
        writeGeneration(number, "old " + std::to_string(number));
    }
    EXPECT_EQ(startLog().output, "");
    EXPECT_EQ(contents(5), "old 4\n");
    EXPECT_EQ(contents(2), "old 1\n");
    EXPECT_FALSE(isThere(6));
}

TEST_F(LogGenerationsTest, keepsGapsOnePlaceOn) {
    writeGeneration(1, "old 1");
    writeGeneration(3, "old 3");
    EXPECT_EQ(startLog().output, "");
    EXPECT_EQ(contents(2), "old 1\n");
    EXPECT_FALSE(isThere(3));
    EXPECT_EQ(contents(4), "old 3\n");
}

TEST_F(LogGenerationsTest, movesNothingWithoutAFirstGeneration) {
    for (int number = 2; number <= 5; ++number) {
        writeGeneration(number, "old " + std::to_string(number));
    }
    EXPECT_EQ(startLog().output, "");
    for (int number = 2; number <= 5; ++number) {
        EXPECT_EQ(contents(number), "old " + std::to_string(number) + "\n");
    }
    EXPECT_THAT(entries(), IsEmpty());
}

TEST_F(LogGenerationsTest, startsANewGenerationWithEveryStart) {
    static_cast<void>(inChild([] {
        for (int i = 1; i <= 7; ++i) {
            QMLog::createNewLog();
            QMLog::appendLog("run %li", i);
            QMLog::finishWriting();
        }
    }));
    for (int number = 1; number <= 5; ++number) {
        EXPECT_THAT(entries(generation(number)), ElementsAre("run " + std::to_string(8 - number)));
    }
    EXPECT_FALSE(isThere(6));
}

TEST_F(LogGenerationsTest, leavesTheLogsOfOtherApplicationsAlone) {
    writeGeneration(1, "old");
    fs::rename(generation(1), generation(1, "Other"));
    static_cast<void>(startLog());
    static_cast<void>(startLog());
    EXPECT_TRUE(test::exists(generation(1, "Other")));
    EXPECT_FALSE(test::exists(generation(2, "Other")));
}

TEST_F(LogGenerationsTest, ignoresThatTheFifthGenerationCannotBeDeleted) {
    fs::create_directories(generation(5));
    writeGeneration(1, "old 1");
    EXPECT_EQ(startLog().output, "");
    EXPECT_EQ(contents(2), "old 1\n");
    EXPECT_TRUE(fs::is_directory(generation(5)));
}

TEST_F(LogGenerationsTest, listsTheGenerationsThatExistNewestFirst) {
    writeGeneration(3, "old 3");
    writeGeneration(1, "old 1");
    static_cast<void>(inChild([this] {
        EXPECT_THAT(QMLog::availableLogs(), ElementsAre(generation(1), generation(3)));
        QMLog::sharedController().setAppName("Other");
        EXPECT_THAT(QMLog::availableLogs(), IsEmpty());
    }));
}

// Failures

TEST_F(LogGenerationsTest, saysWhenAGenerationCannotBeMovedAndStops) {
    fs::create_directories(generation(5));
    writeGeneration(4, "old 4");
    writeGeneration(1, "old 1");
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        EXPECT_FALSE(QMLog::sharedController().hasFileHandle());
    });
    EXPECT_EQ(outcome.output,
              "Unable to move file " + generation(4) + " to " + generation(5) + ".\n");
    EXPECT_EQ(contents(1), "old 1\n");
}

TEST_F(LogGenerationsTest, saysWhenTheFolderCannotBeMade) {
    fs::create_directories(library());
    std::ofstream(library() + "/Logs") << "in the way";
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        EXPECT_FALSE(QMLog::sharedController().hasFileHandle());
    });
    EXPECT_EQ(outcome.output, "Unable to create folder " + logFolder() + ".\n");
}

TEST_F(LogGenerationsTest, saysWhenTheFileCannotBeMade) {
    fs::create_directories(logFolder());
    fs::permissions(logFolder(), fs::perms(0555));
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        EXPECT_FALSE(QMLog::sharedController().hasFileHandle());
    });
    fs::permissions(logFolder(), fs::perms(0755));
    EXPECT_THAT(outcome.output, MatchesRegex("Unable to create log file " + generation(1) +
                                             " - .*permission denied\\.\n"));
}

TEST_F(LogGenerationsTest, stopsSilentlyWhenTheNewFileCannotBeOpened) {
    fs::create_directories(logFolder());
    const test::ChildOutcome outcome = inChild([] {
        umask(0777);
        QMLog::createNewLog();
        umask(022);
        EXPECT_FALSE(QMLog::sharedController().hasFileHandle());
        QMLog::finishWriting();
    });
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(fs::file_size(generation(1)), 0U);
}

TEST_F(LogGenerationsTest, failsSilentlyWithoutPrinting) {
    fs::create_directories(generation(5));
    writeGeneration(4, "old 4");
    writeGeneration(1, "old 1");
    EXPECT_EQ(startLog(true).output, "");
    fs::remove_all(logFolder());
    std::ofstream(logFolder()) << "in the way";
    EXPECT_EQ(startLog(true).output, "");
    fs::remove(logFolder());
    fs::create_directories(logFolder());
    fs::permissions(logFolder(), fs::perms(0555));
    EXPECT_EQ(startLog(true).output, "");
    fs::permissions(logFolder(), fs::perms(0755));
}

TEST_F(LogGenerationsTest, logsAgainWhenTheFailureIsGone) {
    fs::create_directories(logFolder());
    fs::permissions(logFolder(), fs::perms(0555));
    static_cast<void>(inChild([this] {
        QMLog::createNewLog("", true);
        fs::permissions(logFolder(), fs::perms(0755));
        writeGeneration(1, "2026-11-21 07:05:00 +0000 - made by another");
        QMLog::appendLog("goes on");
        QMLog::finishWriting();
    }));
    EXPECT_THAT(test::logMessages(contents(1)), ElementsAre("made by another", "goes on"));
}

}  // namespace
}  // namespace vornic
