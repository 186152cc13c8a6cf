// The arguments of vornic-check, its exit statuses and its output.

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/app/ProgramTest.h"
#include "tests/support/FileState.h"

namespace vornic::test {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class CheckCommandLineTest : public ProgramTest {
  protected:
    ProgramSettings checker(std::vector<std::string> arguments) const {
        ProgramSettings settings = files.repairer(std::move(arguments));
        settings.program = VORNIC_CHECK_PROGRAM;
        return settings;
    }
    ProgramResult check(std::vector<std::string> arguments) const {
        return runProgram(checker(std::move(arguments)));
    }
    [[nodiscard]] static std::string fcpxml(const std::string& resources) {
        return "<fcpxml version=\"1.10\">\n<resources>" + resources + "</resources>\n</fcpxml>\n";
    }
    std::string writeWrong(const std::string& name) const {
        return files.write(name, fcpxml("<fromat id=\"r1\"/>"));
    }
    void expectUsage(const std::vector<std::string>& arguments,
                     const std::string& complaint) const {
        const ProgramResult result = check(arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors,
                    StartsWith("vornic-check: " + complaint + "\nUsage: vornic-check "));
    }
};

TEST_F(CheckCommandLineTest, saysNothingOfASoundFileButTheSum) {
    const ProgramResult result = check({files.write("a.fcpxml", fcpxml(""))});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "0 errors, 0 warnings, 0 notes in 1 file\n");
    EXPECT_EQ(result.errors, "");
}

TEST_F(CheckCommandLineTest, tellsWhatIsWrongAndWhere) {
    writeWrong("a.fcpxml");
    const ProgramResult result = check({"a.fcpxml"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output,
              "ERROR(structure-unknown-element): a.fcpxml(2,12): <fromat> is no element of FCPXML; "
              "<format> should stand here\n"
              "    /fcpxml[1]/resources[1]/fromat[1]\n"
              "1 error, 0 warnings, 0 notes in 1 file\n");
}

TEST_F(CheckCommandLineTest, writesNoProjectFile) {
    const std::string path = writeWrong("a.fcpxml");
    const std::string before = readBytes(path);
    check({path});
    EXPECT_EQ(readBytes(path), before);
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("a.fcpxml"));
    EXPECT_FALSE(exists(files.trash()));
}

TEST_F(CheckCommandLineTest, judgesByTheRootElementWhateverTheExtension) {
    writeWrong("a.xml");
    EXPECT_EQ(check({"a.xml"}).status, 1);
}

TEST_F(CheckCommandLineTest, writesLinesThatEditorsRead) {
    writeWrong("a.fcpxml");
    EXPECT_EQ(check({"--format=gnu", "a.fcpxml"}).output,
              "a.fcpxml:2:12: error: <fromat> is no element of FCPXML; <format> should stand here "
              "[structure-unknown-element]\n");
}

TEST_F(CheckCommandLineTest, writesJSON) {
    writeWrong("a.fcpxml");
    const ProgramResult result = check({"--format", "json", "a.fcpxml"});
    EXPECT_EQ(result.status, 1);
    const auto report = nlohmann::json::parse(result.output);
    EXPECT_EQ(report["tool"]["name"], "vornic-check");
    EXPECT_EQ(report["files"][0]["findings"][0]["rule"], "structure-unknown-element");
    EXPECT_EQ(report["files"][0]["definition"]["valid"], false);
}

TEST_F(CheckCommandLineTest, writesSARIF) {
    writeWrong("a b.fcpxml");
    const ProgramResult result = check({"--format", "sarif", "a b.fcpxml", "missing.xml"});
    EXPECT_EQ(result.status, 3);
    const auto run = nlohmann::json::parse(result.output)["runs"][0];
    EXPECT_EQ(run["results"][0]["ruleId"], "structure-unknown-element");
    EXPECT_EQ(run["artifacts"][0]["location"]["uri"], "a%20b.fcpxml");
    const auto told = run["invocations"][0]["toolExecutionNotifications"][0];
    EXPECT_THAT(told["message"]["text"].get<std::string>(), HasSubstr("missing.xml"));
}

TEST_F(CheckCommandLineTest, reportsInTheOrderOfTheArguments) {
    std::vector<std::string> arguments{"--format", "gnu", "-j4"};
    std::string expected;
    for (int i = 0; i < 40; ++i) {
        const std::string name = "f" + std::to_string((i * 7) % 40) + ".fcpxml";
        writeWrong(name);
        arguments.push_back(name);
        expected += name +
                    ":2:12: error: <fromat> is no element of FCPXML; <format> should stand "
                    "here [structure-unknown-element]\n";
    }
    EXPECT_EQ(check(arguments).output, expected);
}

TEST_F(CheckCommandLineTest, looksIntoFoldersWhenAsked) {
    for (const char* folder : {"in", "in/deep", "in/Cut.fcpxmld", "in/.hidden"}) {
        ASSERT_EQ(mkdir(files.path(folder).c_str(), 0755), 0);
    }
    for (const char* name :
         {"in/b.XML", "in/a.fcpxml", "in/deep/c.xml", "in/Cut.fcpxmld/Info.fcpxml",
          "in/a-backup.fcpxml", "in/note.txt", "in/.hidden/d.xml", "in/.e.xml"}) {
        writeWrong(name);
    }
    ASSERT_EQ(symlink("..", files.path("in/deep/loop").c_str()), 0);
    const ProgramResult result = check({"-r", "--format", "gnu", "in"});
    const std::string rest =
        ":2:12: error: <fromat> is no element of FCPXML; <format> should stand here "
        "[structure-unknown-element]\n";
    EXPECT_EQ(result.output, "in/Cut.fcpxmld/Info.fcpxml" + rest + "in/a.fcpxml" + rest +
                                 "in/b.XML" + rest + "in/deep/c.xml" + rest);
    EXPECT_EQ(check({"in/Cut.fcpxmld"}).status, 1);
    const ProgramResult refused = check({"in"});
    EXPECT_EQ(refused.status, 3);
    EXPECT_THAT(refused.errors, HasSubstr("in: It is a folder; -r looks into folders."));
}

