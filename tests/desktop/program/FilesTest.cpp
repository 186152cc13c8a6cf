#include <csignal>
#include <string>

#include <gtest/gtest.h>

#include "tests/desktop/program/ProgramTest.h"
#include "tests/support/programs/StandInProgram.h"

// Files that come from other programs, and those that are shown in others.

namespace vornic::test {
namespace {

class FilesProgramTest : public ProgramTest {
  protected:
    // Drags a file out of another program's window, drops it in the middle of a window, with a key
    // held unless that is "", and waits for the window of the file.
    void dropOn(const DrivenProgram& program, const char* title, const char* fileName,
                const std::string& key = "") const {
        std::vector<std::string> environment = session->environment();
        environment.insert(environment.end(), {"HOME=" + sandbox.home(), "PATH=/usr/bin:/bin"});
        DrivenProgram source(*session, {.program = VORNIC_DRAG_SOURCE,
                                        .arguments = {sandbox.path(fileName)},
                                        .environment = std::move(environment)});
        source.waitUntilActive("Files");
        session->movePointer(source.window("Files").area().center());
        session->act({"mousedown", "1"});
        if (!key.empty()) {
            session->act({"keydown", key});
        }
        const QPoint place = program.window(title).area().center();
        int step = 0;
        source.waitFor("a target that takes the file", [&] {
            session->movePointer(place + QPoint(step++ % 8, 0));
            return source.findWindow("accepted").has_value();
        });
        session->act({"mouseup", "1"});
        // The source serves the file until then.
        program.window(fileName);
        source.window("dropped");
        if (!key.empty()) {
            session->act({"keyup", key});
        }
        source.process().sendSignal(SIGTERM);
        source.finish();
    }
};

TEST_F(FilesProgramTest, opensAFileThatIsDroppedOnADocumentsWindow) {
    const std::string path = sandbox.write("dropped & odd.xml", kDamaged);
    DrivenProgram program = start({sandbox.write("cut.xml", kSound)});
    program.answerAlert("No repair was necessary", "OK");
    dropOn(program, "cut.xml", "dropped & odd.xml");
    program.answerAlert("The file was repaired successfully", "OK");
    EXPECT_EQ(readBytes(path), kSound);
}

TEST_F(FilesProgramTest, leavesAFileInItsPlaceThatIsDroppedWithShift) {
    const std::string path = sandbox.write("dropped.xml", kSound);
    showOpenPanelAtStart(0);
    const DrivenProgram program = start({});
    program.waitForLabel("Drop Final Cut Pro XML files here to repair them.");
    dropOn(program, "Vornic", "dropped.xml", "shift");
    program.answerAlert("No repair was necessary", "OK");
    EXPECT_EQ(readBytes(path), kSound);
}

TEST_F(FilesProgramTest, opensAFileThatIsDroppedOnTheStartWindow) {
    const std::string path = sandbox.write("dropped.xml", kDamaged);
    showOpenPanelAtStart(0);
    const DrivenProgram program = start({});
    program.waitForLabel("Drop Final Cut Pro XML files here to repair them.");
    dropOn(program, "Vornic", "dropped.xml");
    program.answerAlert("The file was repaired successfully", "OK");
    EXPECT_EQ(readBytes(path), kSound);
}

TEST_F(FilesProgramTest, showsTheRepairedFileAndTheTrashInTheFileManager) {
    const StandInProgram opener(programFolder() + "/xdg-open", sandbox.home() + "/.opened");
    const DrivenProgram program = start({sandbox.write("cut.xml", kDamaged)});
    program.answerAlert("The file was repaired successfully", "OK");
    program.clickButton("Show Trash");
    EXPECT_EQ(opener.takeArguments(), std::vector<std::string>{trash()});
    program.clickButton("Show File");
    EXPECT_EQ(opener.takeArguments(), std::vector<std::string>{sandbox.folder()});
}

}  // namespace
}  // namespace vornic::test
