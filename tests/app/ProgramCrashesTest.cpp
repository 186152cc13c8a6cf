// Programs that die in the middle of their work.

#include <csignal>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <sys/resource.h>

#include "tests/app/ProgramTest.h"
#include "tests/support/machine/FileState.h"

namespace vornic::test {

using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

class ProgramCrashesTest : public ProgramTest {
  protected:
    ProgramCrashesTest() {
        const rlimit none{.rlim_cur = 0, .rlim_max = 0};
        setrlimit(RLIMIT_CORE, &none);
    }
    [[nodiscard]] std::string folder() const { return files.library("Logs/DiagnosticReports"); }

    /// Ends a program by a signal once it has written a text. @return the number of the signal that
    /// it died of.
    static int end(const ProgramSettings& settings, std::string_view text, int signal) {
        RunningProgram program(settings);
        EXPECT_TRUE(program.readUntil(text));
        program.sendSignal(signal);
        return program.finish().signal;
    }
    /// A file whose report is far longer than a pipe holds, so that its repair waits.
    [[nodiscard]] ProgramSettings longRepair() const {
        std::string text = soundXMEML();
        text.insert(text.find("Harbour"), std::string(60'000, '\v'));
        return files.repairer({files.write("cut.xml", text)});
    }
    [[nodiscard]] ProgramSettings longConversion() const {
        std::vector<std::string> arguments(5'000, "missing.xml");
        arguments.insert(arguments.begin(), {"-convertxmeml", "3"});
        return files.converter(arguments);
    }
};

TEST_F(ProgramCrashesTest, leaveAReportOfTheRepairProgram) {
    EXPECT_EQ(end(longRepair(), "Invalid character at byte", SIGSEGV), SIGSEGV);
    ASSERT_THAT(namesIn(folder()), ElementsAre(MatchesRegex("vornic-repair_[-0-9]{24}\\.crash")));
    const std::string report = readBytes(folder() + "/" + namesIn(folder()).front());
    EXPECT_THAT(report, ContainsRegex("^Program: vornic-repair\n"
                                      "Version: [0-9]+\\.[0-9]+\\.[0-9]+\n"
                                      "Path: /.*/vornic-repair\n"));
    EXPECT_THAT(report, HasSubstr("\nSignal: SIGSEGV (11), code 0\nSent by process: "));
    EXPECT_THAT(report, HasSubstr("\nLog: " + files.logPath() + "\n"));
    // The system gives the signal to whichever thread it likes, the log's perhaps.
    EXPECT_THAT(report, ContainsRegex("\n[0-9]+  0x[0-9a-f]+  /.*/vornic-repair \\+ 0x[0-9a-f]+"
                                      "  [A-Za-z_]"));
}

TEST_F(ProgramCrashesTest, leaveTheUsersFileAsItWas) {
    const ProgramSettings settings = longRepair();
    const std::string before = readBytes(files.path("cut.xml"));
    end(settings, "Invalid character at byte", SIGABRT);
    EXPECT_EQ(readBytes(files.path("cut.xml")), before);
    EXPECT_FALSE(exists(files.trash()));
}

TEST_F(ProgramCrashesTest, leaveAReportOfTheConverter) {
    EXPECT_EQ(end(longConversion(), "does not exist", SIGBUS), SIGBUS);
    ASSERT_THAT(namesIn(folder()), ElementsAre(MatchesRegex("vornic-convert_[-0-9]{24}\\.crash")));
    EXPECT_THAT(readBytes(folder() + "/" + namesIn(folder()).front()),
                HasSubstr("Program: vornic-convert\n"));
}

TEST_F(ProgramCrashesTest, leaveNoReportWhenAProgramIsKilledOrAskedToEnd) {
    EXPECT_EQ(end(longRepair(), "Invalid character at byte", SIGKILL), SIGKILL);
    EXPECT_EQ(end(longConversion(), "does not exist", SIGTERM), 0);
    EXPECT_THAT(namesIn(folder()), IsEmpty());
    EXPECT_FALSE(exists(folder())) << "it is made by a report alone";
}

}  // namespace vornic::test
