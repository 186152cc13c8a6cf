// The arguments of the converter and what it says about them.

#include <algorithm>
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
using ::testing::MatchesRegex;

namespace {

constexpr const char* kInvalidSyntax = "Error: invalid syntax";
constexpr const char* kInvalidVersion = "Error: XMEML version must be between 1 and 5";

struct Version {
    const char* test;
    const char* argument;
    const char* target;
};

void PrintTo(const Version& version, std::ostream* stream) {
    *stream << version.test;
}

constexpr Version kVersions[] = {
    {"one", "1", "1"},          {"two", "2", "2"},   {"three", "3", "3"},
    {"four", "4", "4"},         {"five", "5", "5"},  {"digitsBeforeLetters", "4abc", "4"},
    {"leadingZero", "03", "3"}, {"sign", "+2", "2"}, {"leadingBlanks", " \t3", "3"},
    {"fraction", "2.9", "2"},
};

constexpr Version kNoVersions[] = {
    {"zero", "0", ""},
    {"six", "6", ""},
    {"negative", "-2", ""},
    {"letter", "x", ""},
    {"letterBeforeDigits", "v3", ""},
    {"nothing", "", ""},
    {"huge", "99999999999999999999999", ""},
    {"threeModuloTwoToThe32", "4294967299", ""},
    {"threeModuloTwoToThe64", "18446744073709551619", ""},
    {"blankInside", "- 3", ""},
    {"anotherSwitch", "-convertxmeml", ""},
};

std::string testName(const ::testing::TestParamInfo<Version>& version) {
    return version.param.test;
}

/// The lines that the converter wrote on the console, each without its date, program and process.
std::vector<std::string> consoleMessages(const ProgramResult& result) {
    const std::string form =
        "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3} vornic\\[[0-9]+\\] .*";
    std::vector<std::string> messages;
    for (const std::string& line : linesOf(result.errors)) {
        EXPECT_THAT(line, MatchesRegex(form));
        messages.push_back(line.substr(std::min(line.find("] ") + 2, line.size())));
    }
    return messages;
}

}  // namespace

class ConvertCommandLineTest : public ProgramTest {
  protected:
    void expectRefused(const std::vector<std::string>& arguments, const char* message) const {
        const ProgramResult result = files.convert(arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(consoleMessages(result), ElementsAre(message));
    }

    void expectConverted(const std::vector<std::string>& arguments,
                         const std::vector<std::string>& messages = {}) const {
        const ProgramResult result = files.convert(arguments);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(consoleMessages(result), messages);
    }
};

class ConvertToVersionTest : public ConvertCommandLineTest,
                             public ::testing::WithParamInterface<Version> {};

TEST_P(ConvertToVersionTest, setsTheVersionAndNothingElse) {
    const std::string older = files.write("older.xml", soundXMEML("1"));
    const std::string newer = files.write("newer.xml", soundXMEML("5"));
    expectConverted({"-convertxmeml", GetParam().argument, older, newer});
    EXPECT_EQ(readBytes(older), soundXMEML(GetParam().target));
    EXPECT_EQ(readBytes(newer), soundXMEML(GetParam().target));
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("newer.xml", "older.xml"));
}

INSTANTIATE_TEST_SUITE_P(Versions, ConvertToVersionTest, ::testing::ValuesIn(kVersions), testName);

class ConvertToNoVersionTest : public ConvertCommandLineTest,
                               public ::testing::WithParamInterface<Version> {};

TEST_P(ConvertToNoVersionTest, isRefusedAndNothingIsConverted) {
    const std::string path = files.writeSound("cut.xml");
    expectRefused({"-convertxmeml", GetParam().argument, path}, kInvalidVersion);
    EXPECT_EQ(readBytes(path), soundXMEML());
}

INSTANTIATE_TEST_SUITE_P(NoVersions, ConvertToNoVersionTest, ::testing::ValuesIn(kNoVersions),
                         testName);

