#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/programs/ConsoleCapture.h"
#include "tests/ui/support/TroubleshootingTest.h"
#include "ui/support/LogCollection.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using test::contentsOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

class LogCollectionTest : public test::TroubleshootingTest {
  protected:
    LogCollectionTest() { makeFolder("copies"); }
    ~LogCollectionTest() override {
        std::error_code missing;
        fs::permissions(folder, fs::perms::owner_all, missing);
    }

    /// What `addLogs` copies for the applications, which has to succeed.
    test::Contents collected(const LogCollection::Names& appNames = {"Reel"}) {
        LogCollection collection(folder, appNames);
        EXPECT_TRUE(collection.addLogs());
        const test::Contents contents = contentsOf(folder);
        EXPECT_EQ(collection.count(), contents.size());
        return contents;
    }
    [[nodiscard]] bool adds(const LogCollection::Paths& paths) const {
        return LogCollection(folder, {}).addFiles(paths);
    }

    const std::string folder = sandbox.path("copies");
};

// Logs

TEST_F(LogCollectionTest, takesTheFiveGenerationsAndTheTaskLog) {
    test::Contents expected;
    for (const char* name : {"Reel.1.log", "Reel.2.log", "Reel.3.log", "Reel.4.log", "Reel.5.log",
                             "Reel.1.task.log"}) {
        expected[make(logs(), name)] = name;
    }
    EXPECT_EQ(collected(), expected);
}

TEST_F(LogCollectionTest, takesWhateverBeginsWithTheNameAndEndsWithLog) {
    const std::string other = make(logs(), "Reelmaker.log");
    const std::string shortest = make(logs(), "Reel.log");
    EXPECT_THAT(collected(), ElementsAre(Pair(shortest, "Reel.log"), Pair(other, "Reelmaker.log")));
}

TEST_F(LogCollectionTest, leavesOtherNamesInTheLogFolder) {
    for (const char* name : {"reel.1.log", "OldReel.1.log", "Reel.1.log.bak", "Reel.1.LOG",
                             "Reel_1.crash", "Reel.txt"}) {
        make(logs(), name);
    }
    EXPECT_THAT(collected(), IsEmpty());
}

TEST_F(LogCollectionTest, looksForLogsInNoFolderBelow) {
    make(logs() + "/older", "Reel.1.log");
    EXPECT_THAT(collected(), IsEmpty());
}

TEST_F(LogCollectionTest, takesTheLogsOfEachApplication) {
    const std::string one = make(logs(), "Reel.1.log");
    const std::string other = make(logs(), "Slate.1.log");
    make(logs(), "Third.1.log");
    EXPECT_THAT(collected({"Slate", "Reel"}),
                ElementsAre(Pair(one, "Reel.1.log"), Pair(other, "Slate.1.log")));
}

TEST_F(LogCollectionTest, takesAFileOfTwoApplicationsOnce) {
    const std::string path = make(logs(), "Reelmaker.1.log");
    EXPECT_THAT(collected({"Reel", "Reelmaker"}), ElementsAre(Pair(path, "Reelmaker.1.log")));
}

TEST_F(LogCollectionTest, takesNothingForAnEmptyName) {
    make(logs(), "Reel.1.log");
    make(diagnosticReports(), "_1.crash");
    make(preferences(), "com.quillmark..plist");
    EXPECT_THAT(collected({""}), IsEmpty());
}

TEST_F(LogCollectionTest, takesAFolderWithALogsNameWithAllThatIsInIt) {
    const std::string path = make(logs() + "/Reel.old.log", "inside");
    LogCollection collection(folder, {"Reel"});
    EXPECT_TRUE(collection.addLogs());
    EXPECT_THAT(contentsOf(folder), ElementsAre(Pair(path, "inside")));
    EXPECT_EQ(collection.count(), 1U);
}

TEST_F(LogCollectionTest, findsNothingWhereThereAreNoFolders) {
    EXPECT_THAT(collected(), IsEmpty());
}

TEST_F(LogCollectionTest, takesAFolderThatCannotBeReadForEmpty) {
    make(logs(), "Reel.1.log");
    const std::string report = make(diagnosticReports(), "Reel_1.ips");
    close(logs());
    EXPECT_THAT(collected(), ElementsAre(Pair(report, "Reel_1.ips")));
    fs::permissions(logs(), fs::perms::owner_all);
}

// Crash reports

