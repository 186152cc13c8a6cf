#include <cstdio>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/desktop/program/ProgramTest.h"
#include "tests/support/machine/FileState.h"

// Converting the file of a window to another version.

namespace vornic::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* kLossQuestion = "You cannot downgrade without losing information";

// A file with an element that version 1 does not know.
constexpr const char* kNeedsVersion2 =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\">\n"
    "    <sequence>\n        <name>Cut</name>\n        <synctype>1</synctype>\n"
    "    </sequence>\n</xmeml>\n";

class ConversionProgramTest : public ProgramTest {
  protected:
    OwnLogs logs{sandbox};

    // Opens a file, and its conversion sheet when the repair has ended.
    [[nodiscard]] DrivenProgram openToConvert(const std::string& path) const {
        return start({path});
    }
    void showSheet(const DrivenProgram& program) const {
        program.answerAlert("No repair was necessary", "OK");
        program.waitUntilActive("cut.xml");
        session->pressKeys({"ctrl+shift+c"});
    }
    void chooseTheLowest(const DrivenProgram& program) const {
        const AccessibleNode versions = program.control("combo box", "");
        program.waitFor("the versions",
                        [&] { return versions.is(AccessibleNode::State::enabled); });
        session->click(versions);
        session->pressKeys({"End", "Return"});
        program.waitFor("the lowest version",
                        [&] { return versions.name() == "1 (Final Cut Pro 4+)"; });
    }
    // Chooses the lowest version and presses the button.
    void convertToTheLowest(const DrivenProgram& program) const {
        chooseTheLowest(program);
        program.clickButton("Convert");
    }
    // How often the log says that a file is analysed: when the dialog opens, and after each
    // conversion.
    [[nodiscard]] std::size_t analyses() const {
        const std::string log = readBytes(logs.path(1));
        std::size_t count = 0;
        const std::string line = "Generating conversion data for file ";
        for (std::size_t at = log.find(line); at != std::string::npos;
             at = log.find(line, at + 1)) {
            ++count;
        }
        return count;
    }
};

TEST_F(ConversionProgramTest, showsTheVersionsOfTheFile) {
    const DrivenProgram program = openToConvert(sandbox.write("cut.xml", kNeedsVersion2));
    showSheet(program);
    program.waitForLabel("Current XML version: 5 (Final Cut Pro 7+)");
    program.waitForLabel("Can be downgraded without changes to version: 2 (Final Cut Pro 5+)");
}

TEST_F(ConversionProgramTest, losesNothingUnlessTheUserAgrees) {
    const std::string path = sandbox.write("cut.xml", kNeedsVersion2);
    const FileState before = fileState(path);
    const DrivenProgram program = openToConvert(path);
    showSheet(program);
    convertToTheLowest(program);
    program.answerAlert(kLossQuestion, "Cancel");
    program.waitFor("the end of the conversion", [&] {
        const auto button = program.find("push button", "Convert");
        return button && button->is(AccessibleNode::State::enabled);
    });
    EXPECT_EQ(fileState(path), before);
}

TEST_F(ConversionProgramTest, removesWhatTheVersionDoesNotKnowWhenTheUserAgrees) {
    const std::string path = sandbox.write("cut.xml", kNeedsVersion2);
    const DrivenProgram program = openToConvert(path);
    showSheet(program);
    convertToTheLowest(program);
    program.answerAlert(kLossQuestion, "Downgrade");
    program.waitForLabel("Current XML version: 1 (Final Cut Pro 4+)");
    EXPECT_THAT(readBytes(path), HasSubstr("<xmeml version=\"1\">"));
    EXPECT_THAT(readBytes(path), Not(HasSubstr("synctype")));
    EXPECT_THAT(readBytes(path), HasSubstr("<name>Cut</name>"));
}

TEST_F(ConversionProgramTest, listsWhatGoesAndKeepsTheOriginalWhenAskedTo) {
    const std::string path = sandbox.write("cut.xml", kNeedsVersion2);
    const DrivenProgram program = openToConvert(path);
    showSheet(program);
    program.waitForLabel("Nothing is lost.");
    const AccessibleNode box = program.control("check box", "Keep the original in the Trash");
    EXPECT_FALSE(box.is(AccessibleNode::State::checked));
    session->click(box);
    chooseTheLowest(program);
    program.waitForLabel("1 thing goes, which version 1 does not have.");
    program.clickButton("Convert");
    program.answerAlert(kLossQuestion, "Downgrade");
    program.waitForLabel("Converted to version 1. The original is in the Trash.");
    EXPECT_EQ(readBytes(trash() + "/cut.xml"), kNeedsVersion2);
    EXPECT_THAT(readBytes(path), Not(HasSubstr("synctype")));
}

