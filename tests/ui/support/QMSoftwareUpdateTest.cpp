#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <future>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/locks/FolderLock.h"
#include "platform/settings/Bundle.h"
#include "platform/settings/PropertyList.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"
#include "tests/foundation/tasks/TaskTest.h"
#include "tests/support/fakes/RecordingWorkspaceOpener.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/RightsOfRoot.h"
#include "tests/support/programs/StandInProgram.h"
#include "ui/support/QMSoftwareUpdate.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using platform::PropertyList;
using test::StandInProgram;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kName = "/Quillmark Software Update.app";
constexpr const char* kNotFound = "Error: unable to find software updater";
constexpr const char* kNoPath = "Unable to launch Software Update - path doesn't exist";
constexpr const char* kNoBundle = "Unable to launch Software Update - updater bundle not found.";
constexpr const char* kNoExecutable =
    "Unable to launch Software Update - executable path doesn't exist";

/// The main bundle is the test's own, and has no updater unless the test puts one there.
class QMSoftwareUpdateTest : public test::TaskTest {
  protected:
    QMSoftwareUpdateTest() { platform::Bundle::setMainBundle(platform::Bundle(bundle)); }
    ~QMSoftwareUpdateTest() override {
        EXPECT_TRUE(platform::joinDetachedThreads(std::chrono::seconds(30)));
        fs::permissions(temporary(), fs::perms::owner_all);
        platform::Bundle::setMainBundle(std::nullopt);
    }

    void SetUp() override {
        if (test::exists("/opt/Quillmark")) {
            GTEST_SKIP() << "this machine has the maker's programs installed";
        }
    }

    /// Makes an updater whose executable has the name that its information tells, and that leaves
    /// its arguments as the record.
    [[nodiscard]] StandInProgram makeUpdater(const std::string& path) const {
        StandInProgram program(path + "/Contents/MacOS/updater", record);
        ErrorSlot error;
        EXPECT_TRUE(PropertyList(PropertyList::Dictionary{{"CFBundleExecutable", "updater"}})
                        .writeFile(path + "/Contents/Info.plist", error));
        return program;
    }
    [[nodiscard]] StandInProgram makeOwnUpdater() const { return makeUpdater(inResources); }
    void setSwitch(const PropertyList& value) const {
        ErrorSlot error;
        EXPECT_TRUE(PropertyList(PropertyList::Dictionary{{"SUCheckAtStartup", value}})
                        .writeFile(sandbox.home() + "/.local/share/quillmark/Preferences/"
                                                    "com.quillmark.global.plist",
                                   error));
    }
    [[nodiscard]] static std::string temporary() { return std::getenv("TMPDIR"); }
    [[nodiscard]] static std::string copy() { return temporary() + kName; }
    static void closeTemporaryFolder() { fs::permissions(temporary(), fs::perms(0500)); }
    /// What stands in an updater beside its program.
    static void leaveIn(const std::string& updater, const std::string& name) {
        fs::create_directories(updater + "/Contents/Resources");
        test::writeBytes(updater + "/Contents/Resources/" + name, name);
    }
    [[nodiscard]] static std::vector<std::string> resourcesOf(const std::string& updater) {
        return test::namesIn(updater + "/Contents/Resources");
    }

    const std::string bundle = sandbox.path("Vornic.app");
    const std::string inResources = bundle + "/Contents/Resources" + kName;
    const std::string inMacOS = bundle + "/Contents/MacOS" + kName;
    const std::string record = sandbox.path("record");
    test::InstalledWorkspaceOpener opener;
};

// Which updater

TEST_F(QMSoftwareUpdateTest, copiesTheUpdaterFromTheResourcesToTheTemporaryFolder) {
    const StandInProgram program = makeOwnUpdater();
    leaveIn(inResources, "texts");
    EXPECT_EQ(QMSoftwareUpdate::updaterPath(), copy());
    EXPECT_EQ(test::fileState(copy() + "/Contents/MacOS/updater"),
              test::fileState(inResources + "/Contents/MacOS/updater"));
    EXPECT_THAT(resourcesOf(copy()), ElementsAre("texts"));
    EXPECT_TRUE(fs::is_directory(inResources));
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMSoftwareUpdateTest, takesTheUpdaterBesideTheExecutableWhenThereIsNoOther) {
    const StandInProgram program = makeUpdater(inMacOS);
    leaveIn(inMacOS, "beside");
    EXPECT_EQ(QMSoftwareUpdate::updaterPath(), copy());
    EXPECT_THAT(resourcesOf(copy()), ElementsAre("beside"));
}