TEST_F(LogCollectionTest, takesCrashReportsOfBothKindsFromBothFolders) {
    test::Contents expected;
    for (const std::string& reports : {library() + "/Logs/CrashReporter", diagnosticReports()}) {
        for (const char* name :
             {"Reel_2026-11-21-080000.crash", "Reel_2026-11-21-080000.ips", "Reel_.ips"}) {
            expected[make(reports, name)] = name;
        }
    }
    EXPECT_EQ(collected(), expected);
}

TEST_F(LogCollectionTest, leavesOtherNamesInTheFoldersOfCrashReports) {
    for (const char* name :
         {"Reel-2026.crash", "Reel 2026.ips", "Reel.crash", "Reelmaker_1.crash", "reel_1.crash",
          "Reel_1.txt", "Reel_crash", "Reel_1.CRASH", "Reel.1.log"}) {
        make(diagnosticReports(), name);
    }
    EXPECT_THAT(collected(), IsEmpty());
}

TEST_F(LogCollectionTest, looksForCrashReportsInTheirFoldersAlone) {
    make(library() + "/Logs", "Reel_1.crash");
    make(logs(), "Reel_1.crash");
    EXPECT_THAT(collected(), IsEmpty());
}

// Preferences

TEST_F(LogCollectionTest, takesThePreferenceFileOfTheApplication) {
    const std::string path = make(preferences(), "com.quillmark.Reel.plist");
    make(preferences(), "com.quillmark.Reelmaker.plist");
    make(preferences(), "com.quillmark.global.plist");
    EXPECT_THAT(collected(), ElementsAre(Pair(path, "com.quillmark.Reel.plist")));
}

TEST_F(LogCollectionTest, looksForAPreferenceFileWithoutTheBlanksOfTheName) {
    const std::string path = make(preferences(), "com.quillmark.MyOwnApp.plist");
    make(preferences(), "com.quillmark.My Own App.plist");
    EXPECT_THAT(collected({"My Own App"}), ElementsAre(Pair(path, "com.quillmark.MyOwnApp.plist")));
}

TEST_F(LogCollectionTest, looksForAPreferenceFileInLowerCaseWhenThereIsNoOther) {
    const std::string path = make(preferences(), "com.quillmark.myapp.plist");
    make(preferences(), "com.quillmark.my app.plist");
    EXPECT_THAT(collected({"My App"}), ElementsAre(Pair(path, "com.quillmark.myapp.plist")));
}

TEST_F(LogCollectionTest, knowsTheLowerCaseOfEveryLetter) {
    const std::string path = make(preferences(), "com.quillmark.übungsrolle.plist");
    EXPECT_THAT(collected({"Übungs Rolle"}),
                ElementsAre(Pair(path, "com.quillmark.übungsrolle.plist")));
}

TEST_F(LogCollectionTest, leavesThePreferenceFileInLowerCaseWhenThereIsTheOther) {
    const std::string path = make(preferences(), "com.quillmark.MyApp.plist");
    make(preferences(), "com.quillmark.myapp.plist");
    EXPECT_THAT(collected({"My App"}), ElementsAre(Pair(path, "com.quillmark.MyApp.plist")));
}

// Links

TEST_F(LogCollectionTest, copiesWhatALinkLeadsTo) {
    fs::create_directories(logs());
    const std::string target = sandbox.write("elsewhere.txt", "elsewhere");
    fs::create_symlink(target, logs() + "/Reel.1.log");
    fs::create_symlink("Reel.1.log", logs() + "/Reel.2.log");
    EXPECT_THAT(collected(), ElementsAre(Pair(logs() + "/Reel.1.log", "elsewhere"),
                                         Pair(logs() + "/Reel.2.log", "elsewhere")));
}

TEST_F(LogCollectionTest, takesARelativeLinkFromItsOwnFolder) {
    make(library() + "/Logs", "kept.txt");
    fs::create_directories(logs());
    fs::create_symlink("../kept.txt", logs() + "/Reel.1.log");
    EXPECT_THAT(collected(), ElementsAre(Pair(logs() + "/Reel.1.log", "kept.txt")));
}

TEST_F(LogCollectionTest, copiesADanglingLinkAsItIs) {
    fs::create_directories(logs());
    fs::create_symlink("missing", logs() + "/Reel.1.log");
    EXPECT_THAT(collected({"Reel", "Reel.1"}),
                ElementsAre(Pair(logs() + "/Reel.1.log", "-> missing")));
}

TEST_F(LogCollectionTest, copiesThePreferenceFileThatALinkLeadsTo) {
    fs::create_directories(preferences());
    const std::string target = sandbox.write("dotfiles.plist", "mine");
    fs::create_symlink(target, preferences() + "/com.quillmark.Reel.plist");
    EXPECT_THAT(collected(),
                ElementsAre(Pair(preferences() + "/com.quillmark.Reel.plist", "mine")));
}

