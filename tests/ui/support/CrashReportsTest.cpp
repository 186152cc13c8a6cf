#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/ProgramRunner.h"
#include "tests/support/programs/StandInProgram.h"
#include "tests/support/texts/LogText.h"
#include "ui/support/CrashReports.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;

/// A whole life of an application after the other, with a bug reporting application in its bundle.
class CrashReportsTest : public ::testing::Test {
  protected:
    CrashReportsTest() {
        fs::create_directories(sandbox.path("bin"));
        fs::copy_file(VORNIC_CRASHING_PROGRAM, program);
        fs::create_directories(sandbox.path("Vornic.app/Contents"));
        sandbox.write("Vornic.app/Contents/Info.plist",
                      "<plist><dict><key>CFBundleName</key><string>Vornic</string>"
                      "<key>CFBundleVersion</key><string>1</string></dict></plist>");
    }

    [[nodiscard]] test::ProgramSettings settings(const std::string& way) const {
        const std::string home = sandbox.home();
        return {.program = program,
                .arguments = {way},
                .environment = {"HOME=" + home, "XDG_DATA_HOME=" + home + "/.local/share",
                                "TMPDIR=" + sandbox.folder(), "PATH=/usr/bin:/bin"}};
    }
    test::ProgramResult run(const std::string& way) const { return runProgram(settings(way)); }

    [[nodiscard]] std::vector<std::string> reports() const {
        std::vector<std::string> paths;
        for (const std::string& name : test::namesIn(folder)) {
            paths.push_back(folder + "/" + name);
        }
        return paths;
    }
    /// The path of a report, the oldest being the first.
    [[nodiscard]] std::string report(std::size_t index = 0) const {
        const std::vector<std::string> paths = reports();
        EXPECT_LT(index, paths.size());
        return index < paths.size() ? paths[index] : "";
    }
    [[nodiscard]] std::vector<std::string> log() const {
        return test::withoutLogHeader(
            test::logMessages(test::readBytes(library + "/Logs/Quillmark/Vornic.1.log")));
    }

    test::Unprivileged user;
    test::Sandbox sandbox;
    std::string library = sandbox.home() + "/.local/share/quillmark";
    std::string folder = library + "/Logs/DiagnosticReports";
    std::string program = sandbox.path("bin/crashing");
    test::StandInProgram reporter{
        sandbox.path("Vornic.app/Contents/Resources/Bug Reporter.app/Contents/MacOS/Bug Reporter"),
        sandbox.path("reported")};
};

TEST_F(CrashReportsTest, reportNothingAboutRunsThatEndCleanly) {
    for (int start = 0; start < 3; ++start) {
        const test::ProgramResult result = run("cleanly");
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(log(), IsEmpty());
    }
    EXPECT_THAT(reports(), IsEmpty());
    EXPECT_FALSE(reporter.wasRun());
}

struct Crash {
    std::string way;
    int signal;
    std::string reportSays;
};

void PrintTo(const Crash& crash, std::ostream* stream) {
    *stream << crash.way;
}

class EveryCrashTest : public CrashReportsTest, public ::testing::WithParamInterface<Crash> {};

TEST_P(EveryCrashTest, isFoundByTheNextStartAndHandedToTheReporterOnce) {
    const test::ProgramResult crash = run(GetParam().way);
    EXPECT_EQ(crash.signal, GetParam().signal) << crash.errors;
    ASSERT_EQ(reports().size(), 1U);
    const std::string path = report();
    EXPECT_THAT(fs::path(path).filename(), MatchesRegex("Vornic_[-0-9]{24}\\.crash"));
    EXPECT_THAT(test::readBytes(path), HasSubstr(GetParam().reportSays));
    EXPECT_THAT(test::readBytes(path),
                HasSubstr("\nLog: " + library + "/Logs/Quillmark/Vornic.1.log\n"));
    EXPECT_FALSE(reporter.wasRun());

    const test::ProgramResult next = run("cleanly");
    EXPECT_EQ(next.output, "crashed: " + path + "\n");
    EXPECT_THAT(log(), ElementsAre("Application crashed on last launch"));
    EXPECT_THAT(reporter.takeArguments(), ElementsAre(path));

    EXPECT_EQ(run("cleanly").output, "");
    EXPECT_THAT(log(), IsEmpty());
    EXPECT_FALSE(reporter.wasRun());
}

