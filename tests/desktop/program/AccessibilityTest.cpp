#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/desktop/program/ProgramTest.h"

// What those who cannot see the windows, or do not use a mouse, find in them.

namespace vornic::test {
namespace {

using State = AccessibleNode::State;

class AccessibilityProgramTest : public ProgramTest {
  protected:
    // The controls on the screen in a window that can have the focus, in the order of the tree.
    static std::vector<AccessibleNode> controlsOf(const AccessibleNode& node) {
        std::vector<AccessibleNode> found;
        if (!node.is(State::showing)) {
            return found;
        }
        const std::string role = node.role();
        // Tabs are reached with the arrow keys.
        if (node.is(State::focusable) && node.is(State::enabled) && role != "label" &&
            role != "page tab") {
            found.push_back(node);
        }
        // What a list or a table holds is reached with the arrow keys.
        if (role == "list" || role == "table" || role == "tree" || role == "combo box") {
            return found;
        }
        for (const AccessibleNode& child : node.children()) {
            const std::vector<AccessibleNode> inside = controlsOf(child);
            found.insert(found.end(), inside.begin(), inside.end());
        }
        return found;
    }

    // Each control of the active window has a name and gets the focus by the Tab key.
    void expectAllNamedAndReached(const DrivenProgram& program, const std::string& title) const {
        program.waitUntilActive(title);
        std::vector<AccessibleNode> left = controlsOf(program.window(title));
        EXPECT_FALSE(left.empty()) << title;
        for (const AccessibleNode& control : left) {
            EXPECT_NE(control.name(), "") << title << ": a " << control.role();
        }
        const std::size_t presses = left.size() * 2;
        for (std::size_t press = 0; press < presses && !left.empty(); ++press) {
            session->pressKeys({"Tab"});
            std::erase_if(left, [](const AccessibleNode& control) {
                return becomesTrue([&control] { return control.is(State::focused); },
                                   std::chrono::milliseconds(40));
            });
        }
        for (const AccessibleNode& control : left) {
            ADD_FAILURE() << title << ": Tab does not lead to the " << control.role() << " "
                          << control.name();
        }
    }
};

TEST_F(AccessibilityProgramTest, namesEveryControlOfADocumentAndReachesItByTab) {
    const DrivenProgram program = start({sandbox.write("cut.xml", kDamaged)});
    program.waitForLabel("The file was repaired successfully");
    expectAllNamedAndReached(program, "Vornic");
    program.answerAlert("The file was repaired successfully", "OK");
    expectAllNamedAndReached(program, "cut.xml");
    session->pressKeys({"ctrl+f"});
    program.control("text", "Find");
    expectAllNamedAndReached(program, "cut.xml");
    session->pressKeys({"ctrl+shift+c"});
    program.waitUntilActive("Convert XML");
    program.waitForLabel("Current XML version: 5 (Final Cut Pro 7+)");
    expectAllNamedAndReached(program, "Convert XML");
}

TEST_F(AccessibilityProgramTest, readsTheTimelineClipByClip) {
    const DrivenProgram program = start({sandbox.write(
        "cut.fcpxml",
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE fcpxml>\n"
        "<fcpxml version=\"1.10\"><resources><format id=\"r1\" frameDuration=\"1/25s\"/>"
        "</resources><project name=\"Film\"><sequence format=\"r1\"><spine>"
        "<gap name=\"early\" offset=\"0s\" duration=\"2s\"/>"
        "<gap name=\"late\" offset=\"2s\" duration=\"2s\"/>"
        "</spine></sequence></project></fcpxml>\n")});
    program.answerAlert("No repair was necessary", "OK");
    program.waitUntilActive("cut.fcpxml");
    const AccessibleNode window = program.window("cut.fcpxml");
    session->pressKeys({"ctrl+5"});
    program.waitFor("the clips", [&] {
        return window.describe().find("early, Storyline") != std::string::npos;
    });
    const AccessibleNode late = program.control("list item", "late, Storyline");
    EXPECT_EQ(late.description(), "gap, late, at 00:00:02:00, length 00:00:02:00");
    EXPECT_FALSE(late.is(State::focused));
    session->pressKeys({"Right"});
    program.waitFor("the second clip", [&] { return late.is(State::focused); });
    expectAllNamedAndReached(program, "cut.fcpxml");
}

TEST_F(AccessibilityProgramTest, namesEveryControlOfARunAndReachesItByTab) {
    const DrivenProgram program = start({sandbox.write("cut.xml", damagedAtLength())});
    program.control("push button", "Cancel");
    expectAllNamedAndReached(program, kProgress);
    session->pressKeys({"ctrl+w"});
    program.waitForLabel(kCloseQuestion);
    expectAllNamedAndReached(program, "Vornic");
}

TEST_F(AccessibilityProgramTest, namesEveryControlOfTheOtherWindowsAndReachesItByTab) {
    showOpenPanelAtStart(0);
    const DrivenProgram program = start({});
    expectAllNamedAndReached(program, "Vornic");
    session->pressKeys({"ctrl+comma"});
    program.window("Preferences");
    expectAllNamedAndReached(program, "Preferences");
    session->pressKeys({"Escape"});
    program.waitUntilGone("Preferences");
    program.choose(program.window("Vornic"), "Help", "About Vornic");
    expectAllNamedAndReached(program, "About Vornic");
}

}  // namespace
}  // namespace vornic::test