TEST_F(QMSoftwareUpdateTest, prefersTheUpdaterInTheResourcesToTheOneBesideTheExecutable) {
    leaveIn(inMacOS, "beside");
    leaveIn(inResources, "in resources");
    EXPECT_EQ(QMSoftwareUpdate::updaterPath(), copy());
    EXPECT_THAT(resourcesOf(copy()), ElementsAre("in resources"));
}

TEST_F(QMSoftwareUpdateTest, saysWhenThereIsNoUpdater) {
    test::CapturedOutput output;
    EXPECT_EQ(QMSoftwareUpdate::updaterPath(), std::nullopt);
    EXPECT_EQ(output.text(), std::string(kNotFound) + "\n");
    EXPECT_THAT(log.entries(), ElementsAre(kNotFound));
}

TEST_F(QMSoftwareUpdateTest, looksForNoUpdaterInTheUsersOwnApplications) {
    leaveIn(sandbox.home() + "/Applications/Quillmark" + kName, "own");
    const test::CapturedOutput output;
    EXPECT_EQ(QMSoftwareUpdate::updaterPath(), std::nullopt);
}

TEST_F(QMSoftwareUpdateTest, putsTheCopyInThePlaceOfAnOlderOne) {
    leaveIn(inResources, "new");
    leaveIn(copy(), "old");
    EXPECT_EQ(QMSoftwareUpdate::updaterPath(), copy());
    EXPECT_THAT(resourcesOf(copy()), ElementsAre("new"));
}

TEST_F(QMSoftwareUpdateTest, putsTheCopyInThePlaceOfAnythingElse) {
    leaveIn(inResources, "new");
    leaveIn(sandbox.path("other"), "other");
    for (const auto& put : std::vector<std::function<void()>>{
             [] { test::writeBytes(copy(), "a file"); },
             [this] { fs::create_symlink(sandbox.path("other"), copy()); },
             [this] { fs::create_symlink(sandbox.path("missing"), copy()); }}) {
        fs::remove_all(copy());
        put();
        EXPECT_EQ(QMSoftwareUpdate::updaterPath(), copy());
        EXPECT_FALSE(fs::is_symlink(copy()));
        EXPECT_THAT(resourcesOf(copy()), ElementsAre("new"));
    }
    EXPECT_THAT(resourcesOf(sandbox.path("other")), ElementsAre("other"));
}

TEST_F(QMSoftwareUpdateTest, copiesTheUpdaterThatALinkInTheBundleLeadsTo) {
    leaveIn(sandbox.path("built.app"), "new");
    fs::create_directories(fs::path(inResources).parent_path());
    fs::create_symlink("../../../built.app", inResources);
    EXPECT_EQ(QMSoftwareUpdate::updaterPath(), copy());
    EXPECT_FALSE(fs::is_symlink(copy()));
    EXPECT_THAT(resourcesOf(copy()), ElementsAre("new"));
}

TEST_F(QMSoftwareUpdateTest, usesTheOlderCopyWhenItCannotBeReplaced) {
    leaveIn(inResources, "new");
    leaveIn(copy(), "old");
    fs::permissions(copy() + "/Contents/Resources", fs::perms(0500));
    closeTemporaryFolder();
    EXPECT_EQ(QMSoftwareUpdate::updaterPath(), copy());
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMSoftwareUpdateTest, reportsThePathOfTheCopyEvenWhenItCannotBeMade) {
    leaveIn(inResources, "new");
    closeTemporaryFolder();
    EXPECT_EQ(QMSoftwareUpdate::updaterPath(), copy());
    EXPECT_FALSE(test::exists(copy()));
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMSoftwareUpdateTest, refusesALinkThatItCannotTakeOutOfTheWay) {
    leaveIn(inResources, "new");
    const StandInProgram other = makeUpdater(sandbox.path("other"));
    fs::create_symlink(sandbox.path("other"), copy());
    closeTemporaryFolder();
    const test::CapturedOutput output;
    EXPECT_EQ(QMSoftwareUpdate::updaterPath(), std::nullopt);
    EXPECT_THAT(log.entries(), ElementsAre(kNotFound));
}

