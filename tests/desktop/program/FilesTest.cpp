#include <string>

#include <gtest/gtest.h>

#include "tests/desktop/program/ProgramTest.h"
#include "tests/support/StandInProgram.h"

// Files that are shown in other programs.

namespace vornic::test {
namespace {

using FilesProgramTest = ProgramTest;

TEST_F(FilesProgramTest, showsTheRepairedFileAndTheTrashInTheFileManager) {
    const StandInProgram opener(programFolder() + "/xdg-open", sandbox.home() + "/.opened");
    const DrivenProgram program = start({sandbox.write("cut.xml", kDamaged)});
    program.answerAlert("The file was repaired successfully", "OK");
    program.clickButton("Show the Trash, where the original file is");
    EXPECT_EQ(opener.takeArguments(), std::vector<std::string>{trash()});
    program.clickButton("Show the file in its folder");
    EXPECT_EQ(opener.takeArguments(), std::vector<std::string>{sandbox.folder()});
}

}  // namespace
}  // namespace vornic::test