INSTANTIATE_TEST_SUITE_P(
    CrashReportsTest, EveryCrashTest,
    ::testing::Values(Crash{"memory", SIGSEGV,
                            "Signal: SIGSEGV (11), code 1\nFaulting address: 0x8\n"},
                      Crash{"abort", SIGABRT, "Signal: SIGABRT (6)"},
                      Crash{"exception", SIGABRT, "\nReason: nobody catches this\n"},
                      Crash{"stack", SIGSEGV, "\nFurther frames are left out.\n"},
                      Crash{"memory on a thread", SIGSEGV, "\nFaulting address: 0x8\n"},
                      Crash{"stack on a thread", SIGSEGV, "\nFurther frames are left out.\n"},
                      Crash{"exception on a thread", SIGABRT, "\nReason: nobody catches this\n"}),
    [](const ::testing::TestParamInfo<Crash>& crash) {
        std::string name = crash.param.way;
        std::replace(name.begin(), name.end(), ' ', '_');
        return name;
    });

TEST_F(CrashReportsTest, leaveTheReasonOfAnExceptionInTheLogToo) {
    const test::ProgramResult result = run("exception");
    EXPECT_EQ(result.output, "nobody catches this\n");
    EXPECT_THAT(log(), ElementsAre("nobody catches this"));
}

TEST_F(CrashReportsTest, reportTheNewestOfManyCrashes) {
    run("memory");
    EXPECT_EQ(run("abort").output, "crashed: " + report() + "\n");
    EXPECT_THAT(reporter.takeArguments(), ElementsAre(report()));
    ASSERT_EQ(reports().size(), 2U);
    EXPECT_EQ(run("cleanly").output, "crashed: " + report(1) + "\n");
    EXPECT_THAT(reporter.takeArguments(), ElementsAre(report(1)));
}

TEST_F(CrashReportsTest, reportNothingAboutARunThatWasKilled) {
    test::RunningProgram running(settings("wait"));
    ASSERT_TRUE(running.readUntil("waiting"));
    running.sendSignal(SIGKILL);
    EXPECT_EQ(running.finish().signal, SIGKILL);
    EXPECT_THAT(reports(), IsEmpty());
    EXPECT_EQ(run("cleanly").output, "");
    EXPECT_THAT(log(), IsEmpty());
    EXPECT_FALSE(reporter.wasRun());
}

TEST_F(CrashReportsTest, reportAnOldCrashNotAgainWhenALaterRunIsKilled) {
    run("memory");
    {
        test::RunningProgram running(settings("wait"));
        ASSERT_TRUE(running.readUntil("waiting"));
        running.sendSignal(SIGKILL);
        running.finish();
    }
    EXPECT_THAT(reporter.takeArguments(), ElementsAre(report()));
    EXPECT_EQ(run("cleanly").output, "");
    EXPECT_FALSE(reporter.wasRun());
}

TEST_F(CrashReportsTest, reportARunThatAnotherProgramEndedByAFatalSignal) {
    test::RunningProgram running(settings("wait"));
    ASSERT_TRUE(running.readUntil("waiting"));
    running.sendSignal(SIGSEGV);
    EXPECT_EQ(running.finish().signal, SIGSEGV);
    ASSERT_EQ(reports().size(), 1U);
    EXPECT_THAT(test::readBytes(report()),
                HasSubstr("\nSent by process: " + std::to_string(getpid()) + "\n"));
    EXPECT_EQ(run("cleanly").output, "crashed: " + report() + "\n");
}

TEST_F(CrashReportsTest, nameTheLogWhereAnotherProgramHasMovedIt) {
    const std::string logs = library + "/Logs/Quillmark";
    test::RunningProgram running(settings("wait"));
    ASSERT_TRUE(running.readUntil("waiting"));
    fs::rename(logs + "/Vornic.1.log", logs + "/Vornic.2.log");
    test::writeBytes(logs + "/Vornic.1.log", "another program's\n");
    running.sendSignal(SIGSEGV);
    running.finish();
    ASSERT_EQ(reports().size(), 1U);
    const std::string text = test::readBytes(report());
    EXPECT_THAT(text, HasSubstr("\nLog: " + logs + "/Vornic.2.log\n"));
    // By this it is found when it is moved on later.
    const std::string first = test::logMessages(test::readBytes(logs + "/Vornic.2.log")).front();
    EXPECT_THAT(first, ::testing::StartsWith("Log started: "));
    EXPECT_THAT(text, HasSubstr("\n" + first + "\n"));
}

TEST_F(CrashReportsTest, beginWithTheNameOfTheirProgram) {
    EXPECT_EQ(kDesktopProgram, "Vornic");
    EXPECT_EQ(kRepairProgram, "vornic-repair");
    EXPECT_EQ(kConvertProgram, "vornic-convert");
}

TEST_F(CrashReportsTest, areNotMistakenForThoseOfTheCommandLineTools) {
    run("memory");
    const std::string own = report();
    fs::rename(own, folder + "/vornic-repair_" + fs::path(own).filename().string());
    EXPECT_EQ(run("cleanly").output, "");
    EXPECT_FALSE(reporter.wasRun());
}

}  // namespace
}  // namespace vornic