TEST_F(ConversionProgramTest, takesItsQuestionBackWhenTheSheetIsClosed) {
    const std::string path = sandbox.write("cut.xml", kNeedsVersion2);
    const FileState before = fileState(path);
    const DrivenProgram program = openToConvert(path);
    showSheet(program);
    convertToTheLowest(program);
    program.waitForLabel(kLossQuestion);
    program.control("push button", "Close").press();
    program.waitFor("the end of the question",
                    [&] { return !program.find("label", kLossQuestion); });
    program.waitUntilGone("Convert XML Interchange Version");
    // The dialog can be used again, and shows the file as it is.
    program.waitUntilActive("cut.xml");
    session->pressKeys({"ctrl+shift+c"});
    program.waitForLabel("Current XML version: 5 (Final Cut Pro 7+)");
    EXPECT_EQ(fileState(path), before);
}

TEST_F(ConversionProgramTest, convertsNothingWhenTheWindowIsClosedDuringTheQuestion) {
    const std::string path = sandbox.write("cut.xml", kNeedsVersion2);
    const FileState before = fileState(path);
    const DrivenProgram program = openToConvert(path);
    showSheet(program);
    convertToTheLowest(program);
    program.waitForLabel(kLossQuestion);
    session->closeWindow("cut.xml");
    program.waitUntilGone("cut.xml");
    program.waitFor("the end of the question",
                    [&] { return !program.find("label", kLossQuestion); });
    EXPECT_EQ(fileState(path), before);
}

TEST_F(ConversionProgramTest, takesADoubleClickForOneClick) {
    const std::string path = sandbox.write("cut.xml", kSound);
    const DrivenProgram program = openToConvert(path);
    showSheet(program);
    chooseTheLowest(program);
    const AccessibleNode button = program.control("push button", "Convert");
    program.waitFor("the button", [&] { return button.is(AccessibleNode::State::enabled); });
    session->movePointer(button.area().center());
    session->act({"click", "--repeat", "2", "--delay", "20", "1"});
    program.waitForLabel("Current XML version: 1 (Final Cut Pro 4+)");
    program.waitFor("the end of the conversion",
                    [&] { return button.is(AccessibleNode::State::enabled); });
    EXPECT_EQ(analyses(), 2U);
}

TEST_F(ConversionProgramTest, offersEachVersionAsGivenWhenTheSheetIsOpenedAnew) {
    // Long enough for its analysis to be at work when the sheet is closed.
    std::string text = kNeedsVersion2;
    std::string clips;
    for (int clip = 0; clip < 200000; ++clip) {
        clips += "        <clipitem id=\"" + std::to_string(clip) + "\"/>\n";
    }
    text.insert(text.find("        <synctype>"), clips);
    const DrivenProgram program = openToConvert(sandbox.write("cut.xml", text));
    showSheet(program);
    program.window("Convert XML Interchange Version");
    session->pressKeys({"Escape"});
    program.waitUntilGone("Convert XML Interchange Version");
    program.waitUntilActive("cut.xml");
    session->pressKeys({"ctrl+shift+c"});
    const AccessibleNode versions = program.control("combo box", "");
    program.waitFor("the versions", [&] { return versions.is(AccessibleNode::State::enabled); });
    session->click(versions);
    // Five versions, each but the current one twice: two steps above the last is version 2.
    session->pressKeys({"Home", "Down", "Return"});
    program.waitFor("the first item but one",
                    [&] { return versions.name() == "4 (Final Cut Pro 6+)"; });
    session->click(versions);
    session->pressKeys({"End", "Up", "Up", "Return"});
    program.waitFor("the last item but two",
                    [&] { return versions.name() == "2 (Final Cut Pro 5+)"; });
}

TEST_F(ConversionProgramTest, reportsThatTheFileHasGone) {
    const std::string path = sandbox.write("cut.xml", kSound);
    const DrivenProgram program = openToConvert(path);
    program.answerAlert("No repair was necessary", "OK");
    ASSERT_EQ(std::remove(path.c_str()), 0);
    program.waitUntilActive("cut.xml");
    session->pressKeys({"ctrl+shift+c"});
    program.waitForLabel("The file " + path + " cannot be found.");
    program.answerAlert("Unable to locate file", "OK");
    EXPECT_EQ(program.windowCount(), 1U) << program.describe();
}

TEST_F(ConversionProgramTest, isNotOfferedForTheOtherFamilyOfFiles) {
    const DrivenProgram program = start({sandbox.write("cut.fcpxml", kBroken)});
    program.answerAlert("Unable to repair file", "OK");
    const AccessibleNode window = program.window("cut.fcpxml");
    session->click(program.control(window, "menu item", "Tools"));
    EXPECT_FALSE(program.control(window, "menu item", "Convert XML Interchange Version")
                     .is(AccessibleNode::State::enabled));
}

}  // namespace
}  // namespace vornic::test
