#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <future>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/files/QMFileManager.h"
#include "tests/support/fakes/RecordingAlertPanels.h"
#include "tests/support/fakes/RecordingWorkspaceOpener.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/programs/ConsoleCapture.h"
#include "tests/support/programs/ProgramRunner.h"
#include "tests/ui/support/TroubleshootingTest.h"
#include "ui/support/QMTroubleshootingUtils.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using test::contentsOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Pair;
using Utils = QMTroubleshootingUtils;

constexpr const char* kSuccess =
    "Logs gathered successfully | The gathered logs were placed on your desktop.";
constexpr const char* kNothing = "No logs found | There were no logs available to gather.";
constexpr const char* kFailure = "Logs could not be gathered | Please check your file permissions.";

class QMTroubleshootingUtilsTest : public test::TroubleshootingTest {
  protected:
    QMTroubleshootingUtilsTest() { fs::create_directory(desktop()); }
    ~QMTroubleshootingUtilsTest() override {
        std::error_code missing;
        fs::permissions(desktop(), fs::perms::owner_all, missing);
        fs::permissions(temporary(), fs::perms::owner_all, missing);
    }

    [[nodiscard]] std::string desktop(const std::string& name = "") const {
        return sandbox.home() + "/Desktop" + (name.empty() ? "" : "/" + name);
    }
    [[nodiscard]] static std::string temporary() { return std::getenv("TMPDIR"); }
    [[nodiscard]] static std::string staging() { return temporary() + "/QM_App_Logs"; }

    /// The files in an archive, with the paths that they came from.
    [[nodiscard]] test::Contents filesIn(const std::string& archive) const {
        const std::string folder = sandbox.path("extracted");
        fs::remove_all(folder);
        EXPECT_TRUE(QMFileManager::decompressFile(archive, folder));
        EXPECT_THAT(test::namesIn(folder), ElementsAre("QM_App_Logs"));
        return contentsOf(folder + "/QM_App_Logs");
    }

    test::InstalledAlertPanels panels;
    test::InstalledWorkspaceOpener opener;
};

// The archive

TEST_F(QMTroubleshootingUtilsTest, gathersIntoAnArchiveOnTheDesktop) {
    const std::string reelLog = make(logs(), "Reel.1.log");
    const std::string report = make(diagnosticReports(), "Reel_1.crash");
    const std::string preference = make(preferences(), "com.quillmark.Reel.plist");
    EXPECT_TRUE(Utils::gatherLogsForAppWithName("Reel"));
    EXPECT_THAT(test::namesIn(desktop()), ElementsAre("Reel Logs.zip"));
    EXPECT_THAT(filesIn(desktop("Reel Logs.zip")),
                ElementsAre(Pair(report, "Reel_1.crash"), Pair(reelLog, "Reel.1.log"),
                            Pair(preference, "com.quillmark.Reel.plist")));
}

TEST_F(QMTroubleshootingUtilsTest, namesTheArchiveAfterTheFirstApplication) {
    make(logs(), "Slate.1.log");
    EXPECT_TRUE(Utils::gatherLogsForAppsWithNames({"My Own App", "Slate"}));
    EXPECT_THAT(test::namesIn(desktop()), ElementsAre("My Own App Logs.zip"));
}

TEST_F(QMTroubleshootingUtilsTest, takesNoFormatFromAnApplicationsName) {
    make(logs(), "100%@ 5.1.log");
    EXPECT_TRUE(Utils::gatherLogsForAppWithName("100%@ 5.1"));
    EXPECT_THAT(test::namesIn(desktop()), ElementsAre("100%@ 5.1 Logs.zip"));
}