TEST_F(QMSoftwareUpdateTest, refusesWhatAnotherUserHasPutInTheTemporaryFolder) {
    const StandInProgram program = makeOwnUpdater();
    {
        const test::RightsOfRoot rights;
        if (!rights.available()) {
            GTEST_SKIP() << "not started as root";
        }
        leaveIn(copy(), "somebody else's");
        ASSERT_EQ(chmod((copy() + "/Contents/Resources").c_str(), 0755), 0);
    }
    const test::CapturedOutput output;
    QMSoftwareUpdate::automaticallyCheckForUpdates();
    EXPECT_THAT(log.entries(), ElementsAre(kNotFound, kNoPath));
    EXPECT_THAT(resourcesOf(copy()), ElementsAre("somebody else's"));
    const test::RightsOfRoot rights;
    fs::remove_all(copy());
}

TEST_F(QMSoftwareUpdateTest, givesEachOfTwoProgramsAtOnceACompleteCopy) {
    for (int number = 0; number < 50; ++number) {
        leaveIn(inResources, "file " + std::to_string(number));
    }
    const auto files = resourcesOf(inResources);
    const auto locate = [] {
        for (int round = 0; round < 10; ++round) {
            EXPECT_EQ(QMSoftwareUpdate::updaterPath(), copy());
        }
    };
    auto one = std::async(std::launch::async, locate);
    auto other = std::async(std::launch::async, locate);
    one.get();
    other.get();
    EXPECT_EQ(resourcesOf(copy()), files);
}

// The check that the program starts by itself

TEST_F(QMSoftwareUpdateTest, startsTheCopiedUpdaterWithThePathOfTheBundle) {
    const StandInProgram program = makeOwnUpdater();
    QMSoftwareUpdate::automaticallyCheckForUpdates();
    EXPECT_THAT(program.takeArguments(), ElementsAre("-checkpath", bundle));
    EXPECT_TRUE(fs::is_directory(copy()));
    EXPECT_THAT(log.entries(), IsEmpty());
    EXPECT_THAT(opener->opened, IsEmpty());
}

TEST_F(QMSoftwareUpdateTest, findsTheExecutableUnderTheUpdatersOwnName) {
    const StandInProgram program(inResources + "/Contents/MacOS/Quillmark Software Update", record);
    QMSoftwareUpdate::automaticallyCheckForUpdates();
    EXPECT_THAT(program.takeArguments(), ElementsAre("-checkpath", bundle));
}

TEST_F(QMSoftwareUpdateTest, doesNotWaitForTheUpdater) {
    const StandInProgram program = makeOwnUpdater();
    const std::string executable = inResources + "/Contents/MacOS/updater";
    fs::rename(executable, executable + "-itself");
    test::writeBytes(executable, "#!/bin/sh\nuntil [ -e '" + sandbox.path("go") +
                                     "' ]; do sleep 0.02; done\nexec \"$0-itself\" \"$@\"\n");
    fs::permissions(executable, fs::perms::owner_all);
    QMSoftwareUpdate::automaticallyCheckForUpdates();
    EXPECT_FALSE(program.wasRun());
    sandbox.write("go", "");
    EXPECT_THAT(program.takeArguments(), ElementsAre("-checkpath", bundle));
}

TEST_F(QMSoftwareUpdateTest, saysThatThereIsNoPathWithoutAnUpdater) {
    test::CapturedOutput output;
    QMSoftwareUpdate::automaticallyCheckForUpdates();
    EXPECT_THAT(log.entries(), ElementsAre(kNotFound, kNoPath));
    EXPECT_EQ(output.text(), std::string(kNotFound) + "\n" + kNoPath + "\n");
}

