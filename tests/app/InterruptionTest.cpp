// Programs that are asked to end in the middle of their work. They are held at a known place: a
// program that has more to say than a pipe holds waits until the test reads on.

#include <algorithm>
#include <csignal>
#include <ostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/ProgramTest.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/texts/LogText.h"

namespace vornic::test {

using ::testing::ElementsAre;
using ::testing::SizeIs;

namespace {

struct Signal {
    const char* name;
    int number;
    int status;
};

void PrintTo(const Signal& tested, std::ostream* stream) {
    *stream << tested.name;
}

constexpr Signal kSignals[] = {
    {"interrupt", SIGINT, 130},
    {"terminate", SIGTERM, 143},
    {"hangUp", SIGHUP, 129},
};

std::string signalName(const ::testing::TestParamInfo<Signal>& tested) {
    return tested.param.name;
}

constexpr const char* kFiltering = "Filtering invalid characters...";

/// A file whose report is far longer than a pipe holds.
std::string manyForbiddenCharacters() {
    constexpr std::size_t kCount = 60'000;
    std::string text = soundXMEML();
    text.insert(text.find("Harbour"), std::string(kCount, '\v'));
    return text;
}

bool beginsWith(const std::vector<std::string>& whole, const std::vector<std::string>& beginning) {
    return beginning.size() <= whole.size() &&
           std::equal(beginning.begin(), beginning.end(), whole.begin());
}

}  // namespace

class InterruptedRepairTest : public ProgramTest, public ::testing::WithParamInterface<Signal> {
  protected:
    void SetUp() override {
        text_ = manyForbiddenCharacters();
        path_ = files.write("cut.xml", text_);
        next_ = files.writeDamaged("next.xml");
        RunningProgram program(files.repairer({path_, next_}));
        EXPECT_TRUE(program.readUntil("Invalid character at byte"));
        program.sendSignal(GetParam().number);
        result_ = program.finish();
    }

    [[nodiscard]] std::vector<std::string> completeReport() const {
        const std::string report = soundReport(path_);
        std::vector<std::string> lines = linesOf(report);
        lines.erase(std::find(lines.begin(), lines.end(), kFiltering) + 1, lines.end());
        for (std::size_t i = text_.find('\v'); text_[i] == '\v'; ++i) {
            lines.push_back("Invalid character at byte " + std::to_string(i) + " removed.");
        }
        return lines;
    }

    std::string text_;
    std::string path_;
    std::string next_;
    ProgramResult result_;
};

TEST_P(InterruptedRepairTest, endsWithTheSignalsStatus) {
    EXPECT_EQ(result_.status, GetParam().status);
    EXPECT_EQ(result_.errors, "");
}

TEST_P(InterruptedRepairTest, leavesTheUsersFileAndTheWorkingCopy) {
    EXPECT_EQ(readBytes(path_), text_);
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("cut-backup.xml", "cut.xml", "next.xml"));
    EXPECT_EQ(readBytes(files.path("cut-backup.xml")), text_);
    EXPECT_FALSE(exists(files.trash()));
}

TEST_P(InterruptedRepairTest, beginsNoFurtherFile) {
    EXPECT_EQ(readBytes(next_), damagedXMEML());
    EXPECT_THAT(result_.output, ::testing::Not(::testing::HasSubstr("next.xml")));
}

TEST_P(InterruptedRepairTest, losesNoLineOfTheReport) {
    const std::vector<std::string> lines = linesOf(result_.output);
    EXPECT_TRUE(beginsWith(completeReport(), lines)) << result_.output;
    EXPECT_GT(lines.size(), 5U);
}

TEST_P(InterruptedRepairTest, leavesAWholeLog) {
    const std::vector<std::string> printed = linesOf(result_.output);
    std::vector<std::string> complete = completeReport();
    const auto filtering = std::find(complete.begin(), complete.end(), kFiltering);
    ASSERT_NE(filtering, complete.end());
    complete.insert(filtering + 1, "Filtering invalid characters from string...");
    complete.insert(complete.begin(), "Beginning repair for file " + path_ + "...");
    const std::vector<std::string> log = files.log();
    EXPECT_TRUE(beginsWith(complete, log)) << ::testing::PrintToString(log);
    // Besides the two lines that are logged only, it may hold the line whose printing the signal
    // interrupted.
    EXPECT_GE(log.size(), printed.size() + 2);
    EXPECT_LE(log.size(), printed.size() + 3);
}

TEST_P(InterruptedRepairTest, leavesAFileThatCanBeRepairedAfterwards) {
    EXPECT_EQ(files.repair({"--quiet", path_}).status, 0);
    EXPECT_EQ(readBytes(path_), soundXMEML());
    EXPECT_EQ(readBytes(files.trash() + "/cut.xml"), text_);
    EXPECT_EQ(readBytes(files.trash() + "/cut-backup.xml"), text_);
}

INSTANTIATE_TEST_SUITE_P(Signals, InterruptedRepairTest, ::testing::ValuesIn(kSignals), signalName);

class InterruptedConversionTest : public ProgramTest,
                                  public ::testing::WithParamInterface<Signal> {};

TEST_P(InterruptedConversionTest, beginsNoFurtherFileAndEndsWithTheSignalsStatus) {
    constexpr std::size_t kMissing = 5'000;
    const std::string first = files.writeSound("first.xml");
    const std::string last = files.writeSound("last.xml");
    std::vector<std::string> arguments(kMissing, "missing.xml");
    arguments.insert(arguments.begin(), {"-convertxmeml", "3", first});
    arguments.push_back(last);
    RunningProgram program(files.converter(arguments));
    ASSERT_TRUE(program.readUntil("does not exist"));
    program.sendSignal(GetParam().number);
    const ProgramResult result = program.finish();
    EXPECT_EQ(result.status, GetParam().status);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(readBytes(first), soundXMEML("3"));
    EXPECT_EQ(readBytes(last), soundXMEML("5"));
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("first.xml", "last.xml"));
    EXPECT_LT(linesOf(result.errors).size(), kMissing);
}

INSTANTIATE_TEST_SUITE_P(Signals, InterruptedConversionTest, ::testing::ValuesIn(kSignals),
                         signalName);

using IgnoredSignalTest = ProgramTest;

TEST_F(IgnoredSignalTest, aSignalThatWasIgnoredAtTheStartStaysIgnored) {
    const std::string path = files.write("cut.xml", manyForbiddenCharacters());
    const auto before = std::signal(SIGHUP, SIG_IGN);
    RunningProgram program(files.repairer({path}));
    std::signal(SIGHUP, before);
    ASSERT_TRUE(program.readUntil("Invalid character at byte"));
    program.sendSignal(SIGHUP);
    EXPECT_EQ(program.finish().status, 0);
    EXPECT_EQ(readBytes(path), soundXMEML());
}

TEST_F(IgnoredSignalTest, aSecondSignalEndsTheProgramAtOnceAndLeavesTheUsersFile) {
    const std::string text = manyForbiddenCharacters();
    const std::string path = files.write("cut.xml", text);
    RunningProgram program(files.repairer({path}));
    ASSERT_TRUE(program.readUntil("Invalid character at byte"));
    program.sendSignal(SIGTERM);
    program.sendSignal(SIGINT);
    const ProgramResult result = program.finish();
    // The program may have ended by the first one before the second one came, and of two that wait
    // the system chooses which one comes first.
    EXPECT_TRUE(result.signal == SIGINT || result.signal == SIGTERM || result.status == 143 ||
                result.status == 130)
        << result.status;
    EXPECT_EQ(readBytes(path), text);
}

}  // namespace vornic::test