// Order and failures

TEST_F(LogCollectionTest, stopsAtALogThatCannotBeCopied) {
    const std::string first = make(logs(), "Reel.1.log");
    const std::string second = make(logs(), "Reel.2.log");
    make(logs(), "Reel.3.log");
    make(diagnosticReports(), "Reel_1.crash");
    close(second);
    test::ConsoleCapture console;
    LogCollection collection(folder, {"Reel"});
    EXPECT_FALSE(collection.addLogs());
    EXPECT_THAT(console.lines(), ElementsAre("Unable to copy log: The file " + second +
                                             " cannot be copied: permission denied."));
    EXPECT_THAT(contentsOf(folder), ElementsAre(Pair(first, "Reel.1.log")));
}

TEST_F(LogCollectionTest, copiesLogsThenCrashReportsThenPreferences) {
    const std::string reelLog = make(logs(), "Reel.1.log");
    const std::string older = make(library() + "/Logs/CrashReporter", "Reel_1.crash");
    const std::string newer = make(diagnosticReports(), "Reel_1.crash");
    close(make(preferences(), "com.quillmark.Reel.plist"));
    test::ConsoleCapture console;
    EXPECT_FALSE(LogCollection(folder, {"Reel"}).addLogs());
    EXPECT_EQ(contentsOf(folder).size(), 3U);
    fs::remove_all(folder + "/");
    makeFolder("copies");
    close(newer);
    EXPECT_FALSE(LogCollection(folder, {"Reel"}).addLogs());
    EXPECT_THAT(contentsOf(folder),
                ElementsAre(Pair(older, "Reel_1.crash"), Pair(reelLog, "Reel.1.log")));
    EXPECT_EQ(console.lines().size(), 2U);
}

TEST_F(LogCollectionTest, reportsAFolderThatCannotBeMade) {
    make(logs(), "Reel.1.log");
    fs::permissions(folder, fs::perms(0500));
    test::ConsoleCapture console;
    LogCollection collection(folder, {"Reel"});
    EXPECT_FALSE(collection.addLogs());
    EXPECT_EQ(collection.count(), 0U);
    const auto lines = console.lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_TRUE(lines[0].starts_with("Unable to copy log: The folder " + folder)) << lines[0];
    EXPECT_THAT(runs(), IsEmpty());
}

// Further files

TEST_F(LogCollectionTest, addsFurtherFilesUnderTheirFullPaths) {
    const std::string file = make(sandbox.path("a/b"), "Cut.xml");
    const std::string neighbour = make(sandbox.path("a/b"), "Cut 2.xml");
    LogCollection collection(folder, {"Reel"});
    EXPECT_TRUE(collection.addFiles({file, neighbour}));
    EXPECT_EQ(collection.count(), 2U);
    EXPECT_THAT(contentsOf(folder),
                ElementsAre(Pair(neighbour, "Cut 2.xml"), Pair(file, "Cut.xml")));
}

TEST_F(LogCollectionTest, addsAFolderWithAllThatIsInIt) {
    const std::string file = make(sandbox.path("project/deep"), "Cut.xml");
    LogCollection collection(folder, {"Reel"});
    EXPECT_TRUE(collection.addFiles({sandbox.path("project") + "/"}));
    EXPECT_EQ(collection.count(), 1U);
    EXPECT_THAT(contentsOf(folder), ElementsAre(Pair(file, "Cut.xml")));
}

TEST_F(LogCollectionTest, addsAFurtherLinkAsALink) {
    make(sandbox.path("a"), "Cut.xml");
    fs::create_symlink("Cut.xml", sandbox.path("a/link"));
    EXPECT_TRUE(adds({sandbox.path("a/link")}));
    EXPECT_THAT(contentsOf(folder), ElementsAre(Pair(sandbox.path("a/link"), "-> Cut.xml")));
}

TEST_F(LogCollectionTest, takesARelativePathFromTheWorkingFolder) {
    const fs::path before = fs::current_path();
    const std::string file = make(sandbox.path("a"), "Cut.xml");
    fs::current_path(sandbox.folder());
    EXPECT_TRUE(adds({"a/Cut.xml"}));
    fs::current_path(before);
    EXPECT_THAT(contentsOf(folder), ElementsAre(Pair(file, "Cut.xml")));
}

TEST_F(LogCollectionTest, letsNoPathLeadOutOfTheFolder) {
    const std::string file = make(sandbox.path("a"), "Cut.xml");
    EXPECT_TRUE(adds({"/../../../../../../../../.." + file}));
    EXPECT_THAT(contentsOf(folder), ElementsAre(Pair(file, "Cut.xml")));
}