TEST_F(QMTroubleshootingUtilsTest, putsATimeStampIntoANameThatIsTaken) {
    make(logs(), "Reel.1.log");
    test::writeBytes(desktop("Reel Logs.zip"), "earlier");
    const auto now = [] {
        const std::time_t time = std::time(nullptr);
        std::string text(14, ' ');
        EXPECT_EQ(std::strftime(text.data(), 15, "%Y%m%d%H%M%S", std::localtime(&time)), 14U);
        return "Reel Logs_" + text + ".zip";
    };
    const std::string earliest = now();
    EXPECT_TRUE(Utils::gatherLogsForAppWithName("Reel"));
    const std::vector<std::string> names = test::namesIn(desktop());
    ASSERT_EQ(names.size(), 2U);
    EXPECT_EQ(test::readBytes(desktop("Reel Logs.zip")), "earlier");
    EXPECT_THAT(names[1], MatchesRegex("Reel Logs_[0-9]{14}\\.zip"));
    EXPECT_LE(earliest, names[1]);
    EXPECT_GE(now(), names[1]);
    EXPECT_EQ(filesIn(desktop(names[1])).size(), 1U);
}

TEST_F(QMTroubleshootingUtilsTest, keepsArchivesApartThatAreMadeWithinTheSameSecond) {
    make(logs(), "Reel.1.log");
    for (int run = 0; run < 3; ++run) {
        EXPECT_TRUE(Utils::gatherLogsForAppsWithNames({"Reel"}, true));
    }
    EXPECT_EQ(test::namesIn(desktop()).size(), 3U);
    EXPECT_THAT(test::namesIn(trash()), IsEmpty());
}

TEST_F(QMTroubleshootingUtilsTest, takesANameWithADanglingLinkForTaken) {
    make(logs(), "Reel.1.log");
    fs::create_symlink("missing", desktop("Reel Logs.zip"));
    EXPECT_TRUE(Utils::gatherLogsForAppWithName("Reel"));
    EXPECT_EQ(test::namesIn(desktop()).size(), 2U);
    EXPECT_FALSE(test::exists(desktop("missing")));
}

TEST_F(QMTroubleshootingUtilsTest, makesTheDesktopThatNobodyHasNeededYet) {
    make(logs(), "Reel.1.log");
    fs::remove(desktop());
    EXPECT_TRUE(Utils::gatherLogsForAppWithName("Reel"));
    EXPECT_THAT(test::namesIn(desktop()), ElementsAre("Reel Logs.zip"));
}

TEST_F(QMTroubleshootingUtilsTest, gathersFurtherFiles) {
    const std::string file = make(sandbox.path("a"), "Cut.xml");
    EXPECT_TRUE(Utils::gatherLogsForAppsWithNames({"Reel"}, true, {file}));
    EXPECT_THAT(filesIn(desktop("Reel Logs.zip")), ElementsAre(Pair(file, "Cut.xml")));
}

TEST_F(QMTroubleshootingUtilsTest, gathersWhatIsStillQueuedForTheLog) {
    for (int line = 1; line <= 200; ++line) {
        QMLog::fastAppendLog("line %d of the log", line);
    }
    EXPECT_TRUE(Utils::gatherLogsForAppWithName("Vornic"));
    const test::Contents files = filesIn(desktop("Vornic Logs.zip"));
    ASSERT_TRUE(files.contains(logs() + "/Vornic.1.log"));
    EXPECT_TRUE(files.at(logs() + "/Vornic.1.log").ends_with("line 200 of the log\n"));
}