TEST_F(ConvertCommandLineTest, theSwitchAloneIsInvalidSyntax) {
    expectRefused({"-convertxmeml"}, kInvalidSyntax);
}

TEST_F(ConvertCommandLineTest, aVersionWithoutAFileIsInvalidSyntax) {
    expectRefused({"-convertxmeml", "3"}, kInvalidSyntax);
}

TEST_F(ConvertCommandLineTest, aMissingFileNameIsReportedBeforeAWrongVersion) {
    expectRefused({"-convertxmeml", "9"}, kInvalidSyntax);
}

TEST_F(ConvertCommandLineTest, filesBeforeTheSwitchDoNotCount) {
    expectRefused({files.writeSound("cut.xml"), "-convertxmeml", "3"}, kInvalidSyntax);
}

TEST_F(ConvertCommandLineTest, theSwitchMayStandAnywhere) {
    const std::string path = files.writeSound("cut.xml");
    const std::string before = files.writeSound("before.xml");
    expectConverted({"-psn_0_1234", before, "-convertxmeml", "3", path});
    EXPECT_EQ(readBytes(path), soundXMEML("3"));
    EXPECT_EQ(readBytes(before), soundXMEML("5"));
}

TEST_F(ConvertCommandLineTest, onlyTheFirstOfSeveralSwitchesCounts) {
    const std::string first = files.writeSound("first.xml");
    const std::string second = files.writeSound("second.xml");
    expectConverted({"-convertxmeml", "3", first, "-convertxmeml", "4", second},
                    {"File " + files.path("-convertxmeml") + " does not exist",
                     "File " + files.path("4") + " does not exist"});
    EXPECT_EQ(readBytes(first), soundXMEML("3"));
    EXPECT_EQ(readBytes(second), soundXMEML("3"));
}

TEST_F(ConvertCommandLineTest, aFileNameMayBeginWithADash) {
    const std::string path = files.writeSound("-cut.xml");
    const std::string dashes = files.writeSound("--");
    expectConverted({"-convertxmeml", "3", "-cut.xml", "--"});
    EXPECT_EQ(readBytes(path), soundXMEML("3"));
    EXPECT_EQ(readBytes(dashes), soundXMEML("3"));
}

TEST_F(ConvertCommandLineTest, aRelativePathIsFoundInTheWorkingFolder) {
    const std::string path = files.writeSound("cut.xml");
    expectConverted({"-convertxmeml", "3", "cut.xml"});
    EXPECT_EQ(readBytes(path), soundXMEML("3"));
}

TEST_F(ConvertCommandLineTest, aMissingFileIsReportedUnderItsPathInTheWorkingFolder) {
    expectConverted({"-convertxmeml", "3", "missing.xml"},
                    {"File " + files.path("missing.xml") + " does not exist"});
}

TEST_F(ConvertCommandLineTest, anAbsoluteMissingPathIsReportedBelowTheWorkingFolder) {
    expectConverted({"-convertxmeml", "3", "/nowhere/missing.xml"},
                    {"File " + files.path("nowhere/missing.xml") + " does not exist"});
}

TEST_F(ConvertCommandLineTest, anAbsoluteMissingPathIsLookedForBelowTheWorkingFolder) {
    const std::string path = files.writeSound("cut of this test.xml");
    expectConverted({"-convertxmeml", "3", "/cut of this test.xml"});
    EXPECT_EQ(readBytes(path), soundXMEML("3"));
}

TEST_F(ConvertCommandLineTest, goesOnAfterAMissingFile) {
    const std::string path = files.writeSound("cut.xml");
    expectConverted({"-convertxmeml", "3", "missing.xml", path},
                    {"File " + files.path("missing.xml") + " does not exist"});
    EXPECT_EQ(readBytes(path), soundXMEML("3"));
}