TEST_F(CheckCommandLineTest, goesOnAfterAFileThatCannotBeRead) {
    writeWrong("a.fcpxml");
    const ProgramResult result = check({"--format", "gnu", "missing.xml", "a.fcpxml"});
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.errors, HasSubstr("missing.xml"));
    EXPECT_THAT(result.output, StartsWith("a.fcpxml:2:12:"));
}

TEST_F(CheckCommandLineTest, failsOnWhatItIsToldTo) {
    writeWrong("a.fcpxml");
    EXPECT_EQ(check({"--fail-on", "never", "a.fcpxml"}).status, 0);
    EXPECT_EQ(check({"--fail-on", "info", "a.fcpxml"}).status, 1);
    EXPECT_EQ(check({"--ignore", "structure", "a.fcpxml"}).status, 0);
    EXPECT_EQ(check({"--only", "xml,values-standalone", "a.fcpxml"}).status, 0);
    EXPECT_EQ(check({"--only", "structure", "a.fcpxml"}).status, 1);
    EXPECT_EQ(check({"--only", "*", "--ignore", "structure-unknown-element", "a.fcpxml"}).status,
              0);
}

TEST_F(CheckCommandLineTest, showsAsManyAsItIsToldToAndCountsAll) {
    (void)files.write("a.fcpxml", fcpxml("<a/><a/><a/><a/>"));
    const ProgramResult result = check({"--max", "1", "a.fcpxml"});
    EXPECT_THAT(result.output, HasSubstr("3 more of structure-unknown-element in a.fcpxml\n"));
    EXPECT_THAT(result.output, HasSubstr("4 errors, 0 warnings, 0 notes in 1 file\n"));
}

TEST_F(CheckCommandLineTest, writesTheReportToAFile) {
    writeWrong("a.fcpxml");
    const ProgramResult result = check({"--report", "report.txt", "--format", "gnu", "a.fcpxml"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(readBytes(files.path("report.txt")), StartsWith("a.fcpxml:2:12: error:"));
    EXPECT_EQ(check({"--report", "no/such/folder", "a.fcpxml"}).status, 3);
}

TEST_F(CheckCommandLineTest, saysSoWhenTheReportCannotBeWritten) {
    writeWrong("a.fcpxml");
    ProgramSettings settings = checker({"a.fcpxml"});
    settings.output = ProgramStream::fullDevice;
    const ProgramResult result = runProgram(settings);
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.errors, HasSubstr("The report could not be written."));
}

TEST_F(CheckCommandLineTest, coloursATerminalAloneAndEscapesWhatCouldSteerIt) {
    (void)files.write("a.fcpxml", fcpxml("<media id=\"r1\" name=\"\xE2\x80\xAE\"><x/></media>"));
    ProgramSettings settings = checker({"a.fcpxml"});
    settings.output = ProgramStream::terminal;
    EXPECT_THAT(runProgram(settings).output, HasSubstr("\x1B[1;31mERROR("));
    EXPECT_THAT(runProgram(settings).output, HasSubstr("<U+202E>"));
    settings.environment.emplace_back("NO_COLOR=1");
    EXPECT_THAT(runProgram(settings).output, StartsWith("ERROR("));
}

TEST_F(CheckCommandLineTest, listsAndExplainsItsRules) {
    const ProgramResult list = check({"--list-rules"});
    EXPECT_EQ(list.status, 0);
    EXPECT_THAT(list.output, HasSubstr("structure-unknown-element (error)\n"));
    const ProgramResult page = check({"--explain", "structure-unknown-element"});
    EXPECT_EQ(page.status, 0);
    EXPECT_THAT(page.output, HasSubstr("How to mend it: "));
    EXPECT_EQ(check({"--explain", "no-such-rule"}).status, 2);
}

TEST_F(CheckCommandLineTest, refusesWrongUsage) {
    expectUsage({}, "no file named");
    expectUsage({"--fast", "a.xml"}, "unknown option --fast");
    expectUsage({"--format", "xml", "a.xml"}, "there is no format xml");
    expectUsage({"--max", "0", "a.xml"}, "--max wants a number above 0, not 0");
    expectUsage({"--max"}, "the option --max wants a value");
    expectUsage({"--only", "structures", "a.xml"}, "there is no rule or group structures");
    expectUsage({"--least", "fatal", "a.xml"}, "--least wants error, warning or info, not fatal");
    expectUsage({"--reads", "2.0", "a.xml"},
                "--reads wants a version of FCPXML (1.0 to 1.14) or of XMEML (1 to 5), not 2.0");
    expectUsage({"--fail-on", "x", "a.xml"},
                "--fail-on wants error, warning, info or never, not x");
}

TEST_F(CheckCommandLineTest, takesWhatFollowsTwoDashesForFiles) {
    writeWrong("-r");
    EXPECT_EQ(check({"--", "-r"}).status, 1);
}

}  // namespace vornic::test
