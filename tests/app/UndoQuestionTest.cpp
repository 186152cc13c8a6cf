// The question about a changed file, at a terminal.

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/ProgramTest.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/programs/TerminalProgram.h"

namespace vornic::test {

using ::testing::HasSubstr;
using ::testing::Not;

class UndoQuestionTest : public ProgramTest {
  protected:
    /// A file that was repaired and has been edited since.
    std::string edited(const std::string& name) const {
        std::string path = files.writeDamaged(name);
        EXPECT_EQ(files.repair({"--quiet", path}).status, 0);
        writeBytes(path, "edited " + name);
        return path;
    }
    static std::string questionAbout(const std::string& path) {
        return "The file " + path +
               " has changed since. Bring back the original all the same? What is there now goes "
               "to the Trash. [y/N] ";
    }
    /// Types one answer to the question about one file.
    ProgramResult answer(const std::string& keys) const {
        const std::string path = edited("cut.xml");
        TerminalProgram program(files.repairer({"--undo", path}));
        EXPECT_TRUE(program.readUntil(questionAbout(path)));
        program.type(keys);
        return program.finish();
    }
    void expectUntouched() const {
        EXPECT_EQ(readBytes(files.path("cut.xml")), "edited cut.xml");
        EXPECT_EQ(readBytes(files.trash() + "/cut.xml"), damagedXMEML());
    }
};

TEST_F(UndoQuestionTest, yesBringsTheOriginalBack) {
    const ProgramResult result = answer("y\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr("The original is back: "));
    EXPECT_THAT(result.output, HasSubstr(" had changed since."));
    EXPECT_EQ(readBytes(files.path("cut.xml")), damagedXMEML());
    EXPECT_EQ(readBytes(files.trash() + "/cut.xml"), "edited cut.xml");
}

TEST_F(UndoQuestionTest, anythingElseLeavesTheFile) {
    for (const char* keys : {"n\n", "\n", "maybe\n"}) {
        const ProgramResult result = answer(keys);
        EXPECT_EQ(result.status, 3) << keys;
        EXPECT_THAT(result.output, HasSubstr("has changed since and was left as it is"));
        expectUntouched();
        removeTrash(files.home());
    }
}

TEST_F(UndoQuestionTest, theEndOfTheInputLeavesTheFile) {
    const ProgramResult result = answer("\x04");
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.output, HasSubstr("[y/N] \nvornic-repair: The file "));
    expectUntouched();
}

TEST_F(UndoQuestionTest, controlCEndsTheProgram) {
    const ProgramResult result = answer("\x03");
    EXPECT_EQ(result.status, 130);
    EXPECT_TRUE(result.output.ends_with("[y/N] \n")) << result.output;
    expectUntouched();
}

TEST_F(UndoQuestionTest, aLineAnswersOneQuestion) {
    const std::string first = edited("first.xml");
    const std::string second = edited("second.xml");
    TerminalProgram program(files.repairer({"--undo", first, second}));
    ASSERT_TRUE(program.readUntil(questionAbout(first)));
    program.type("yes, by all means, yyyyyyyyyyyyyyyyyyyyyyyyyyyyy\n");
    ASSERT_TRUE(program.readUntil(questionAbout(second)));
    program.type("n\n");
    EXPECT_EQ(program.finish().status, 1);
    EXPECT_EQ(readBytes(first), damagedXMEML());
    EXPECT_EQ(readBytes(second), "edited second.xml");
}

TEST_F(UndoQuestionTest, isNotAskedWithForce) {
    const std::string path = edited("cut.xml");
    TerminalProgram program(files.repairer({"--undo", "--force", path}));
    const ProgramResult result = program.finish();
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, Not(HasSubstr("[y/N]")));
    EXPECT_EQ(readBytes(path), damagedXMEML());
}

}  // namespace vornic::test
