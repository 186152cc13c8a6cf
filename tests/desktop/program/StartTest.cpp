#include <csignal>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/desktop/program/ProgramTest.h"
#include "tests/support/machine/FileState.h"

// How the program starts, with and without files.

namespace vornic::test {
namespace {

constexpr const char* kOpenPanel = "Browse for a Final Cut Pro 7 or X XML file";

using StartProgramTest = ProgramTest;

TEST_F(StartProgramTest, opensTheFileThatTheUserChoosesInTheOpenPanel) {
    const std::string path = sandbox.write("cut.xml", kDamaged);
    DrivenProgram program = start({});
    program.waitUntilActive(kOpenPanel);
    session->type(path);
    session->pressKeys({"Return"});
    program.answerAlert("The file was repaired successfully", "OK");
    EXPECT_EQ(readBytes(path), kSound);
    program.waitUntilGone(kOpenPanel);
}

TEST_F(StartProgramTest, takesNoFileOfAnotherKindWhoseNameIsTyped) {
    const std::string other = sandbox.write("notes.txt", "notes");
    const std::string path = sandbox.write("cut.xml", kSound);
    DrivenProgram program = start({});
    program.waitUntilActive(kOpenPanel);
    session->type(other);
    session->pressKeys({"Return"});
    program.answerAlert("The file “notes.txt” cannot be chosen.", "OK");
    program.waitUntilActive(kOpenPanel);
    session->pressKeys({"ctrl+a"});
    session->type(path);
    session->pressKeys({"Return"});
    program.answerAlert("No repair was necessary", "OK");
    EXPECT_EQ(readBytes(other), "notes");
}

TEST_F(StartProgramTest, showsTheStartWindowWhenTheOpenPanelIsCancelled) {
    DrivenProgram program = start({});
    program.waitUntilActive(kOpenPanel);
    session->pressKeys({"Escape"});
    program.waitUntilGone(kOpenPanel);
    program.waitUntilActive("Vornic");
    // The start window takes the keys a second later, so that the panel does not come again.
    EXPECT_FALSE(becomesTrue([&] { return program.findWindow(kOpenPanel).has_value(); },
                             std::chrono::milliseconds(1500)));
    program.waitForLabel("Drop Final Cut Pro XML files here to repair them.");
    EXPECT_EQ(program.windowCount(), 1U) << program.describe();
    program.clickButton("Open Files…");
    program.waitUntilActive(kOpenPanel);
    session->pressKeys({"Escape"});
    program.waitUntilActive("Vornic");
    session->pressKeys({"ctrl+w"});
    program.expectCleanEnd();
}

TEST_F(StartProgramTest, showsNoOpenPanelUnlessItIsWanted) {
    for (const int value : {0, 2}) {
        showOpenPanelAtStart(value);
        DrivenProgram program = start({});
        program.waitUntilActive("Vornic");
        const auto start = std::chrono::steady_clock::now();
        EXPECT_FALSE(becomesTrue([&] { return program.findWindow(kOpenPanel).has_value(); },
                                 std::chrono::milliseconds(1500)))
            << value;
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1500));
        session->pressKeys({"ctrl+q"});
        program.expectCleanEnd();
    }
}

TEST_F(StartProgramTest, showsNoOpenPanelWhenItIsStartedWithAFile) {
    DrivenProgram program = start({sandbox.write("cut.xml", kSound)});
    program.answerAlert("No repair was necessary", "OK");
    EXPECT_FALSE(becomesTrue([&] { return program.findWindow(kOpenPanel).has_value(); },
                             std::chrono::milliseconds(1500)));
}

TEST_F(StartProgramTest, reportsThatAFileIsNotThere) {
    DrivenProgram program = start({sandbox.path("gone.xml")});
    program.waitForLabel("There is no such file: " + sandbox.path("gone.xml"));
    program.answerAlert("The document “gone.xml” could not be opened.", "OK");
    program.waitForLabel("Drop Final Cut Pro XML files here to repair them.");
    program.waitUntilActive("Vornic");
    session->pressKeys({"ctrl+q"});
    program.expectCleanEnd();
}

TEST_F(StartProgramTest, handsTheFilesOfALaterStartToTheProgramThatRuns) {
    DrivenProgram first =
        startWith({.arguments = {sandbox.write("one.xml", kSound)}, .joinsOthers = true});
    first.answerAlert("No repair was necessary", "OK");
    const std::string path = sandbox.write("two.xml", kDamaged);
    DrivenProgram second = startWith({.arguments = {path}, .joinsOthers = true});
    second.expectCleanEnd();
    first.answerAlert("The file was repaired successfully", "OK");
    EXPECT_EQ(readBytes(path), kSound);
    EXPECT_TRUE(first.findWindow("one.xml"));
    startWith({.arguments = {sandbox.path("one.xml")}, .joinsOthers = true}).expectCleanEnd();
    EXPECT_EQ(first.windowCount(), 2U) << first.describe();
}

}  // namespace
}  // namespace vornic::test