TEST_F(QMSoftwareUpdateTest, saysWhenThereIsNoBundleAtThePath) {
    leaveIn(inResources, "new");
    closeTemporaryFolder();
    test::CapturedOutput output;
    QMSoftwareUpdate::automaticallyCheckForUpdates();
    EXPECT_THAT(log.entries(), ElementsAre(kNoBundle));
    EXPECT_EQ(output.text(), std::string(kNoBundle) + "\n");
}

TEST_F(QMSoftwareUpdateTest, takesAFileForNoBundle) {
    fs::create_directories(fs::path(inResources).parent_path());
    test::writeBytes(inResources, "a file");
    const test::CapturedOutput output;
    QMSoftwareUpdate::automaticallyCheckForUpdates();
    EXPECT_THAT(log.entries(), ElementsAre(kNoBundle));
}

TEST_F(QMSoftwareUpdateTest, saysWhenTheUpdaterHasNoExecutable) {
    leaveIn(inResources, "new");
    test::CapturedOutput output;
    QMSoftwareUpdate::automaticallyCheckForUpdates();
    EXPECT_THAT(log.entries(), ElementsAre(kNoExecutable));
    EXPECT_EQ(output.text(), std::string(kNoExecutable) + "\n");
}

TEST_F(QMSoftwareUpdateTest, takesAFileThatCannotBeRunForNoExecutable) {
    const StandInProgram program = makeOwnUpdater();
    fs::permissions(inResources + "/Contents/MacOS/updater", fs::perms(0600));
    const test::CapturedOutput output;
    QMSoftwareUpdate::automaticallyCheckForUpdates();
    EXPECT_THAT(log.entries(), ElementsAre(kNoExecutable));
}

// The start of the program

TEST_F(QMSoftwareUpdateTest, startsNothingInAProgramThatQuits) {
    const StandInProgram program = makeOwnUpdater();
    platform::MainThread::shutdown();
    QMSoftwareUpdate::startup();
    EXPECT_TRUE(platform::joinDetachedThreads(std::chrono::seconds(30)));
    platform::MainThread::restart();
    EXPECT_FALSE(program.wasRun());
    EXPECT_FALSE(test::exists(copy()));
}

TEST_F(QMSoftwareUpdateTest, checksAtStartWithoutASwitch) {
    const StandInProgram program = makeOwnUpdater();
    QMSoftwareUpdate::startup();
    EXPECT_THAT(program.takeArguments(), ElementsAre("-checkpath", bundle));
}

TEST_F(QMSoftwareUpdateTest, checksAtStartWithAnythingButANumberEqualToFalse) {
    const StandInProgram program = makeOwnUpdater();
    for (const PropertyList& value :
         {PropertyList(1), PropertyList(true), PropertyList("NO"), PropertyList("0"),
          PropertyList(""), PropertyList(PropertyList::Array{0})}) {
        setSwitch(value);
        QMSoftwareUpdate::startup();
        EXPECT_THAT(program.takeArguments(), ElementsAre("-checkpath", bundle));
    }
}

TEST_F(QMSoftwareUpdateTest, checksNothingAtStartWhenItIsSwitchedOff) {
    const StandInProgram program = makeOwnUpdater();
    for (const PropertyList& value : {PropertyList(0), PropertyList(false), PropertyList(0.0)}) {
        setSwitch(value);
        QMSoftwareUpdate::startup();
        QMSoftwareUpdate().awakeFromNib();
        ASSERT_TRUE(platform::joinDetachedThreads(std::chrono::seconds(30)));
        EXPECT_FALSE(test::exists(copy()));
        EXPECT_FALSE(program.wasRun());
    }
}

TEST_F(QMSoftwareUpdateTest, checksAtStartOnAThreadOfItsOwn) {
    const StandInProgram program = makeOwnUpdater();
    {
        const platform::FolderLock turn(temporary());
        ASSERT_TRUE(turn.isHeld());
        QMSoftwareUpdate::startup();
        EXPECT_FALSE(test::exists(copy()));
    }
    EXPECT_THAT(program.takeArguments(), ElementsAre("-checkpath", bundle));
}

