#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/desktop/program/ProgramTest.h"
#include "tests/support/machine/FileState.h"

// Opening files, and what their windows tell about the repair.

namespace vornic::test {
namespace {

using ::testing::HasSubstr;

using RepairProgramTest = ProgramTest;

TEST_F(RepairProgramTest, showsHowADamagedFileIsRepaired) {
    const std::string path = sandbox.write("cut.xml", kDamaged);
    DrivenProgram program = start({path});
    const AccessibleNode window = program.window("cut.xml");
    program.waitForReport(window, "Invalid character at byte 106 removed.");
    program.waitForLabel("Errors were found in the file and were successfully repaired.");
    program.answerAlert("The file was repaired successfully", "OK");
    program.waitForLabel("Repaired. The original file is in the Trash.");
    EXPECT_THAT(program.report(window), HasSubstr("The file was repaired successfully."));
    EXPECT_EQ(readBytes(path), kSound);
    EXPECT_EQ(readBytes(trash() + "/cut.xml"), kDamaged);
    session->pressKeys({"ctrl+q"});
    program.expectCleanEnd();
}

TEST_F(RepairProgramTest, leavesASoundFileAsItIs) {
    const std::string path = sandbox.write("cut.xml", kSound);
    const FileState before = fileState(path);
    DrivenProgram program = start({path});
    program.answerAlert("No repair was necessary", "OK");
    program.waitForLabel("The file is sound.");
    EXPECT_THAT(program.report(program.window("cut.xml")),
                HasSubstr("No critical errors were found in the file."));
    EXPECT_EQ(fileState(path), before);
    EXPECT_EQ(namesIn(sandbox.folder()), std::vector<std::string>{"cut.xml"});
    EXPECT_FALSE(exists(trash()));
}

TEST_F(RepairProgramTest, reportsThatAFileCannotBeRepairedAndLeavesItAsItIs) {
    const std::string path = sandbox.write("cut.xml", kBroken);
    DrivenProgram program = start({path});
    program.answerAlert("Unable to repair file", "OK");
    program.waitForLabel("Unable to repair. The file is as it was.");
    EXPECT_THAT(program.report(program.window("cut.xml")), HasSubstr("Unable to load XML data"));
    EXPECT_EQ(readBytes(path), kBroken);
    EXPECT_EQ(namesIn(sandbox.folder()), std::vector<std::string>{"cut.xml"});
    EXPECT_FALSE(exists(trash()));
}

TEST_F(RepairProgramTest, opensEachFileInAWindowOfItsOwn) {
    DrivenProgram program =
        start({sandbox.write("one.xml", kDamaged), sandbox.write("two.xml", kSound),
               sandbox.write("three.fcpxml", kBroken)});
    for (const char* const name : {"one.xml", "two.xml", "three.fcpxml"}) {
        const AccessibleNode window = program.window(name);
        program.control(window, "label", name);
        program.control(window, "text", "Report");
    }
    program.control(program.window("three.fcpxml"), "label", "Final Cut Pro X file (FCPXML)");
    program.control(program.window("two.xml"), "label", "Final Cut Pro 7 file (XMEML)");
    for (const char* const headline : {"The file was repaired successfully",
                                       "No repair was necessary", "Unable to repair file"}) {
        program.waitForLabel(headline);
    }
}

TEST_F(RepairProgramTest, repairsTheFileAgainWhenItsButtonIsPressed) {
    const std::string path = sandbox.write("cut.xml", kSound);
    DrivenProgram program = start({path});
    program.answerAlert("No repair was necessary", "OK");
    program.waitForLabel("The file is sound.");
    sandbox.write("cut.xml", kDamaged);
    program.clickButton("Repair");
    program.answerAlert("The file was repaired successfully", "OK");
    EXPECT_EQ(readBytes(path), kSound);
    sandbox.write("cut.xml", kDamaged);
    program.waitUntilActive("cut.xml");
    session->pressKeys({"ctrl+r"});
    program.answerAlert("The file was repaired successfully", "OK");
    EXPECT_EQ(readBytes(path), kSound);
    EXPECT_EQ(readBytes(trash() + "/cut.xml"), kDamaged);
}

TEST_F(RepairProgramTest, stopsARunThatIsCancelled) {
    const std::string damaged = damagedAtLength();
    const std::string path = sandbox.write("cut.xml", damaged);
    DrivenProgram program = start({path});
    program.clickButton("Cancel");
    program.waitForLabel("Cancelled. The file is as it was.");
    const AccessibleNode window = program.window("cut.xml");
    EXPECT_THAT(program.report(window), HasSubstr("The repair was cancelled."));
    EXPECT_EQ(program.windowCount(), 1U) << program.describe();
    EXPECT_EQ(readBytes(path), damaged);
    EXPECT_FALSE(exists(trash()));
    sandbox.write("cut.xml", kDamaged);
    program.clickButton("Repair");
    program.answerAlert("The file was repaired successfully", "OK");
    EXPECT_EQ(readBytes(path), kSound);
}

TEST_F(RepairProgramTest, cancelsARunWithTheEscapeKey) {
    const std::string path = sandbox.write("cut.xml", damagedAtLength());
    DrivenProgram program = start({path});
    program.waitUntilActive(kProgress);
    session->pressKeys({"Escape"});
    program.waitForLabel("Cancelled. The file is as it was.");
}

TEST_F(RepairProgramTest, staysAliveForOtherFilesDuringARun) {
    DrivenProgram program =
        start({sandbox.write("short.xml", kSound), sandbox.write("long.xml", damagedAtLength())});
    program.control("push button", "Cancel");
    program.answerAlert("No repair was necessary", "OK");
    const AccessibleNode window = program.window("short.xml");
    program.choose(window, "Tools", "Repair");
    program.answerAlert("No repair was necessary", "OK");
    EXPECT_TRUE(program.find("push button", "Cancel")) << program.describe();
}

}  // namespace
}  // namespace vornic::test