TEST_F(ConvertCommandLineTest, goesOnAfterAFileThatIsNoXML) {
    const std::string bad = files.write("bad.xml", "x");
    const std::string path = files.writeSound("cut.xml");
    expectConverted({"-convertxmeml", "3", bad, path},
                    {"Unable to load XML file " + bad +
                     ": Line 1, column 1: there is text before the root element."});
    EXPECT_EQ(readBytes(bad), "x");
    EXPECT_EQ(readBytes(path), soundXMEML("3"));
}

TEST_F(ConvertCommandLineTest, convertsAFileThatIsNamedTwiceTwice) {
    const std::string path = files.writeSound("cut.xml");
    expectConverted({"-convertxmeml", "3", path, path});
    EXPECT_EQ(readBytes(path), soundXMEML("3"));
}

TEST_F(ConvertCommandLineTest, takesAPathWithPercentSignsForNoFormat) {
    const std::string name = "100% %@ %s %n %1$s.xml";
    expectConverted({"-convertxmeml", "3", name}, {"File " + files.path(name) + " does not exist"});
    const std::string path = files.writeSound(name);
    expectConverted({"-convertxmeml", "3", name});
    EXPECT_EQ(readBytes(path), soundXMEML("3"));
}

TEST_F(ConvertCommandLineTest, takesNamesWithBlanksQuotesAndBytesThatAreNoText) {
    for (const char* name : {" the cut .xml", "\"cut\" 'cut'.xml", "the\ncut.xml", "Caf\xE9.xml"}) {
        const std::string path = files.writeSound(name);
        expectConverted({"-convertxmeml", "3", name});
        EXPECT_EQ(readBytes(path), soundXMEML("3"));
    }
}

TEST_F(ConvertCommandLineTest, convertsWithoutStandardStreams) {
    const std::string bad = files.write("bad.xml", "x");
    const std::string path = files.writeSound("cut.xml");
    ProgramSettings settings =
        files.converter({"-convertxmeml", "3", "missing.xml", bad, path, "missing.xml"});
    settings.output = ProgramStream::closed;
    settings.errors = ProgramStream::closed;
    EXPECT_EQ(runProgram(settings).status, 0);
    EXPECT_EQ(readBytes(bad), "x");
    EXPECT_EQ(readBytes(path), soundXMEML("3"));
    EXPECT_THAT(files.log(), ::testing::IsEmpty());
}

TEST_F(ConvertCommandLineTest, saysThatItsMessagesCannotBeWritten) {
    ProgramSettings settings = files.converter(
        {"-convertxmeml", "3", files.write("bad.xml", "<a/>"), files.writeSound("cut.xml")});
    settings.output = ProgramStream::fullDevice;
    const ProgramResult result = runProgram(settings);
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(consoleMessages(result),
                ElementsAre("Not everything could be written to standard output."));
    EXPECT_EQ(readBytes(files.path("cut.xml")), soundXMEML("3"));
}

TEST_F(ConvertCommandLineTest, writesControlCharactersOutOnATerminal) {
    ProgramSettings settings = files.converter({"-convertxmeml", "3", "a\x1B[2J\nb.xml"});
    settings.errors = ProgramStream::terminal;
    EXPECT_THAT(consoleMessages(runProgram(settings)),
                ElementsAre("File " + files.path("a<U+001B>[2J<U+000A>b.xml") + " does not exist"));
}

TEST_F(ConvertCommandLineTest, convertsWhenNobodyReadsItsMessages) {
    const std::string bad = files.write("bad.xml", "<a/>");
    const std::string path = files.writeSound("cut.xml");
    ProgramSettings settings = files.converter({"-convertxmeml", "3", "missing.xml", bad, path});
    settings.output = ProgramStream::brokenPipe;
    settings.errors = ProgramStream::brokenPipe;
    EXPECT_EQ(runProgram(settings).status, 0);
    EXPECT_EQ(readBytes(path), soundXMEML("3"));
}

}  // namespace vornic::test
