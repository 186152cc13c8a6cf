#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/AppController.h"
#include "platform/settings/PropertyList.h"
#include "tests/desktop/program/ProgramTest.h"
#include "tests/support/machine/FileState.h"

// The windows beside those of documents, and what a document's window offers to do with its report.

namespace vornic::test {
namespace {

using ::testing::HasSubstr;
using State = AccessibleNode::State;

class WindowsProgramTest : public ProgramTest {
  protected:
    // A program with the window of a sound file, whose alert has been answered.
    void answer(const DrivenProgram& program) const {
        program.answerAlert("No repair was necessary", "OK");
        program.waitUntilActive("cut.xml");
    }
    [[nodiscard]] std::string soundFile() const { return sandbox.write("cut.xml", kSound); }

    // What the file of the user's preferences holds for a key.
    [[nodiscard]] std::optional<std::int64_t> stored(const char* key) const {
        ErrorSlot error;
        const auto list = platform::PropertyList::readFile(
            sandbox.home() + "/.local/share/quillmark/Preferences/com.quillmark.Vornic.plist",
            error);
        const auto* const entries = list ? list->dictionary() : nullptr;
        if (entries == nullptr || !entries->contains(key)) {
            return std::nullopt;
        }
        const std::int64_t* const number = entries->at(key).integer();
        return number != nullptr ? std::optional(*number) : std::nullopt;
    }
};

TEST_F(WindowsProgramTest, showsNameAndVersionInTheAboutBox) {
    const DrivenProgram program = start({soundFile()});
    answer(program);
    program.choose(program.window("cut.xml"), "Help", "About Vornic");
    const AccessibleNode about = program.window("About Vornic");
    program.control(about, "label", "Vornic");
    EXPECT_THAT(about.describe(), HasSubstr("0.2.0 (1)"));
    EXPECT_THAT(about.describe(), HasSubstr("Brindle Tools"));
    program.waitUntilActive("About Vornic");
    session->pressKeys({"Escape"});
    program.waitUntilGone("About Vornic");
    EXPECT_TRUE(program.findWindow("cut.xml"));
}

TEST_F(WindowsProgramTest, storesAPreferenceAsSoonAsItIsChanged) {
    const DrivenProgram program = start({soundFile()});
    answer(program);
    session->pressKeys({"ctrl+comma"});
    program.waitUntilActive("Preferences");
    const AccessibleNode box =
        program.control("check box", "Show the open panel when the application starts");
    EXPECT_TRUE(box.is(State::checked));
    session->click(box);
    EXPECT_TRUE(
        becomesTrue([this] { return stored(AppController::kShowOpenDialogPreference) == 0; }));
    EXPECT_FALSE(box.is(State::checked));
    session->click(box);
    EXPECT_TRUE(
        becomesTrue([this] { return stored(AppController::kShowOpenDialogPreference) == 1; }));
    session->pressKeys({"Escape"});
    program.waitUntilGone("Preferences");
}

TEST_F(WindowsProgramTest, copiesTheReportAndFindsTextInIt) {
    const DrivenProgram program = start({soundFile()});
    answer(program);
    const AccessibleNode window = program.window("cut.xml");
    program.control(window, "text", "Report").takeFocus();
    session->pressKeys({"ctrl+a", "ctrl+c", "ctrl+f"});
    const AccessibleNode field = program.control(window, "text", "Find");
    program.waitFor("the focus", [&] { return field.is(State::focused); });
    session->pressKeys({"ctrl+v"});
    program.waitFor("the copied report", [&] {
        return field.text().find("No repair was necessary.") != std::string::npos;
    });
    session->pressKeys({"ctrl+a"});
    session->type("nowhere");
    session->pressKeys({"Return"});
    program.waitForLabel("Not found");
    session->pressKeys({"ctrl+a"});
    session->type("header");
    session->pressKeys({"Return"});
    program.waitFor("the place", [&] { return !window.find("label", "Not found"); });
    session->pressKeys({"Escape"});
    program.waitFor("the end of the search", [&] { return !window.find("text", "Find"); });
}

TEST_F(WindowsProgramTest, savesTheReportAlsoOverAFile) {
    const DrivenProgram program = start({soundFile()});
    answer(program);
    const std::string target = sandbox.write("report.txt", "before");
    session->pressKeys({"ctrl+s"});
    program.waitUntilActive("Save Report");
    session->pressKeys({"ctrl+a"});
    session->type(target);
    session->pressKeys({"Return"});
    program.clickButton("Yes");
    EXPECT_TRUE(becomesTrue([&] { return readBytes(target) != "before"; }));
    EXPECT_THAT(readBytes(target), HasSubstr("No repair was necessary."));
    EXPECT_EQ(readBytes(target).find("Starting repair for file"), 0U);
}

TEST_F(WindowsProgramTest, reportsThatTheReportCannotBeSavedThere) {
    const DrivenProgram program = start({soundFile()});
    answer(program);
    session->pressKeys({"ctrl+s"});
    program.waitUntilActive("Save Report");
    session->pressKeys({"ctrl+a"});
    session->type("/proc/report.txt");
    session->pressKeys({"Return"});
    program.answerAlert("Unable to save the report", "OK");
}

// An entry of an open menu, whose name tells more than the file's.
std::optional<AccessibleNode> itemBeginning(const AccessibleNode& node, const std::string& name) {
    if (node.is(AccessibleNode::State::showing) && node.name().starts_with(name)) {
        return node;
    }
    for (const AccessibleNode& child : node.children()) {
        if (auto found = itemBeginning(child, name)) {
            return found;
        }
    }
    return std::nullopt;
}

TEST_F(WindowsProgramTest, opensARecentFileFromTheMenu) {
    {
        DrivenProgram program = start({sandbox.write("before.xml", kSound)});
        program.answerAlert("No repair was necessary", "OK");
        session->pressKeys({"ctrl+q"});
        program.expectCleanEnd();
    }
    const DrivenProgram program = start({soundFile()});
    answer(program);
    const AccessibleNode window = program.window("cut.xml");
    program.choose(window, "File", "Open Recent");
    std::optional<AccessibleNode> recent;
    program.waitFor("the recent file", [&] {
        recent = itemBeginning(window, "before.xml — /");
        return recent.has_value();
    });
    session->click(*recent);
    program.window("before.xml");
}

}  // namespace
}  // namespace vornic::test
