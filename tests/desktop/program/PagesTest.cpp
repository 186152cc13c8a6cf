#include <filesystem>
#include <fstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/desktop/ProjectTexts.h"
#include "tests/desktop/program/ProgramTest.h"
#include "tests/support/machine/FileState.h"

// The header and the pages of a document's window, and the sheets that show something before it is
// done.

namespace vornic::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using State = AccessibleNode::State;

constexpr const char* kWithMedia =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\">\n"
    "    <sequence>\n        <name>Cut</name>\n        <media><video><track>\n"
    "            <clipitem><name>Harbour</name><file id=\"f\"><name>Harbour.mov</name>\n"
    "                <pathurl>file://localhost/Volumes/Gone/Harbour.mov</pathurl>\n"
    "            </file></clipitem>\n        </track></video></media>\n    </sequence>\n</xmeml>\n";

class PagesProgramTest : public ProgramTest {
  protected:
    // Answers the alert at the end of a repair.
    static void answer(const DrivenProgram& program, const char* headline) {
        program.answerAlert(headline, "OK");
        program.waitUntilActive("cut.");
    }
    // Waits until a window shows a text in any of its labels.
    static void waitForText(const DrivenProgram& program, const AccessibleNode& window,
                            const std::string& text) {
        program.waitFor("the text " + text,
                        [&] { return window.describe().find(text) != std::string::npos; });
    }
    // The sheet of the versions of FCPXML, once it has looked.
    [[nodiscard]] AccessibleNode versionSheet(const DrivenProgram& program,
                                              const AccessibleNode& window) const {
        program.choose(window, "Tools", "Convert FCPXML Version…");
        AccessibleNode sheet = program.window("Convert FCPXML Version");
        program.waitForLabel("The file is in version 1.13 (Final Cut Pro 11+).");
        return sheet;
    }
};

TEST_F(PagesProgramTest, headAndFindingsReportWhatARepairHasDoneAndThatItWasTakenBack) {
    const std::string path = sandbox.write("cut.xml", kDamaged);
    const DrivenProgram program = start({path});
    answer(program, "The file was repaired successfully");
    const AccessibleNode window = program.window("cut.xml");
    waitForText(program, window, "1 problem found, 1 repaired");
    program.control(window, "tree", "Findings");
    waitForText(program, window, "the character U+000B stands here");
    program.clickButton("Restore Original");
    waitForText(program, window, "The original is back.");
    EXPECT_EQ(readBytes(path), kDamaged);
    EXPECT_THAT(window.describe(), Not(HasSubstr("1 problem found, 1 repaired")));
}

TEST_F(PagesProgramTest, headFollowsWhatAnotherProgramDoesToTheFile) {
    const std::string path = sandbox.write("cut.xml", kSound);
    const DrivenProgram program = start({path});
    answer(program, "No repair was necessary");
    const AccessibleNode window = program.window("cut.xml");
    waitForText(program, window, "Sound, with 1 warning");
    sandbox.write("cut.xml", kBroken);
    waitForText(program, window, "1 problem needs you");
    std::remove(path.c_str());
    waitForText(program, window, "The file is not where it was");
}

TEST_F(PagesProgramTest, sourceAndChangesShowTheFileBeforeAndAfter) {
    const DrivenProgram program = start({sandbox.write("cut.xml", kDamaged)});
    answer(program, "The file was repaired successfully");
    const AccessibleNode window = program.window("cut.xml");
    waitForText(program, window, "1 problem found, 1 repaired");
    session->pressKeys({"ctrl+2"});
    const AccessibleNode source = program.control(window, "text", "Source");
    program.waitFor("the focus", [&] { return source.is(State::focused); });
    EXPECT_THAT(source.text(), HasSubstr("<name>Cut</name>"));
    session->pressKeys({"ctrl+3"});
    program.control(window, "label", "Change 1 of 1");
    waitForText(program, window, "Hide indentation");
}

TEST_F(PagesProgramTest, mediaShowWhatIsNotThere) {
    const DrivenProgram program = start({sandbox.write("cut.xml", kWithMedia)});
    answer(program, "No repair was necessary");
    const AccessibleNode window = program.window("cut.xml");
    session->pressKeys({"ctrl+4"});
    waitForText(program, window, "1 media file, 1 not there");
    waitForText(program, window, "Harbour.mov");
    program.clickButton("Show in File Manager");
    program.answerAlert("The medium is not there", "OK");
    program.clickButton("Change Folder…");
    const AccessibleNode sheet = program.window("Change Folder");
    waitForText(program, sheet, "/Volumes/Gone");
    session->pressKeys({"Escape"});
    program.waitUntilGone("Change Folder");
}