TEST_F(QMTroubleshootingUtilsTest, archivesForOtherPeoplesTools) {
    make(logs(), "Reel.1.log");
    make(logs(), "Reel Übergröße.log");
    ASSERT_TRUE(Utils::gatherLogsForAppWithName("Reel"));
    const std::string archive = desktop("Reel Logs.zip");
    const auto run = [&](const std::string& tool, std::vector<std::string> arguments) {
        arguments.push_back(archive);
        return test::runProgram({.program = tool,
                                 .arguments = std::move(arguments),
                                 .environment = {"LC_ALL=C.UTF-8"}});
    };
    if (!fs::exists("/usr/bin/unzip") || !fs::exists("/usr/bin/bsdtar")) {
        GTEST_SKIP() << "this machine has not both of unzip and bsdtar";
    }
    EXPECT_EQ(run("/usr/bin/unzip", {"-tq"}).status, 0);
    const std::string top = "QM_App_Logs" + logs();
    EXPECT_THAT(run("/usr/bin/unzip", {"-Z1"}).output, ::testing::HasSubstr(top + "/Reel.1.log\n"));
    const test::ProgramResult listed = run("/usr/bin/bsdtar", {"-tf"});
    EXPECT_EQ(listed.status, 0) << listed.errors;
    EXPECT_THAT(listed.output, ::testing::HasSubstr(top + "/Reel Übergröße.log\n"));
    EXPECT_EQ(run("/usr/bin/bsdtar", {"--to-stdout", "-xf"}).output.size(),
              std::string("Reel.1.logReel Übergröße.log").size());
}

// What is told

TEST_F(QMTroubleshootingUtilsTest, reportsTheArchiveWithAFreeStandingAlert) {
    make(logs(), "Reel.1.log");
    EXPECT_TRUE(Utils::gatherLogsForAppWithName("Reel"));
    EXPECT_THAT(panels->texts(), ElementsAre(kSuccess));
    EXPECT_EQ(panels->shown[0].parentWindow, nullptr);
    EXPECT_EQ(panels->shown[0].contents.defaultButtonTitle, std::nullopt);
    EXPECT_EQ(panels->shown[0].contents.alternateButtonTitle, std::nullopt);
}

TEST_F(QMTroubleshootingUtilsTest, showsNothingWhenItIsToBeSilent) {
    make(logs(), "Reel.1.log");
    EXPECT_TRUE(Utils::gatherLogsForAppsWithNames({"Reel"}, true));
    EXPECT_THAT(panels->texts(), IsEmpty());
    EXPECT_THAT(test::namesIn(desktop()), ElementsAre("Reel Logs.zip"));
}

TEST_F(QMTroubleshootingUtilsTest, reportsWhenThereIsNothingToGather) {
    EXPECT_FALSE(Utils::gatherLogsForAppWithName("Reel"));
    EXPECT_THAT(panels->texts(), ElementsAre(kNothing));
    EXPECT_THAT(test::namesIn(desktop()), IsEmpty());
}

TEST_F(QMTroubleshootingUtilsTest, showsNothingWithNothingToGatherWhenItIsToBeSilent) {
    EXPECT_FALSE(Utils::gatherLogsForAppsWithNames({"Reel"}, true));
    EXPECT_THAT(panels->texts(), IsEmpty());
    EXPECT_THAT(test::namesIn(desktop()), IsEmpty());
}

TEST_F(QMTroubleshootingUtilsTest, reportsWhenTheArchiveCannotBeMade) {
    make(logs(), "Reel.1.log");
    fs::permissions(desktop(), fs::perms(0500));
    EXPECT_FALSE(Utils::gatherLogsForAppWithName("Reel"));
    EXPECT_THAT(panels->texts(), ElementsAre(kFailure));
    EXPECT_THAT(test::namesIn(desktop()), IsEmpty());
}

TEST_F(QMTroubleshootingUtilsTest, showsNothingOfAnArchiveThatCannotBeMadeWhenItIsToBeSilent) {
    make(logs(), "Reel.1.log");
    fs::permissions(desktop(), fs::perms(0500));
    EXPECT_FALSE(Utils::gatherLogsForAppsWithNames({"Reel"}, true));
    EXPECT_THAT(panels->texts(), IsEmpty());
}

TEST_F(QMTroubleshootingUtilsTest, showsNothingWhenALogCannotBeCopied) {
    const std::string reelLog = make(logs(), "Reel.1.log");
    close(reelLog);
    test::ConsoleCapture console;
    EXPECT_FALSE(Utils::gatherLogsForAppWithName("Reel"));
    EXPECT_THAT(console.lines(), ElementsAre("Unable to copy log: The file " + reelLog +
                                             " cannot be copied: permission denied."));
    EXPECT_THAT(panels->texts(), IsEmpty());
    EXPECT_THAT(test::namesIn(desktop()), IsEmpty());
}

