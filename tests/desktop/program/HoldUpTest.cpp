#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/desktop/program/ProgramTest.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/PrivateMounts.h"

// What may happen to files, volumes and folders while the program is at work.

namespace vornic::test {
namespace {

namespace fs = std::filesystem;

using ::testing::AnyOf;

// So long that a test comes in between, so short that it waits for the end.
constexpr std::size_t kSomeTime = 60000;

class HoldUpProgramTest : public OwnMounts, public ProgramTest {
  protected:
    static void waitForTheEnd(const DrivenProgram& program) {
        program.waitFor("the end of the run", [&] { return !program.findWindow(kProgress); });
    }
};

TEST_F(HoldUpProgramTest, outlivesAFileThatGoesDuringItsRun) {
    const std::string path = sandbox.write("cut.xml", damagedAtLength(kSomeTime));
    DrivenProgram program = start({path});
    program.waitForReport(program.window("cut.xml"), "Invalid character");
    ASSERT_EQ(std::remove(path.c_str()), 0);
    waitForTheEnd(program);
    program.waitForLabel(
        "Repaired, but another program has changed the file meanwhile. It is as that program left "
        "it; the repaired file is the one called cut-backup.xml.");
    program.answerAlert("The file was repaired successfully", "OK");
    EXPECT_EQ(readBytes(sandbox.path("cut-backup.xml")), kSound);
    session->pressKeys({"ctrl+q"});
    program.expectCleanEnd();
}

TEST_F(HoldUpProgramTest, reportsThatTheFileHasGoneWhenItIsToBeRepairedAgain) {
    const std::string path = sandbox.write("cut.xml", kSound);
    const DrivenProgram program = start({path});
    program.answerAlert("No repair was necessary", "OK");
    ASSERT_EQ(std::remove(path.c_str()), 0);
    program.clickButton("Repair");
    program.waitForLabel("The file " + path + " cannot be found.");
    program.answerAlert("Unable to locate file", "OK");
    EXPECT_EQ(program.windowCount(), 1U) << program.describe();
}

TEST_F(HoldUpProgramTest, outlivesAVolumeThatGoesDuringARun) {
    const std::string volume = sandbox.path("volume");
    fs::create_directory(volume);
    if (!mounts.mountVolume(volume, "tmpfs", "size=16m")) {
        GTEST_SKIP() << "needs root and the right to mount";
    }
    const std::string path = sandbox.write("volume/cut.xml", damagedAtLength(kSomeTime));
    DrivenProgram program = start({path});
    program.waitForReport(program.window("cut.xml"), "Invalid character");
    ASSERT_TRUE(mounts.unmountVolume(volume));
    waitForTheEnd(program);
    // What was repaired is kept where the volume was.
    EXPECT_EQ(namesIn(volume), std::vector<std::string>{"cut-backup.xml"});
    EXPECT_EQ(readBytes(sandbox.path("volume/cut-backup.xml")), kSound);
    EXPECT_FALSE(exists(trash() + "/cut.xml"));
    program.clickButton("OK");
    program.clickButton("Repair");
    program.answerAlert("Unable to locate file", "OK");
    session->pressKeys({"ctrl+q"});
    program.expectCleanEnd();
}

TEST_F(HoldUpProgramTest, showsAFileThatHasTwoNamesInOneWindow) {
    const std::string path = sandbox.write("cut.xml", kSound);
    fs::create_hard_link(path, sandbox.path("other.xml"));
    const DrivenProgram program = start({path, sandbox.path("other.xml")});
    program.answerAlert("No repair was necessary", "OK");
    EXPECT_EQ(program.windowCount(), 1U) << program.describe();
}

TEST_F(HoldUpProgramTest, repairsOneFileInTwoProgramsAtOnceWithoutALoss) {
    const std::string damaged = damagedAtLength(kSomeTime / 4);
    const std::string path = sandbox.write("cut.xml", damaged);
    const DrivenProgram first = start({path});
    const DrivenProgram second = start({path});
    for (const DrivenProgram* const program : {&first, &second}) {
        program->window("cut.xml");
        program->waitFor("an end", [&] {
            return !program->findWindow(kProgress) && program->findWindow("Vornic");
        });
    }
    EXPECT_THAT(readBytes(path), AnyOf(kSound, damaged));
    EXPECT_TRUE(readBytes(path) == kSound || exists(sandbox.path("cut-backup.xml")));
    EXPECT_EQ(readBytes(trash() + "/cut.xml"), damaged);
}

TEST_F(HoldUpProgramTest, leavesTheFileWhenThereIsNoTrash) {
    const std::string path = sandbox.write("cut.xml", kDamaged);
    // A file where the folder would be.
    std::ofstream(trash()) << "no folder";
    const DrivenProgram program = start({path});
    program.waitForLabel(
        "Repaired, but the original file could not be moved to the Trash. It is as it was; the "
        "repaired file is the one called cut-backup.xml.");
    EXPECT_EQ(readBytes(path), kDamaged);
    EXPECT_EQ(readBytes(sandbox.path("cut-backup.xml")), kSound);
}

TEST_F(HoldUpProgramTest, repairsWithoutAHomeThatCanBeWritten) {
    const std::string path = sandbox.write("cut.xml", kSound);
    DrivenProgram program = startWith(
        {.arguments = {path},
         .environment = {"HOME=/proc/none", "XDG_DATA_HOME=/proc/none/share",
                         "XDG_CONFIG_HOME=/proc/none/config", "XDG_CACHE_HOME=/proc/none/cache"}});
    program.answerAlert("No repair was necessary", "OK");
    program.waitForLabel("The file is sound.");
    program.waitUntilActive("cut.xml");
    session->pressKeys({"ctrl+q"});
    program.expectCleanEnd();
}

}  // namespace
}  // namespace vornic::test