TEST_F(PagesProgramTest, versionsOfFCPXMLAreShownAndACopyIsConverted) {
    const std::string path = sandbox.write("cut.fcpxml", kFCPXML);
    const DrivenProgram program = start({path});
    answer(program, "No repair was necessary");
    const AccessibleNode window = program.window("cut.fcpxml");
    const AccessibleNode sheet = versionSheet(program, window);
    program.control(sheet, "label", "Nothing is lost.");
    session->click(program.control(sheet, "combo box", ""));
    session->pressKeys({"Down", "Return"});
    program.waitForLabel("1 thing goes, which version 1.10 does not have.");
    program.waitUntilActive("Convert FCPXML Version");
    session->pressKeys({"Return"});  // nothing is lost by a key that is pressed without looking
    program.waitUntilGone("Convert FCPXML Version");
    EXPECT_FALSE(exists(sandbox.path("cut (1.10).fcpxml")));
    static_cast<void>(versionSheet(program, window));
    program.waitForLabel("Nothing is lost.");
    program.clickButton("Convert");
    EXPECT_TRUE(becomesTrue([&] { return exists(sandbox.path("cut (1.11).fcpxml")); }));
    waitForText(program, window, "The copy in version 1.11 is called cut (1.11).fcpxml.");
    EXPECT_EQ(readBytes(path), kFCPXML);
}

TEST_F(PagesProgramTest, versionsAreForgottenWhenTheWindowIsClosedMeanwhile) {
    std::string text = kFCPXML;
    std::string clips;
    for (int clip = 0; clip < 100000; ++clip) {
        clips += "<asset-clip ref=\"r2\" name=\"One\" offset=\"0s\" duration=\"1s\"/>\n";
    }
    text.insert(text.find("                <asset-clip"), clips);
    const std::string path = sandbox.write("cut.fcpxml", text);
    const FileState before = fileState(path);
    DrivenProgram program = start({path});
    answer(program, "No repair was necessary");
    program.choose(program.window("cut.fcpxml"), "Tools", "Convert FCPXML Version…");
    program.window("Convert FCPXML Version");
    session->closeWindow("cut.fcpxml");
    program.expectCleanEnd();
    EXPECT_EQ(fileState(path), before);
}

TEST_F(PagesProgramTest, eachGuessIsShownBeforeASalvagedCopyIsSaved) {
    const std::string path = sandbox.write("cut.xml", kBroken);
    const DrivenProgram program = start({path});
    answer(program, "Unable to repair file");
    program.clickButton("Save a Salvaged Copy…");
    const AccessibleNode sheet = program.window("Save a Salvaged Copy");
    program.control(sheet, "tree", "Guesses");
    const AccessibleNode around = program.control(sheet, "text", "Around the guess");
    EXPECT_THAT(around.text(), HasSubstr("In the file:"));
    program.clickButton("Save…");
    program.waitFor("the panel", [&] { return !program.find("tree", "Guesses"); });
    program.waitUntilActive("Save a Salvaged Copy");
    session->pressKeys({"ctrl+a"});
    session->type(sandbox.path("saved.xml"));
    session->pressKeys({"Return"});
    EXPECT_TRUE(becomesTrue([&] { return exists(sandbox.path("saved.xml")); }));
    EXPECT_EQ(readBytes(path), kBroken);
}

TEST_F(PagesProgramTest, headFollowsTheFileBesideSheetsThatAreOpen) {
    const std::string path = sandbox.write("cut.xml", kWithMedia);
    const DrivenProgram program = start({path});
    answer(program, "No repair was necessary");
    const AccessibleNode window = program.window("cut.xml");
    session->pressKeys({"ctrl+4"});
    waitForText(program, window, "1 media file, 1 not there");
    program.clickButton("Change Folder…");
    program.window("Change Folder");
    std::filesystem::rename(sandbox.write("other.part", kBroken), path);
    waitForText(program, window, "1 problem needs you");
    session->pressKeys({"Escape"});
    program.waitUntilGone("Change Folder");
    program.choose(window, "File", "Save a Salvaged Copy…");
    program.window("Save a Salvaged Copy");
    std::filesystem::remove(path);
    waitForText(program, window, "The file is not where it was");
    program.clickButton("Save…");
    program.waitFor("the panel", [&] { return !program.find("tree", "Guesses"); });
    program.waitUntilActive("Save a Salvaged Copy");
    session->pressKeys({"ctrl+a"});
    session->type(sandbox.path("saved.xml"));
    session->pressKeys({"Return"});
    EXPECT_TRUE(becomesTrue([&] { return exists(sandbox.path("saved.xml")); }));
}

TEST_F(PagesProgramTest, commandsForAFileSayThatNoneIsOpen) {
    showOpenPanelAtStart(0);
    const DrivenProgram program = start({});
    program.waitUntilActive("Vornic");
    const AccessibleNode window = program.window("Vornic");
    session->click(program.control(window, "menu item", "Tools"));
    EXPECT_FALSE(
        program.control(window, "menu item", "Convert XML Interchange Version").is(State::enabled));
    session->click(program.control(window, "menu item", "Convert FCPXML Version…"));
    program.answerAlert("No file is open", "OK");
}

}  // namespace
}  // namespace vornic::test