TEST_F(LogCollectionTest, stopsAtAFurtherFileThatCannotBeCopied) {
    const std::string file = make(sandbox.path("a"), "Cut.xml");
    const std::string missing = sandbox.path("a/missing");
    test::ConsoleCapture console;
    EXPECT_FALSE(adds({missing, file}));
    EXPECT_THAT(console.lines(), ElementsAre("Unable to copy file: The file " + missing +
                                             " cannot be copied: no such file or folder."));
    EXPECT_THAT(contentsOf(folder), IsEmpty());
}

TEST_F(LogCollectionTest, addsNoFileTwice) {
    const std::string reelLog = make(logs(), "Reel.1.log");
    test::ConsoleCapture console;
    LogCollection collection(folder, {"Reel"});
    EXPECT_TRUE(collection.addLogs());
    EXPECT_FALSE(collection.addFiles({reelLog}));
    EXPECT_EQ(collection.count(), 1U);
    const auto lines = console.lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_TRUE(lines[0].starts_with("Unable to copy file: ")) << lines[0];
}

TEST_F(LogCollectionTest, triesToMakeTheFolderOfAFurtherFileWithMoreRights) {
    const std::string file = make(sandbox.path("a"), "Cut.xml");
    fs::permissions(folder, fs::perms(0500));
    test::ConsoleCapture console;
    EXPECT_FALSE(adds({file}));
    EXPECT_THAT(runs(), ElementsAre("execute /bin/mkdir -p " + folder + sandbox.path("a")));
    const auto lines = console.lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_TRUE(lines[0].starts_with("Unable to copy file: ")) << lines[0];
}

TEST_F(LogCollectionTest, addsNothingForAnEmptyPath) {
    test::ConsoleCapture console;
    EXPECT_FALSE(adds({""}));
    EXPECT_EQ(console.lines().size(), 1U);
    EXPECT_THAT(contentsOf(folder), IsEmpty());
}

// The machine's files, in a view of the machine of the test's own

class MachineLogCollection : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!mounts_.isAvailable() ||
            !mounts_.mountVolume("/var/lib", "tmpfs", "size=1m,mode=1777")) {
            GTEST_SKIP() << "this process may not mount volumes";
        }
        user_ = std::make_unique<test::Unprivileged>();
        sandbox_ = std::make_unique<test::Sandbox>();
        fs::create_directories(copies());
    }
    static std::string make(const std::string& path) {
        fs::create_directories(fs::path(path).parent_path());
        test::writeBytes(path, fs::path(path).filename().string());
        return path;
    }
    [[nodiscard]] std::string copies() const { return sandbox_->path("copies"); }
    [[nodiscard]] std::string userLibrary() const {
        return sandbox_->home() + "/.local/share/quillmark";
    }

    static constexpr const char* kMachineLibrary = "/var/lib/quillmark";
    static constexpr const char* kLog = "/Logs/Quillmark/Reel.1.log";

  private:
    test::PrivateMounts mounts_;
    std::unique_ptr<test::Unprivileged> user_;
    std::unique_ptr<test::Sandbox> sandbox_;
};

TEST_F(MachineLogCollection, takesTheMachinesFilesAsWellAsTheUsers) {
    test::Contents expected;
    for (const std::string& library : {userLibrary(), std::string(kMachineLibrary)}) {
        for (const char* place :
             {kLog, "/Logs/CrashReporter/Reel_1.crash", "/Logs/DiagnosticReports/Reel_1.ips",
              "/Preferences/com.quillmark.reel.plist"}) {
            expected[make(library + place)] = fs::path(place).filename().string();
        }
    }
    LogCollection collection(copies(), {"Reel"});
    EXPECT_TRUE(collection.addLogs());
    EXPECT_EQ(collection.count(), 8U);
    EXPECT_EQ(contentsOf(copies()), expected);
}

TEST_F(MachineLogCollection, takesTheUsersFilesFirst) {
    const std::string own = make(userLibrary() + kLog);
    const std::string preference = make(userLibrary() + "/Preferences/com.quillmark.Reel.plist");
    fs::permissions(make(std::string(kMachineLibrary) + kLog), fs::perms::none);
    test::ConsoleCapture console;
    EXPECT_FALSE(LogCollection(copies(), {"Reel"}).addLogs());
    EXPECT_EQ(console.lines().size(), 1U);
    EXPECT_THAT(contentsOf(copies()),
                ElementsAre(Pair(own, "Reel.1.log"), Pair(preference, "com.quillmark.Reel.plist")));
}

}  // namespace
}  // namespace vornic
