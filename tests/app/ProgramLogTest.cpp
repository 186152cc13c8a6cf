// The log that the programs leave, through to its files on the disk.

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/ProgramTest.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/programs/TerminalProgram.h"
#include "tests/support/texts/LogText.h"

namespace vornic::test {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

namespace {

constexpr const char* kTruncated = "Log truncated at 500KB";

}  // namespace

class ProgramLogTest : public ProgramTest {
  protected:
    [[nodiscard]] std::string logFolder() const { return files.library("Logs/Quillmark"); }

    [[nodiscard]] std::string taskLogPath() const { return logFolder() + "/Vornic.1.task.log"; }
    /// The names of the logs but for the task log.
    [[nodiscard]] std::vector<std::string> generations() const {
        std::vector<std::string> names = namesIn(logFolder());
        std::erase(names, "Vornic.1.task.log");
        return names;
    }

    [[nodiscard]] std::vector<std::string> generation(int number) const {
        return withoutLogHeader(logMessages(readBytes(files.logPath(number))));
    }

    /// Sets the family-wide switch to a value, written as a property list has it.
    void setDisableLogging(const std::string& value) const {
        fs::create_directories(files.library("Preferences"));
        writeBytes(files.library("Preferences/com.quillmark.global.plist"),
                   "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                   "<plist version=\"1.0\"><dict><key>disable-logging</key>" +
                       value + "</dict></plist>\n");
    }

    void expectLoggingStaysOn() const {
        const std::string path = files.writeSound("cut.xml");
        EXPECT_EQ(files.repair({path}).output, soundReport(path));
        EXPECT_EQ(files.log(), soundLog(path));
    }

    void expectLoggingIsOff() const {
        const std::string path = files.writeDamaged("cut.xml");
        const ProgramResult result = files.repair({path});
        EXPECT_EQ(result.output, "Logging is disabled\n" + repairedReport(path));
        EXPECT_TRUE(tellsOriginal(result.errors, files.trash())) << result.errors;
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(readBytes(path), repairedXMEML());
        EXPECT_FALSE(exists(logFolder()));
    }

    /// A file with so many forbidden characters, and the lines that their removal makes.
    std::vector<std::string> writeForbidden(std::size_t count) const {
        std::string text = soundXMEML();
        const std::size_t place = text.find("Harbour");
        text.insert(place, std::string(count, '\v'));
        writeBytes(files.path("cut.xml"), text);
        std::vector<std::string> lines;
        for (std::size_t i = place; i < place + count; ++i) {
            lines.push_back("Invalid character at byte " + std::to_string(i) + " removed.");
        }
        return lines;
    }