TEST_F(QMTroubleshootingUtilsTest, showsNothingWhenAFurtherFileCannotBeCopied) {
    make(logs(), "Reel.1.log");
    test::ConsoleCapture console;
    EXPECT_FALSE(Utils::gatherLogsForAppsWithNames({"Reel"}, false, {sandbox.path("missing")}));
    EXPECT_THAT(console.lines(),
                ElementsAre("Unable to copy file: The file " + sandbox.path("missing") +
                            " cannot be copied: no such file or folder."));
    EXPECT_THAT(panels->texts(), IsEmpty());
}

// Without a name

TEST_F(QMTroubleshootingUtilsTest, doesNothingWithoutANameOfAnApplication) {
    make(staging(), "earlier");
    EXPECT_FALSE(Utils::gatherLogsForAppsWithNames({}));
    EXPECT_FALSE(Utils::gatherLogsForAppsWithNames({}, false, {make(sandbox.folder(), "a")}));
    EXPECT_FALSE(Utils::gatherLogsForAppWithName(""));
    EXPECT_THAT(panels->texts(), IsEmpty());
    EXPECT_THAT(test::namesIn(staging()), ElementsAre("earlier"));
}

// The folder that the files pass through

TEST_F(QMTroubleshootingUtilsTest, removesTheStagingFolderAfterASuccess) {
    make(logs(), "Reel.1.log");
    EXPECT_TRUE(Utils::gatherLogsForAppWithName("Reel"));
    EXPECT_FALSE(test::exists(staging()));
}

TEST_F(QMTroubleshootingUtilsTest, removesTheStagingFolderWhenTheArchiveCannotBeMade) {
    make(logs(), "Reel.1.log");
    fs::permissions(desktop(), fs::perms(0500));
    EXPECT_FALSE(Utils::gatherLogsForAppWithName("Reel"));
    EXPECT_FALSE(test::exists(staging()));
}

