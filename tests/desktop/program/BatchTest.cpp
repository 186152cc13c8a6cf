#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/desktop/program/ProgramTest.h"

// The batch window, by keys and mouse.

namespace vornic::test {
namespace {

class BatchProgramTest : public ProgramTest {
  protected:
    static void waitForText(const DrivenProgram& program, const AccessibleNode& window,
                            const std::string& text) {
        program.waitFor("the text " + text,
                        [&] { return window.describe().find(text) != std::string::npos; });
    }
};

TEST_F(BatchProgramTest, checksAFolderAndOpensOneOfItsFilesByTheKeyboard) {
    std::filesystem::create_directories(sandbox.path("cuts"));
    sandbox.write("cuts/a.xml", kSound);
    sandbox.write("cuts/b.xml", kBroken);
    showOpenPanelAtStart(0);
    DrivenProgram program = start({});
    program.waitUntilActive("Vornic");
    session->pressKeys({"ctrl+b"});
    program.waitUntilActive("Batch");
    const AccessibleNode window = program.window("Batch");
    EXPECT_FALSE(program.findWindow("Vornic")) << "the start window makes room";
    session->pressKeys({"alt+d"});
    program.waitUntilActive("Add Folder or Bundle");
    session->pressKeys({"ctrl+a"});
    session->type(sandbox.path("cuts"));
    session->pressKeys({"Return"});
    waitForText(program, window, "2 files shown");
    program.waitUntilActive("Batch");
    session->pressKeys({"alt+k"});
    program.answerAlert("The batch has ended", "OK");
    program.waitUntilActive("Batch");
    waitForText(program, window, "2 files checked: 1 sound, 1 with problems.");
    session->pressKeys({"alt+y"});
    waitForText(program, window, "1 file shown");
    session->pressKeys({"Tab", "Down", "Return"});
    program.answerAlert("Unable to repair file", "OK");
    program.window("b.xml");
    program.choose(program.window("b.xml"), "Window", "Close All");
    program.waitUntilActive("Vornic");
    session->pressKeys({"ctrl+q"});
    program.expectCleanEnd();
}

}  // namespace
}  // namespace vornic::test
