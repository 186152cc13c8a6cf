// The arguments of vornic-repair, its exit statuses and its output streams.

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/ProgramTest.h"
#include "tests/support/machine/FileState.h"

namespace vornic::test {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

class RepairCommandLineTest : public ProgramTest {
  protected:
    void expectUsage(const std::vector<std::string>& arguments,
                     const std::string& complaint) const {
        const ProgramResult result = files.repair(arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, StartsWith("vornic-repair: " + complaint +
                                              "\nUsage: vornic-repair [--quiet] [--] FILE...\n"));
    }

    /// The file is repaired whether anybody can read about it or not.
    void expectRepairedWithStreams(ProgramStream output, ProgramStream errors, int status,
                                   const std::string& complaint = "") const {
        const std::string path = files.writeDamaged("cut.xml");
        ProgramSettings settings = files.repairer({path});
        settings.output = output;
        settings.errors = errors;
        const ProgramResult result = runProgram(settings);
        EXPECT_EQ(result.status, status);
        const std::string original =
            "The original is " + files.trash() + "/cut.xml; vornic-repair --undo brings it back.\n";
        EXPECT_EQ(result.errors, errors == ProgramStream::captured ? original + complaint : "");
        EXPECT_EQ(readBytes(path), repairedXMEML());
        EXPECT_THAT(namesIn(files.folder()), ElementsAre("cut.xml"));
        EXPECT_EQ(readBytes(files.trash() + "/cut.xml"), damagedXMEML());
        EXPECT_EQ(files.log(), repairedLog(path));
    }
};

TEST_F(RepairCommandLineTest, withoutAFileItReportsHowItIsUsed) {
    expectUsage({}, "no file named");
}

TEST_F(RepairCommandLineTest, twoDashesNameNoFile) {
    expectUsage({"--"}, "no file named");
}

TEST_F(RepairCommandLineTest, quietAloneNamesNoFile) {
    expectUsage({"--quiet"}, "no file named");
}

TEST_F(RepairCommandLineTest, anUnknownOptionIsWrongUsageAndNothingIsRepaired) {
    const std::string path = files.writeDamaged("cut.xml");
    expectUsage({path, "--fast"}, "unknown option --fast");
    EXPECT_EQ(readBytes(path), damagedXMEML());
    EXPECT_FALSE(exists(files.logPath()));
}

TEST_F(RepairCommandLineTest, anOptionWithPercentSignsIsNamedAsItStands) {
    expectUsage({"-%s%n%@"}, "unknown option -%s%n%@");
}

TEST_F(RepairCommandLineTest, helpGoesToStandardOutput) {
    const ProgramResult result = files.repair({"--help"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, StartsWith("Usage: vornic-repair [--quiet] [--] FILE...\n"));
    for (const char* word : {"--quiet", "--help", "--version", "Trash", "129", "130", "143"}) {
        EXPECT_THAT(result.output, HasSubstr(word));
    }
    EXPECT_FALSE(exists(files.logPath()));
}

TEST_F(RepairCommandLineTest, versionGoesToStandardOutput) {
    const ProgramResult result = files.repair({"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, MatchesRegex("vornic-repair [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST_F(RepairCommandLineTest, quietPrintsNothingAndLogsEverything) {
    const std::string path = files.writeDamaged("cut.xml");
    const ProgramResult result = files.repair({"--quiet", path});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(readBytes(path), repairedXMEML());
    EXPECT_EQ(files.log(), repairedLog(path));
}

TEST_F(RepairCommandLineTest, quietStillReportsWhyAFileWasNotLookedAt) {
    const ProgramResult result = files.repair({"--quiet", files.path("missing.xml")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, HasSubstr("Unable to locate file."));
}

TEST_F(RepairCommandLineTest, aFileThatMayNotBeLookedAtIsReportedAsSuch) {
    const std::string folder = files.path("closed");
    std::filesystem::create_directory(folder);
    std::filesystem::permissions(folder, std::filesystem::perms::none);
    const std::string path = folder + "/cut.xml";
    const ProgramResult result = files.repair({path});
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "The file " + path + " cannot be looked at: permission denied.\n");
    EXPECT_EQ(result.errors,
              "vornic-repair: Unable to locate file. The file " + path + " cannot be found.\n");
}

TEST_F(RepairCommandLineTest, anOptionMayFollowAFile) {
    const std::string path = files.writeSound("cut.xml");
    const ProgramResult result = files.repair({path, "--quiet"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "");
}

TEST_F(RepairCommandLineTest, aSingleDashIsTheNameOfAFile) {
    const std::string path = files.writeSound("-");
    EXPECT_EQ(files.repair({"-"}).output, soundReport(path));
}

TEST_F(RepairCommandLineTest, anEmptyNameIsAMissingFile) {
    const ProgramResult result = files.repair({""});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "vornic-repair: Unable to locate file. The file  cannot be found.\n");
}

TEST_F(RepairCommandLineTest, goesOnAfterABadFileAndEndsWithOne) {
    const std::string first = files.writeDamaged("first.xml");
    const std::string bad = files.write("bad.xml", "x");
    const std::string missing = files.path("missing.xml");
    const std::string last = files.writeSound("last.xml");
    const ProgramResult result = files.repair({first, bad, missing, last});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(
        result.output,
        MatchesRegex(repairedReport("[^\n]*first.xml") +
                     "Starting repair for file [^\n]*bad.xml\\.\\.\\.\n(.|\n)*" +
                     "Unable to remove temporary file [^\n]*\n" + soundReport("[^\n]*last.xml")));
    EXPECT_EQ(result.errors, "The original is " + files.trash() +
                                 "/first.xml; vornic-repair --undo brings it back.\n"
                                 "vornic-repair: Unable to locate file. The file " +
                                 missing + " cannot be found.\n");
    EXPECT_EQ(readBytes(first), repairedXMEML());
    EXPECT_EQ(readBytes(bad), "x");
    EXPECT_EQ(readBytes(last), soundXMEML());
}

TEST_F(RepairCommandLineTest, endsWithZeroWhenEveryFileIsSoundOrRepaired) {
    const std::string first = files.writeDamaged("first.xml");
    const std::string second = files.writeSound("second.xml");
    const ProgramResult result = files.repair({first, second, first});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, repairedReport(first) + soundReport(second) + soundReport(first));
}

TEST_F(RepairCommandLineTest, writesItsReportIntoNoOtherFileWhenItHasNoOutput) {
    expectRepairedWithStreams(ProgramStream::closed, ProgramStream::captured, 0);
}

TEST_F(RepairCommandLineTest, writesIntoNoOtherFileWhenItHasNeitherStream) {
    expectRepairedWithStreams(ProgramStream::closed, ProgramStream::closed, 0);
}

TEST_F(RepairCommandLineTest, writesNoAlertIntoAnotherFileWhenItHasNoStandardError) {
    const std::string path = files.writeSound("cut.xml");
    ProgramSettings settings = files.repairer({files.path("missing.xml"), path});
    settings.errors = ProgramStream::closed;
    EXPECT_EQ(runProgram(settings).status, 1);
    EXPECT_EQ(readBytes(path), soundXMEML());
    EXPECT_EQ(files.log().front(),
              "Beginning repair for file " + files.path("missing.xml") + "...");
}

TEST_F(RepairCommandLineTest, repairsToTheEndWhenNobodyReadsItsReportAndSaysSo) {
    expectRepairedWithStreams(ProgramStream::brokenPipe, ProgramStream::captured, 1,
                              "vornic-repair: Not everything could be written to standard output: "
                              "the other end is closed.\n");
}

TEST_F(RepairCommandLineTest, repairsToTheEndWhenNobodyReadsEitherStream) {
    expectRepairedWithStreams(ProgramStream::brokenPipe, ProgramStream::brokenPipe, 1);
}

TEST_F(RepairCommandLineTest, repairsToTheEndWhenItsReportCannotBeWrittenAndSaysSo) {
    expectRepairedWithStreams(ProgramStream::fullDevice, ProgramStream::captured, 1,
                              "vornic-repair: Not everything could be written to standard output: "
                              "no space left on the volume.\n");
}

TEST_F(RepairCommandLineTest, quietWritesNoReportThatCouldFail) {
    const std::string path = files.writeDamaged("cut.xml");
    ProgramSettings settings = files.repairer({"--quiet", path});
    settings.output = ProgramStream::fullDevice;
    EXPECT_EQ(runProgram(settings).status, 0);
    EXPECT_EQ(readBytes(path), repairedXMEML());
}

TEST_F(RepairCommandLineTest, helpThatCannotBeWrittenIsAFailure) {
    for (const char* option : {"--help", "--version"}) {
        ProgramSettings settings = files.repairer({option});
        settings.output = ProgramStream::fullDevice;
        const ProgramResult result = runProgram(settings);
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.errors, HasSubstr("no space left on the volume"));
    }
}

/// A file whose version would pass for a line of the report and for orders to a terminal.
class RepairForgeryTest : public ProgramTest {
  protected:
    [[nodiscard]] std::string outputOn(ProgramStream stream) const {
        std::string text = soundXMEML();
        text.replace(text.find("version=\"5\""), 11,
                     "version=\"6&#10;No repair was necessary.&#155;2J&#9;\"");
        ProgramSettings settings = files.repairer({files.write("cut.xml", text)});
        settings.output = stream;
        return runProgram(settings).output;
    }
};

TEST_F(RepairForgeryTest, isWrittenOutOnATerminal) {
    EXPECT_THAT(outputOn(ProgramStream::terminal),
                HasSubstr("\nUnrecognized XML Interchange version "
                          "6<U+000A>No repair was necessary.<U+009B>2J<U+0009>.\n"));
}

TEST_F(RepairForgeryTest, standsInAPipeAsInTheFile) {
    EXPECT_THAT(outputOn(ProgramStream::captured),
                HasSubstr("\nUnrecognized XML Interchange version "
                          "6\nNo repair was necessary.\xC2\x9B"
                          "2J\t.\n"));
}

/// Runs on ever longer files, until one takes long enough for a progress bar to be drawn.
class RepairProgressTest : public ProgramTest {
  protected:
    std::string writeLong(std::size_t names) const {
        std::string text = soundXMEML();
        std::string added;
        for (std::size_t i = 0; i < names; ++i) {
            added += "        <name>Harbour at dawn, the \"long\" take, quay and pier</name>\n";
        }
        text.insert(text.find("    </sequence>"), added);
        return files.write("cut.xml", text);
    }

    ProgramResult runOn(const std::string& path, ProgramStream output, ProgramStream errors) const {
        ProgramSettings settings = files.repairer({path});
        settings.output = output;
        settings.errors = errors;
        return runProgram(settings);
    }

    /// The number of names in a file during whose repair a bar was drawn.
    std::size_t namesForABar(ProgramResult& result) const {
        constexpr std::size_t kFirst = 50'000;
        constexpr std::size_t kMost = 6'400'000;
        for (std::size_t names = kFirst; names <= kMost; names *= 2) {
            result = runOn(writeLong(names), ProgramStream::captured, ProgramStream::terminal);
            if (!result.errors.empty()) {
                return names;
            }
        }
        ADD_FAILURE() << "no bar was drawn";
        return kMost;
    }
};

TEST_F(RepairProgressTest, drawsABarOnATerminalAndTakesItAway) {
    ProgramResult result;
    namesForABar(result);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, soundReport(files.path("cut.xml")));
    EXPECT_THAT(result.errors, MatchesRegex("(\r\x1B\\[K(\\[#*\\.*\\] +[0-9]+%|Repairing\\.\\.\\.)"
                                            "|\r\x1B\\[K)*\r\x1B\\[K"));
}

TEST_F(RepairProgressTest, drawsNoBarWhereNoTerminalIs) {
    ProgramResult result;
    const std::string path = writeLong(namesForABar(result));
    result = runOn(path, ProgramStream::terminal, ProgramStream::captured);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, soundReport(path));
    EXPECT_EQ(result.errors, "");
}

TEST_F(RepairProgressTest, neverMixesTheBarWithALineOfTheReport) {
    ProgramResult result;
    const std::string path = writeLong(namesForABar(result));
    ProgramSettings settings = files.repairer({path});
    settings.output = ProgramStream::terminal;
    settings.errors = ProgramStream::terminal;
    result = runProgram(settings);
    EXPECT_EQ(result.output, soundReport(path));
}

}  // namespace vornic::test