TEST_F(QMTroubleshootingUtilsTest, leavesTheStagingFolderForItsUserAloneAfterAFailedCopy) {
    const std::string reelLog = make(logs(), "Reel.1.log");
    close(make(logs(), "Reel.2.log"));
    const test::ConsoleCapture console;
    EXPECT_FALSE(Utils::gatherLogsForAppWithName("Reel"));
    EXPECT_THAT(contentsOf(staging()), ElementsAre(Pair(reelLog, "Reel.1.log")));
    struct stat status {};
    ASSERT_EQ(lstat(staging().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
}

TEST_F(QMTroubleshootingUtilsTest, removesWhatAnEarlierRunLeft) {
    const std::string reelLog = make(logs(), "Reel.1.log");
    make(staging() + "/old", "Old.log");
    EXPECT_TRUE(Utils::gatherLogsForAppWithName("Reel"));
    EXPECT_THAT(filesIn(desktop("Reel Logs.zip")), ElementsAre(Pair(reelLog, "Reel.1.log")));
}

TEST_F(QMTroubleshootingUtilsTest, removesAFileThatStandsInTheFoldersPlace) {
    make(logs(), "Reel.1.log");
    make(temporary(), "QM_App_Logs");
    EXPECT_TRUE(Utils::gatherLogsForAppWithName("Reel"));
}

TEST_F(QMTroubleshootingUtilsTest, makesTheTemporaryFolderWithTheStagingFolder) {
    make(logs(), "Reel.1.log");
    setenv("TMPDIR", (temporary() + "/deep/deeper").c_str(), 1);
    EXPECT_TRUE(Utils::gatherLogsForAppWithName("Reel"));
}

TEST_F(QMTroubleshootingUtilsTest, refusesALinkInTheFoldersPlace) {
    make(logs(), "Reel.1.log");
    make(sandbox.path("precious"), "file");
    for (const std::string& target : {sandbox.path("precious"), sandbox.path("missing")}) {
        fs::remove(staging());
        fs::create_symlink(target, staging());
        test::ConsoleCapture console;
        EXPECT_FALSE(Utils::gatherLogsForAppWithName("Reel"));
        EXPECT_THAT(console.lines(), ElementsAre("Error removing existing folder: " + staging() +
                                                 " does not belong to this user."));
    }
    EXPECT_THAT(panels->texts(), IsEmpty());
    EXPECT_THAT(contentsOf(sandbox.path("precious")), ElementsAre(Pair("/file", "file")));
    EXPECT_FALSE(test::exists(sandbox.path("missing")));
    EXPECT_THAT(test::namesIn(desktop()), IsEmpty());
}

TEST_F(QMTroubleshootingUtilsTest, refusesAFolderOfAnotherUserInTheFoldersPlace) {
    make(logs(), "Reel.1.log");
    {
        const test::RightsOfRoot rights;
        if (!rights.available()) {
            GTEST_SKIP() << "not started as root";
        }
        // In it the user may do everything, and so may the one who prepared it.
        ASSERT_EQ(mkdir(staging().c_str(), 0777), 0);
        ASSERT_EQ(chmod(staging().c_str(), 0777), 0);
    }
    test::ConsoleCapture console;
    EXPECT_FALSE(Utils::gatherLogsForAppWithName("Reel"));
    EXPECT_THAT(console.lines(), ElementsAre("Error removing existing folder: " + staging() +
                                             " does not belong to this user."));
    EXPECT_THAT(test::namesIn(staging()), IsEmpty());
    EXPECT_THAT(panels->texts(), IsEmpty());
}

TEST_F(QMTroubleshootingUtilsTest, reportsWhenTheFolderOfAnEarlierRunCannotBeRemoved) {
    make(logs(), "Reel.1.log");
    make(staging(), "earlier");
    fs::permissions(temporary(), fs::perms(0500));
    test::ConsoleCapture console;
    EXPECT_FALSE(Utils::gatherLogsForAppWithName("Reel"));
    const auto lines = console.lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_TRUE(lines[0].starts_with("Error removing existing folder: The ")) << lines[0];
    EXPECT_THAT(panels->texts(), IsEmpty());
}

TEST_F(QMTroubleshootingUtilsTest, reportsWhenTheStagingFolderCannotBeMade) {
    make(logs(), "Reel.1.log");
    fs::permissions(temporary(), fs::perms(0500));
    test::ConsoleCapture console;
    EXPECT_FALSE(Utils::gatherLogsForAppWithName("Reel"));
    EXPECT_THAT(console.lines(), ElementsAre("Error creating temp folder: The folder " + staging() +
                                             " cannot be made: permission denied."));
    EXPECT_THAT(panels->texts(), IsEmpty());
}

TEST_F(QMTroubleshootingUtilsTest, givesEachOfTwoRunsAtOnceACompleteArchive) {
    test::Contents expected;
    for (int number = 1; number <= 100; ++number) {
        const std::string name = "Reel " + std::to_string(number) + ".log";
        expected[make(logs(), name)] = name;
    }
    const auto gather = [](const std::string& name) {
        return std::async(std::launch::async, [name] {
            return Utils::gatherLogsForAppsWithNames({name, "Reel"}, true);
        });
    };
    auto one = gather("One");
    auto other = gather("Other");
    EXPECT_TRUE(one.get());
    EXPECT_TRUE(other.get());
    EXPECT_EQ(filesIn(desktop("One Logs.zip")), expected);
    EXPECT_EQ(filesIn(desktop("Other Logs.zip")), expected);
}

// Viewing

TEST_F(QMTroubleshootingUtilsTest, opensTheCurrentLog) {
    const std::string reelLog = make(logs(), "My Reel.1.log");
    make(logs(), "My Reel.2.log");
    EXPECT_TRUE(Utils::viewLogForApp("My Reel"));
    EXPECT_THAT(opener->opened, ElementsAre("file " + reelLog));
    EXPECT_THAT(panels->texts(), IsEmpty());
}

TEST_F(QMTroubleshootingUtilsTest, opensTheTaskLog) {
    const std::string taskLog = make(logs(), "Reel.1.task.log");
    EXPECT_TRUE(Utils::viewTaskLogForApp("Reel"));
    EXPECT_THAT(opener->opened, ElementsAre("file " + taskLog));
    EXPECT_THAT(panels->texts(), IsEmpty());
}

TEST_F(QMTroubleshootingUtilsTest, opensALogWithAllThatIsStillQueuedForIt) {
    for (int line = 1; line <= 200; ++line) {
        QMLog::fastAppendLog("line %d of the log", line);
    }
    EXPECT_TRUE(Utils::viewLogForApp("Vornic"));
    EXPECT_TRUE(test::readBytes(logs() + "/Vornic.1.log").ends_with("line 200 of the log\n"));
}

TEST_F(QMTroubleshootingUtilsTest, reportsHowToComeByALog) {
    make(logs(), "Reel.2.log");
    make(logs(), "Reel.1.task.log");
    EXPECT_FALSE(Utils::viewLogForApp("Reel"));
    EXPECT_THAT(panels->texts(),
                ElementsAre("No log found | You must perform a task before viewing the log."));
    EXPECT_EQ(panels->shown[0].parentWindow, nullptr);
    EXPECT_THAT(opener->opened, IsEmpty());
}

TEST_F(QMTroubleshootingUtilsTest, reportsHowToComeByATaskLog) {
    make(logs(), "Reel.1.log");
    EXPECT_FALSE(Utils::viewTaskLogForApp("Reel"));
    EXPECT_THAT(panels->texts(),
                ElementsAre("No log found | You must run the application as a task (e.g. through "
                            "Chore Runner) before viewing a log."));
    EXPECT_THAT(opener->opened, IsEmpty());
}

TEST_F(QMTroubleshootingUtilsTest, answersWhatThePlatformAnswersToOpeningALog) {
    make(logs(), "Reel.1.log");
    make(logs(), "Reel.1.task.log");
    opener->answer = false;
    EXPECT_FALSE(Utils::viewLogForApp("Reel"));
    EXPECT_FALSE(Utils::viewTaskLogForApp("Reel"));
    EXPECT_EQ(opener->opened.size(), 2U);
    EXPECT_THAT(panels->texts(), IsEmpty());
}

// A volume that is full

TEST(QMTroubleshootingUtilsOnAFullVolume, makesNoArchiveOfHalfTheLogs) {
    const test::PrivateMounts mounts;
    const test::Unprivileged user;
    const test::Sandbox sandbox;
    const std::string logs = sandbox.home() + "/.local/share/quillmark/Logs/Quillmark";
    fs::create_directories(logs);
    test::writeBytes(logs + "/Reel.1.log", std::string(500'000, 'x'));
    {
        const test::RightsOfRoot rights;
        if (!mounts.isAvailable() || !rights.available() ||
            !mounts.mountVolume(std::getenv("TMPDIR"), "tmpfs", "size=64k,mode=0777")) {
            GTEST_SKIP() << "this process may not mount volumes";
        }
    }
    test::ConsoleCapture console;
    EXPECT_FALSE(Utils::gatherLogsForAppsWithNames({"Reel"}, true));
    const auto lines = console.lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines[0], ::testing::AllOf(::testing::StartsWith("Unable to copy log: The file "),
                                           ::testing::EndsWith("no space left on the volume.")));
    EXPECT_FALSE(test::exists(sandbox.home() + "/Desktop/Reel Logs.zip"));
}

}  // namespace
}  // namespace vornic