    static std::vector<std::string> removals(const std::vector<std::string>& messages) {
        std::vector<std::string> found;
        for (const std::string& message : messages) {
            if (message.starts_with("Invalid character at byte")) {
                found.push_back(message);
            }
        }
        return found;
    }
};

TEST_F(ProgramLogTest, holdsEveryStepOfASoundRunInOrder) {
    const std::string path = files.writeSound("cut.xml");
    files.repair({path});
    EXPECT_EQ(files.log(), soundLog(path));
}

TEST_F(ProgramLogTest, holdsEveryStepOfARepairInOrder) {
    const std::string path = files.writeDamaged("cut.xml");
    files.repair({path});
    EXPECT_EQ(files.log(), repairedLog(path));
}

TEST_F(ProgramLogTest, holdsTheRunsOfAllFilesOfACall) {
    const std::string first = files.writeDamaged("first.xml");
    const std::string second = files.writeSound("second.xml");
    files.repair({first, second});
    std::vector<std::string> expected = repairedLog(first);
    for (const std::string& message : soundLog(second)) {
        expected.push_back(message);
    }
    EXPECT_EQ(files.log(), expected);
}

TEST_F(ProgramLogTest, beginsWithTheBuildTheProgramAndTheMachine) {
    files.repair({files.writeSound("cut.xml")});
    const std::vector<std::string> messages = logMessages(readBytes(files.logPath()));
    ASSERT_GT(messages.size(), 5U);
    EXPECT_THAT(messages[0], StartsWith("Log started: "));
    EXPECT_EQ(messages[1], "Version: " VORNIC_BUILD_NUMBER);
    EXPECT_EQ(messages[2], "Path: " + material.program("vornic-repair"));
    EXPECT_THAT(messages[3], StartsWith("System: macOS "));
    EXPECT_EQ(messages[4], "Running in 64-bit mode");
}

TEST_F(ProgramLogTest, ofARunThatNobodyWatchesIsItsReportAsATaskLog) {
    const std::string first = files.writeDamaged("first.xml");
    const std::string second = files.writeSound("second.xml");
    files.repair({"--quiet", first, second});
    EXPECT_EQ(readBytes(taskLogPath()), repairedReport(first) + soundReport(second));
    files.repair({second});
    EXPECT_EQ(readBytes(taskLogPath()), soundReport(second));
}

TEST_F(ProgramLogTest, ofATaskSaysWhatStandardErrorSays) {
    const std::string missing = files.path("none.xml");
    const ProgramResult result = files.repair({missing});
    ASSERT_TRUE(result.errors.starts_with("vornic-repair: "));
    EXPECT_THAT(readBytes(taskLogPath()),
                HasSubstr(result.errors.substr(std::string("vornic-repair: ").size())));
}

TEST_F(ProgramLogTest, ofARunOnATerminalIsNoTaskLog) {
    TerminalProgram terminal(files.repairer({files.writeSound("cut.xml")}));
    EXPECT_EQ(terminal.finish().status, 0);
    EXPECT_TRUE(exists(files.logPath()));
    EXPECT_FALSE(exists(taskLogPath()));
}

TEST_F(ProgramLogTest, printsNothingAboutItselfOnAFirstRun) {
    const std::string path = files.writeSound("cut.xml");
    EXPECT_THAT(namesIn(files.home()), IsEmpty());
    const ProgramResult result = files.repair({path});
    EXPECT_EQ(result.output, soundReport(path));
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(generations(), ElementsAre("Vornic.1.log"));
}

TEST_F(ProgramLogTest, isOneForBothPrograms) {
    const std::string path = files.writeSound("cut.xml");
    files.repair({path});
    EXPECT_EQ(files.convert({"-convertxmeml", "4", path}).output, "");
    EXPECT_THAT(generations(), ElementsAre("Vornic.1.log", "Vornic.2.log"));
    EXPECT_THAT(generation(1), IsEmpty());
    EXPECT_EQ(generation(2), soundLog(path));
}

TEST_F(ProgramLogTest, keepsFiveGenerationsOfSixRuns) {
    std::vector<std::string> paths;
    for (int run = 1; run <= 6; ++run) {
        paths.push_back(files.writeSound("run " + std::to_string(run) + ".xml"));
        files.repair({paths.back()});
    }
    EXPECT_THAT(generations(), ElementsAre("Vornic.1.log", "Vornic.2.log", "Vornic.3.log",
                                           "Vornic.4.log", "Vornic.5.log"));
    for (int number = 1; number <= 5; ++number) {
        EXPECT_EQ(generation(number), soundLog(paths[static_cast<std::size_t>(6 - number)]));
    }
}

TEST_F(ProgramLogTest, isStartedByNoCallThatDoesNothing) {
    files.repair({"--help"});
    files.repair({"--version"});
    files.repair({});
    files.convert({"-convertxmeml", "3"});
    files.convert({"-convertxmeml", "9", "cut.xml"});
    EXPECT_THAT(namesIn(files.home()), IsEmpty());
}

TEST_F(ProgramLogTest, isOffWhenTheFamilysSwitchIsTheTextOne) {
    setDisableLogging("<string>1</string>");
    expectLoggingIsOff();
}

TEST_F(ProgramLogTest, isOffWhenTheFamilysSwitchIsTrue) {
    setDisableLogging("<true/>");
    expectLoggingIsOff();
}

TEST_F(ProgramLogTest, isOffWhenTheFamilysSwitchIsTheNumberOne) {
    setDisableLogging("<integer>1</integer>");
    expectLoggingIsOff();
}

TEST_F(ProgramLogTest, staysOnForAnyOtherText) {
    setDisableLogging("<string>YES</string>");
    expectLoggingStaysOn();
}

TEST_F(ProgramLogTest, staysOnForTheNumberZero) {
    setDisableLogging("<integer>0</integer>");
    expectLoggingStaysOn();
}

TEST_F(ProgramLogTest, staysOnForFalse) {
    setDisableLogging("<false/>");
    expectLoggingStaysOn();
}

TEST_F(ProgramLogTest, isOffForTheConverterToo) {
    setDisableLogging("<true/>");
    const std::string path = files.writeSound("cut.xml");
    const ProgramResult result = files.convert({"-convertxmeml", "3", path});
    EXPECT_EQ(result.output, "Logging is disabled\n");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(readBytes(path), soundXMEML("3"));
}

TEST_F(ProgramLogTest, holdsEveryLineOfALongReportInOrder) {
    constexpr std::size_t kCount = 60'000;
    const std::vector<std::string> lines = writeForbidden(kCount);
    const ProgramResult result = files.repair({files.path("cut.xml")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(readBytes(files.path("cut.xml")), soundXMEML());
    EXPECT_TRUE(removals(files.log()) == lines);
    EXPECT_TRUE(removals(linesOf(result.output)) == lines);
    EXPECT_THAT(generations(), ElementsAre("Vornic.1.log"));
}

TEST_F(ProgramLogTest, goesOnInANewGenerationAfterFiveMillionBytes) {
    constexpr std::size_t kCount = 150'000;
    const std::vector<std::string> lines = writeForbidden(kCount);
    EXPECT_EQ(files.repair({"--quiet", files.path("cut.xml")}).status, 0);
    EXPECT_THAT(generations(), ElementsAre("Vornic.1.log", "Vornic.2.log", "Vornic.3.log"));
    std::vector<std::string> all;
    for (int number = 3; number >= 1; --number) {
        const std::vector<std::string> messages = generation(number);
        ASSERT_FALSE(messages.empty());
        EXPECT_EQ(messages.front() == kTruncated, number != 3);
        if (number != 1) {
            constexpr std::uintmax_t kThreshold = 5'000'000;
            EXPECT_GE(fs::file_size(files.logPath(number)), kThreshold);
            EXPECT_LT(fs::file_size(files.logPath(number)), kThreshold + 200);
        }
        for (const std::string& line : removals(messages)) {
            all.push_back(line);
        }
    }
    EXPECT_TRUE(all == lines);
}

TEST_F(ProgramLogTest, isNotNeededForARepair) {
    fs::create_directories(files.library(""));
    writeBytes(files.library("Logs"), "in the way");
    const std::string path = files.writeDamaged("cut.xml");
    const ProgramResult result = files.repair({path});
    EXPECT_THAT(result.output, StartsWith("Unable to create folder " + logFolder() + ".\n"));
    EXPECT_THAT(result.output, HasSubstr("Unable to log the following information: Checking "
                                         "file...\nUnable to open log for output\n"));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(readBytes(path), repairedXMEML());
    EXPECT_EQ(readBytes(files.trash() + "/cut.xml"), damagedXMEML());
}

TEST_F(ProgramLogTest, isNotNeededForAConversion) {
    fs::create_directories(files.library(""));
    writeBytes(files.library("Logs"), "in the way");
    const std::string path = files.writeSound("cut.xml");
    const ProgramResult result = files.convert({"-convertxmeml", "3", path});
    EXPECT_EQ(result.output, "Unable to create folder " + logFolder() + ".\n");
    EXPECT_EQ(readBytes(path), soundXMEML("3"));
}

TEST_F(ProgramLogTest, takesAPathWithPercentSignsForNoFormat) {
    const std::string path = files.writeSound("100% %@ %s.xml");
    files.repair({path});
    EXPECT_EQ(files.log(), soundLog(path));
}

}  // namespace vornic::test
