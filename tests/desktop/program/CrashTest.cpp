#include <csignal>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/desktop/program/ProgramTest.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/programs/StandInProgram.h"
#include "tests/support/texts/LogText.h"

// A crash of the program itself, and the start after it.

namespace vornic::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;

class CrashProgramTest : public ProgramTest {
  protected:
    CrashProgramTest() {
        const std::string applications = sandbox.home() + "/.local/share/applications";
        std::filesystem::create_directories(applications);
        writeBytes(applications + "/com.quillmark.BugReporter.desktop",
                   "[Desktop Entry]\nType=Application\nName=Bug Reporter\nExec=" + sandbox.home() +
                       "/.programs/bug-reporter %f\n");
    }
    [[nodiscard]] std::string reportFolder() const {
        return sandbox.home() + "/.local/share/quillmark/Logs/DiagnosticReports";
    }
    [[nodiscard]] std::vector<std::string> messages(int generation) const {
        return logMessages(readBytes(logs.path(generation)));
    }

    OwnLogs logs{sandbox};
    StandInProgram reporter{sandbox.home() + "/.programs/bug-reporter",
                            sandbox.home() + "/.reported"};
};

TEST_F(CrashProgramTest, isReportedByTheNextStartAndHandedToTheBugReporterOnce) {
    {
        DrivenProgram program = start({sandbox.write("cut.xml", kSound)});
        program.answerAlert("No repair was necessary", "OK");
        program.process().sendSignal(SIGSEGV);
        EXPECT_EQ(program.finish().signal, SIGSEGV);
    }
    const std::vector<std::string> reports = namesIn(reportFolder());
    ASSERT_THAT(reports, SizeIs(1));
    const std::string report = reportFolder() + "/" + reports.front();
    ASSERT_FALSE(messages(1).empty());
    const std::string crashed = messages(1).front();
    EXPECT_THAT(readBytes(report), HasSubstr("\nLog: " + logs.path(1) + "\n" + crashed + "\n"));
    for (const bool isFirst : {true, false}) {
        DrivenProgram next = start({sandbox.path("cut.xml")});
        next.answerAlert("No repair was necessary", "OK");
        next.waitUntilActive("cut.xml");
        session->pressKeys({"ctrl+q"});
        next.expectCleanEnd();
        EXPECT_THAT(messages(1), Not(Contains("Application crashed on last launch")));
        if (isFirst) {
            EXPECT_THAT(reporter.takeArguments(), ElementsAre(report));
            // The log of the run that crashed ends with it; root's is overwritten by the next one.
            if (geteuid() != 0) {
                EXPECT_EQ(messages(2).front(), crashed);
                EXPECT_EQ(messages(2).back(), "Application crashed on last launch");
            }
        }
    }
    EXPECT_FALSE(reporter.wasRun());
}

}  // namespace
}  // namespace vornic::test
