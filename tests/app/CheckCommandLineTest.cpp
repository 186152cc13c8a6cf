// The arguments of vornic-check, its exit statuses and its output.

#include <csignal>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/app/ProgramTest.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Waiting.h"
#include "tests/support/texts/LogText.h"

namespace vornic::test {

using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class CheckCommandLineTest : public ProgramTest {
  protected:
    ProgramSettings checker(std::vector<std::string> arguments) const {
        ProgramSettings settings = files.repairer(std::move(arguments));
        settings.program = material.program("vornic-check");
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

TEST_F(CheckCommandLineTest, drawsTheTimelineBesideTheReport) {
    const std::string project =
        "<fcpxml version=\"1.10\"><resources><format id=\"r1\" "
        "frameDuration=\"1/25s\"/></resources>"
        "<project name=\"A &amp; B\"><sequence format=\"r1\"><spine>"
        "<gap name=\"hole\" offset=\"0s\" duration=\"2s\"/>"
        "<gap name=\"late\" offset=\"9s\" duration=\"2s\"/></spine></sequence></project></fcpxml>";
    static_cast<void>(files.write("a.fcpxml", project));
    const ProgramResult result = check({"--timeline", "a.svg", "a.fcpxml"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr("timing-spine-hole"));
    const std::string picture = readBytes(files.path("a.svg"));
    EXPECT_THAT(picture, HasSubstr("A &amp; B"));
    EXPECT_THAT(picture, HasSubstr("gap&#10;late&#10;at 00:00:09:00"));
    const ProgramResult piped = check({"--timeline", "-", "--quiet", "a.fcpxml"});
    EXPECT_EQ(piped.output, picture);
    expectUsage({"--timeline", "-", "a.fcpxml"},
                "--timeline - wants the report elsewhere: --report FILE or --quiet");
    expectUsage({"--timeline", "b.svg", "--fix", "a.fcpxml"},
                "--timeline and --fix do not go together");
    expectUsage({"--timeline", "a.fcpxml", "a.fcpxml"},
                "the picture would take the place of a file that is checked");
    EXPECT_EQ(readBytes(files.path("a.fcpxml")), project);
}

TEST_F(CheckCommandLineTest, reportsWhatIsWrongAndWhere) {
    writeWrong("a.fcpxml");
    const ProgramResult result = check({"a.fcpxml"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output,
              "ERROR(structure-unknown-element): a.fcpxml(2,12): <fromat> \"r1\" is no element of "
              "FCPXML; "
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
    EXPECT_EQ(
        check({"--format=gnu", "a.fcpxml"}).output,
        "a.fcpxml:2:12: error: <fromat> \"r1\" is no element of FCPXML; <format> should stand here "
        "[structure-unknown-element]\n");
}

TEST_F(CheckCommandLineTest, reportsToEditorsWhatIsNotShownAndWhatWasNotChecked) {
    static_cast<void>(files.write(
        "a.fcpxml", "<fcpxml version=\"1.10\"><resources><a/><b/><c/></resources></fcpxml>"));
    EXPECT_EQ(check({"--format=gnu", "--max=1", "a.fcpxml"}).output,
              "a.fcpxml:1:35: error: <a> is no element of FCPXML; <asset>, <effect>, <format>, "
              "<media> or <locator> should stand here [structure-unknown-element]\n"
              "a.fcpxml:1:1: note: not shown: 2 more [structure-unknown-element]\n");
    static_cast<void>(files.write("b.fcpxml", "<fcpxml version=\"1.99\"/>"));
    EXPECT_THAT(check({"--format=gnu", "b.fcpxml"}).output,
                EndsWith("b.fcpxml:1:1: note: structure did not run: no definition of this version "
                         "is known\n"));
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
                    ":2:12: error: <fromat> \"r1\" is no element of FCPXML; <format> should stand "
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
        ":2:12: error: <fromat> \"r1\" is no element of FCPXML; <format> should stand here "
        "[structure-unknown-element]\n";
    EXPECT_EQ(result.output, "in/Cut.fcpxmld/Info.fcpxml" + rest + "in/a.fcpxml" + rest +
                                 "in/b.XML" + rest + "in/deep/c.xml" + rest);
    EXPECT_EQ(check({"in/Cut.fcpxmld"}).status, 1);
    ASSERT_EQ(unlink(files.path("in/Cut.fcpxmld/Info.fcpxml").c_str()), 0);
    EXPECT_THAT(check({"in/Cut.fcpxmld"}).errors, HasSubstr("in/Cut.fcpxmld/Info.fcpxml"));
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
    EXPECT_THAT(check({"--report", "-", "a.fcpxml"}).output, HasSubstr("1 error, "));
    EXPECT_THAT(check({"--report", "/dev/stdout", "a.fcpxml"}).output, HasSubstr("1 error, "));
}

TEST_F(CheckCommandLineTest, replacesAnOlderReportAsAWholeAndKeepsALink) {
    writeWrong("a.fcpxml");
    (void)files.write("old.txt", std::string(100'000, 'x'));
    ASSERT_EQ(symlink("old.txt", files.path("link.txt").c_str()), 0);
    EXPECT_EQ(check({"--report", "link.txt", "a.fcpxml"}).status, 1);
    EXPECT_TRUE(std::filesystem::is_symlink(files.path("link.txt")));
    EXPECT_THAT(readBytes(files.path("old.txt")), StartsWith("ERROR(structure-unknown-element)"));
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("a.fcpxml", "link.txt", "old.txt"));
}

TEST_F(CheckCommandLineTest, writesNoReportOverAProject) {
    writeWrong("a.fcpxml");
    const std::string other = files.writeSound("b.xml");
    const std::string before = readBytes(other);
    expectUsage({"--report", "a.fcpxml", "a.fcpxml"},
                "the report would take the place of a file that is checked");
    ASSERT_EQ(symlink("a.fcpxml", files.path("link").c_str()), 0);
    expectUsage({"--report", "link", "a.fcpxml"},
                "the report would take the place of a file that is checked");
    const ProgramResult result = check({"--report", "b.xml", "a.fcpxml"});
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(
        result.errors,
        "vornic-check: The report cannot be written to b.xml: a project file stands there.\n");
    EXPECT_EQ(readBytes(other), before);
    EXPECT_THAT(readBytes(files.path("a.fcpxml")), StartsWith("<fcpxml"));
}

TEST_F(CheckCommandLineTest, saysSoWhenTheReportCannotBeWritten) {
    writeWrong("a.fcpxml");
    ProgramSettings settings = checker({"a.fcpxml"});
    settings.output = ProgramStream::fullDevice;
    const ProgramResult result = runProgram(settings);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "vornic-check: Not everything could be written to standard output: no space left on "
              "the volume.\n");
    settings.arguments = {"--list-rules"};
    EXPECT_EQ(runProgram(settings).status, 1);
}

TEST_F(CheckCommandLineTest, endsQuietlyWhenNobodyReads) {
    ProgramSettings settings = checker({writeWrong("a.fcpxml"), "--format", "json"});
    settings.output = ProgramStream::brokenPipe;
    const ProgramResult result = runProgram(settings);
    EXPECT_EQ(result.signal, 0);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(linesOf(result.errors).size(), 1U);
}

TEST_F(CheckCommandLineTest, readsStandardInput) {
    const std::string path = writeWrong("a.fcpxml");
    ProgramSettings settings =
        checker({"-c", "exec \"$0\" --format gnu - < a.fcpxml", material.program("vornic-check")});
    settings.program = "/bin/sh";
    const ProgramResult result = runProgram(settings);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, StartsWith("-:2:12: error: "));
}

TEST_F(CheckCommandLineTest, showsWhereAPathLeads) {
    writeWrong("a.fcpxml");
    const ProgramResult found =
        check({"--where", "/fcpxml[1]/resources[1]/fromat/@id", "a.fcpxml"});
    EXPECT_EQ(found.status, 0);
    EXPECT_EQ(found.output,
              "a.fcpxml(2,24): /fcpxml[1]/resources[1]/fromat/@id\n"
              "      1 | <fcpxml version=\"1.10\">\n"
              "      2 | <resources><fromat id=\"r1\"/></resources>\n"
              "        |                        ^\n"
              "      3 | </fcpxml>\n");
    const ProgramResult missing = check({"--where=/fcpxml/event", "a.fcpxml"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.output, "");
    EXPECT_THAT(missing.errors,
                StartsWith("a.fcpxml: the path ends at /fcpxml: there is no <event> in it\n"));
    EXPECT_EQ(check({"--where", "/fcpxml", "missing.xml"}).status, 3);
}

TEST_F(CheckCommandLineTest, keepsALogOfItsOwn) {
    EXPECT_EQ(files.repair({files.writeSound("b.xml")}).status, 0);
    const std::string log = readBytes(files.logPath());
    for (int i = 0; i < 6; ++i) {
        check({writeWrong("a.fcpxml"), "missing.xml"});
    }
    EXPECT_EQ(readBytes(files.logPath()), log);
    const std::string own = readBytes(files.library("Logs/Quillmark") + "/vornic-check.1.log");
    EXPECT_THAT(own, HasSubstr("a.fcpxml: 1 errors, 0 warnings, 0 notes\n"));
    EXPECT_THAT(own, HasSubstr("missing.xml"));
}

TEST_F(CheckCommandLineTest, leavesAnUnreadableFileAndReportsWhy) {
    const std::string path = writeWrong("a.fcpxml");
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    const ProgramResult result = check({"a.fcpxml"});
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.errors, HasSubstr("permission denied"));
    EXPECT_EQ(result.output, "0 errors, 0 warnings, 0 notes in 0 files\n");
}

TEST_F(CheckCommandLineTest, endsAtASignalWithoutTheSum) {
    std::string faults;
    for (int i = 0; i < 20'000; ++i) {
        faults += "<a/>";
    }
    (void)files.write("a.fcpxml", fcpxml(faults));
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        RunningProgram program(checker({"--max", "20000", "a.fcpxml"}));
        EXPECT_TRUE(program.readUntil("ERROR"));
        program.sendSignal(number);
        const ProgramResult result = program.finish();
        EXPECT_EQ(result.status, 128 + number);
        EXPECT_THAT(result.output, Not(HasSubstr("notes in 1 file")));
    }
}

TEST_F(CheckCommandLineTest, showsProgressOfALongRunOnATerminal) {
    writeWrong("a.fcpxml");
    ASSERT_EQ(mkfifo(files.path("pipe").c_str(), 0600), 0);
    const int pipe = open(files.path("pipe").c_str(), O_RDWR | O_CLOEXEC);
    ProgramSettings settings = checker(
        {"-c", "exec \"$0\" --format gnu a.fcpxml - < pipe", material.program("vornic-check")});
    settings.program = "/bin/sh";
    settings.errors = ProgramStream::terminal;
    RunningProgram program(settings);
    EXPECT_TRUE(program.readUntil("]  50% 1 of 2 files"));
    ASSERT_EQ(write(pipe, "<xmeml", 6), 6);
    close(pipe);
    const ProgramResult result = program.finish();
    EXPECT_THAT(result.output, HasSubstr("\n-:1:"));
    EXPECT_TRUE(result.errors.ends_with("\r\033[K"));
    EXPECT_EQ(check({"a.fcpxml"}).errors, "");
}

TEST_F(CheckCommandLineTest, saysNothingWhenAskedTo) {
    writeWrong("a.fcpxml");
    const ProgramResult result = check({"--quiet", "a.fcpxml"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output + result.errors, "");
    EXPECT_THAT(check({"--quiet", "missing.xml"}).errors, HasSubstr("missing.xml"));
}

TEST_F(CheckCommandLineTest, leavesTheOlderReportWhenASignalEndsIt) {
    writeWrong("a.fcpxml");
    (void)files.write("report.txt", "old");
    ASSERT_EQ(mkfifo(files.path("pipe").c_str(), 0600), 0);
    const int pipe = open(files.path("pipe").c_str(), O_RDWR | O_CLOEXEC);
    const std::vector<std::string> before = namesIn(files.folder());
    ProgramSettings settings = checker({"-c", "exec \"$0\" --report report.txt a.fcpxml - < pipe",
                                        material.program("vornic-check")});
    settings.program = "/bin/sh";
    RunningProgram program(settings);
    EXPECT_TRUE(becomesTrue([&] { return namesIn(files.folder()) != before; }));
    program.sendSignal(SIGTERM);
    EXPECT_EQ(program.finish().status, 128 + SIGTERM);
    EXPECT_EQ(namesIn(files.folder()), before);
    EXPECT_EQ(readBytes(files.path("report.txt")), "old");
    close(pipe);
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
    EXPECT_THAT(
        list.output,
        ContainsRegex("\nstructure-unknown-element +error +\\{thing\\} is no element of FCPXML\n"));
    const ProgramResult page = check({"--explain", "structure-unknown-element"});
    EXPECT_EQ(page.status, 0);
    EXPECT_THAT(page.output, HasSubstr("\nHow to mend it\n    "));
    EXPECT_THAT(check({"--explain", "values"}).output, StartsWith("values-"));
    EXPECT_THAT(check({"--explain", "conversion-gap"}).output,
                StartsWith("conversion-gap (warning, group conversion)\n"));
    EXPECT_THAT(check({"--explain", "salvage"}).output, StartsWith("salvage-"));
    EXPECT_EQ(check({"--ignore", "conversion-gap", "x.xml"}).status, 2);
    const ProgramResult unknown = check({"--explain", "values-standalon"});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_EQ(unknown.errors,
              "vornic-check: there is no rule or group values-standalon; perhaps "
              "values-standalone is meant\n");
}

TEST_F(CheckCommandLineTest, looksForNoPathInWhatIsNoText) {
    const std::string path = files.write("Cut.fcpxml", "<fcpxml>\xC3\x28</fcpxml>");
    const ProgramResult result = check({"--where", "/fcpxml", path});
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.errors, HasSubstr(path));
    EXPECT_EQ(check({"--explain", ""}).status, 2);
}

TEST_F(CheckCommandLineTest, refusesWrongUsage) {
    expectUsage({}, "no file named");
    expectUsage({"--only", "", "x.xml"}, "no rule is named");
    expectUsage({"--fast", "a.xml"}, "unknown option --fast");
    expectUsage({"--format", "xml", "a.xml"}, "there is no format xml");
    expectUsage({"--max", "0", "a.xml"}, "--max wants a number above 0, not 0");
    expectUsage({"--max"}, "the option --max wants a value");
    expectUsage({"--only", "structures", "a.xml"},
                "there is no rule or group structures; perhaps structure is meant");
    expectUsage({"--least", "fatal", "a.xml"}, "--least wants error, warning or info, not fatal");
    expectUsage({"-", "-"}, "standard input can be checked only once");
    expectUsage({"--where", "/fcpxml[1]"}, "--where wants one file");
    expectUsage({"--where", "fcpxml", "a.xml"},
                "--where wants a path such as /fcpxml[1]/event[1]/@name, not fcpxml");
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