TEST_F(QMSoftwareUpdateTest, checksWhenTheInterfaceIsMade) {
    const StandInProgram program = makeOwnUpdater();
    QMSoftwareUpdate().awakeFromNib();
    EXPECT_THAT(program.takeArguments(), ElementsAre("-checkpath", bundle));
}

// On request

TEST_F(QMSoftwareUpdateTest, startsTheUpdaterAsAnApplicationOnRequest) {
    const StandInProgram program = makeOwnUpdater();
    QMSoftwareUpdate::launchSoftwareUpdate();
    QMSoftwareUpdate().manualUpdateCheck();
    const std::string request = "application " + copy();
    EXPECT_THAT(opener->opened, ElementsAre(request, request));
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMSoftwareUpdateTest, startsTheUpdaterOnRequestWithTheChecksSwitchedOff) {
    const StandInProgram program = makeOwnUpdater();
    setSwitch(PropertyList(false));
    QMSoftwareUpdate().manualUpdateCheck();
    EXPECT_EQ(opener->opened.size(), 1U);
}

TEST_F(QMSoftwareUpdateTest, saysThatThereIsNoPathOnRequestWithoutAnUpdater) {
    test::CapturedOutput output;
    QMSoftwareUpdate::launchSoftwareUpdate();
    EXPECT_THAT(log.entries(), ElementsAre(kNotFound, kNoPath));
    EXPECT_EQ(output.text(), std::string(kNotFound) + "\n" + kNoPath + "\n");
    EXPECT_THAT(opener->opened, IsEmpty());
}

TEST_F(QMSoftwareUpdateTest, saysNothingOfAnUpdaterThatThePlatformCannotStart) {
    leaveIn(inResources, "new");
    opener->answer = false;
    QMSoftwareUpdate::launchSoftwareUpdate();
    EXPECT_EQ(opener->opened.size(), 1U);
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMSoftwareUpdateTest, startsTheUpdaterForReal) {
    platform::WorkspaceOpener::setShared(nullptr);
    const StandInProgram program = makeOwnUpdater();
    QMSoftwareUpdate::launchSoftwareUpdate();
    // `printf` makes a line of its own for no argument.
    EXPECT_THAT(program.takeArguments(), ElementsAre(""));
}

// The machine's applications, in a view of the machine of the test's own

class QMSoftwareUpdateInstalledTest : private test::OwnMounts, public QMSoftwareUpdateTest {
  protected:
    void SetUp() override {
        const test::RightsOfRoot rights;
        if (!rights.available() || !mounts.isAvailable() ||
            !mounts.mountVolume("/opt", "tmpfs", "size=1m,mode=1777")) {
            GTEST_SKIP() << "this process may not mount volumes";
        }
    }

    const std::string installed = std::string("/opt/Quillmark") + kName;
};

TEST_F(QMSoftwareUpdateInstalledTest, usesTheInstalledUpdaterInItsPlace) {
    const StandInProgram own = makeOwnUpdater();
    const StandInProgram program = makeUpdater(installed);
    leaveIn(copy(), "old");
    EXPECT_EQ(QMSoftwareUpdate::updaterPath(), installed);
    EXPECT_THAT(resourcesOf(copy()), ElementsAre("old"));
    QMSoftwareUpdate::launchSoftwareUpdate();
    EXPECT_THAT(opener->opened, ElementsAre("application " + installed));
}

TEST_F(QMSoftwareUpdateInstalledTest, checksWithTheInstalledUpdater) {
    const StandInProgram program = makeUpdater(installed);
    QMSoftwareUpdate::automaticallyCheckForUpdates();
    EXPECT_THAT(program.takeArguments(), ElementsAre("-checkpath", bundle));
    EXPECT_FALSE(test::exists(copy()));
}

TEST_F(QMSoftwareUpdateInstalledTest, takesNoUpdaterOutsideTheMakersFolder) {
    leaveIn("/opt" + std::string(kName), "stray");
    const test::CapturedOutput output;
    EXPECT_EQ(QMSoftwareUpdate::updaterPath(), std::nullopt);
}

}  // namespace
}  // namespace vornic
