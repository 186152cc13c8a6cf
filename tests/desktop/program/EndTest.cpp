#include <csignal>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/settings/UserPreferences.h"
#include "tests/desktop/program/ProgramTest.h"
#include "tests/support/machine/FileState.h"

// Closing windows and ending the program, most of all while repairs run.

namespace vornic::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class EndProgramTest : public ProgramTest {
  protected:
    // Presses a key in the sheet of a run.
    void pressDuringRun(const DrivenProgram& program, const std::string& key) const {
        program.window(kProgress);
        session->activate("^Repair$");
        program.waitUntilActive(kProgress);
        session->pressKeys({key});
    }

    // Waits until the report of a window has grown.
    static void expectItGoesOn(const DrivenProgram& program, const std::string& title) {
        const AccessibleNode window = program.window(title);
        const std::size_t before = program.report(window).size();
        EXPECT_TRUE(becomesTrue([&] { return program.report(window).size() > before; }));
    }

    [[nodiscard]] static double stamped(const char* key) {
        using Date = platform::PropertyList::Date;
        const auto value = platform::UserPreferences().value(key);
        const auto* const date = value ? std::get_if<Date>(&value->value()) : nullptr;
        return date != nullptr ? date->secondsSince1970 : 0;
    }

    // A crash is told by an end that is older than the start.
    static void expectRecordedAsCleanEnd() {
        EXPECT_GT(stamped("launch"), 0);
        EXPECT_GE(stamped("exit"), stamped("launch"));
    }
};

TEST_F(EndProgramTest, endsWhenTheLastWindowIsClosed) {
    DrivenProgram program =
        start({sandbox.write("one.xml", kSound), sandbox.write("two.xml", kSound)});
    program.answerAlert("No repair was necessary", "OK");
    program.answerAlert("No repair was necessary", "OK");
    for (const char* const name : {"two.xml", "one.xml"}) {
        const AccessibleNode window = program.window(name);
        program.choose(window, "File", "Close");
    }
    program.expectCleanEnd();
    expectRecordedAsCleanEnd();
}

TEST_F(EndProgramTest, keepsTheRunGoingWhenItsWindowIsNotToCloseAfterAll) {
    DrivenProgram program = start({sandbox.write("cut.xml", damagedAtLength())});
    pressDuringRun(program, "ctrl+w");
    program.waitForLabel("This will cancel the repair.");
    program.answerAlert(kCloseQuestion, "Cancel");
    expectItGoesOn(program, "cut.xml");
    EXPECT_TRUE(program.findWindow(kProgress));
    EXPECT_THAT(program.report(program.window("cut.xml")), Not(HasSubstr("was cancelled")));
}

TEST_F(EndProgramTest, takesItsQuestionAwayWhenTheRunHasEnded) {
    // So long that the question comes in between, so short that the test waits for the end.
    const std::string path = sandbox.write("cut.xml", damagedAtLength(60000));
    DrivenProgram program = start({path});
    pressDuringRun(program, "ctrl+w");
    program.waitForLabel(kCloseQuestion);
    program.waitFor("the end of the question",
                    [&] { return !program.find("label", kCloseQuestion); });
    program.answerAlert("The file was repaired successfully", "OK");
    program.waitForLabel("Repaired. The original file is in the Trash.");
    program.waitUntilActive("cut.xml");
    session->pressKeys({"ctrl+w"});
    program.expectCleanEnd();
}

TEST_F(EndProgramTest, asksWhenTheFrameOfAWindowIsClosedDuringItsRun) {
    const std::string damaged = damagedAtLength();
    const std::string path = sandbox.write("cut.xml", damaged);
    DrivenProgram program = start({path});
    program.window(kProgress);
    session->closeWindow("^cut.xml");
    program.answerAlert(kCloseQuestion, "Cancel");
    expectItGoesOn(program, "cut.xml");
    session->closeWindow("^cut.xml");
    program.answerAlert(kCloseQuestion, "Quit");
    program.expectCleanEnd();
    EXPECT_EQ(readBytes(path), damaged);
}

TEST_F(EndProgramTest, closesTheWindowOfARunAndEndsWhenTheUserWantsThat) {
    const std::string damaged = damagedAtLength();
    const std::string path = sandbox.write("cut.xml", damaged);
    DrivenProgram program = start({path});
    pressDuringRun(program, "ctrl+w");
    program.answerAlert(kCloseQuestion, "Quit");
    program.expectCleanEnd();
    EXPECT_EQ(readBytes(path), damaged);
    EXPECT_FALSE(exists(trash()));
    expectRecordedAsCleanEnd();
}

TEST_F(EndProgramTest, asksOnceAboutAWindowHoweverOftenItIsClosed) {
    DrivenProgram program = start({sandbox.write("cut.xml", damagedAtLength())});
    pressDuringRun(program, "ctrl+w");
    program.waitForLabel(kCloseQuestion);
    pressDuringRun(program, "ctrl+w");
    pressDuringRun(program, "ctrl+q");
    EXPECT_EQ(program.windowCount(), 3U) << program.describe();
    session->activate("^Vornic$");
    program.answerAlert(kCloseQuestion, "Cancel");
    expectItGoesOn(program, "cut.xml");
    EXPECT_EQ(program.windowCount(), 2U) << program.describe();
}

TEST_F(EndProgramTest, asksAboutEachRunBeforeItQuits) {
    const std::string damaged = damagedAtLength();
    const std::vector<std::string> paths{sandbox.write("one.xml", damaged),
                                         sandbox.write("two.xml", damaged),
                                         sandbox.write("three.xml", damaged)};
    DrivenProgram program = start(paths);
    for (const char* const name : {"one.xml", "two.xml", "three.xml"}) {
        program.window(name);
    }
    program.waitFor("three runs", [&program] { return program.windowCount() == 6; });
    pressDuringRun(program, "ctrl+q");
    program.answerAlert(kCloseQuestion, "Cancel");
    EXPECT_EQ(program.windowCount(), 6U) << program.describe();
    pressDuringRun(program, "ctrl+q");
    for (const std::size_t left : {4U, 2U, 0U}) {
        program.answerAlert(kCloseQuestion, "Quit");
        if (left > 0) {
            program.waitFor("the next question", [&] { return program.windowCount() == left + 1; });
        }
    }
    program.expectCleanEnd();
    for (const std::string& path : paths) {
        EXPECT_EQ(readBytes(path), damaged);
    }
    expectRecordedAsCleanEnd();
}

TEST_F(EndProgramTest, leavesNoThreadOfARunWhoseWindowIsClosed) {
    const std::string path = sandbox.write("cut.xml", kSound);
    DrivenProgram program = start({sandbox.write("idle.xml", kSound), path});
    program.answerAlert("No repair was necessary", "OK");
    program.answerAlert("No repair was necessary", "OK");
    const std::string threads = "/proc/" + std::to_string(program.process().id()) + "/task";
    std::size_t idle = 0;
    waitUntil("rest", [&] { return std::exchange(idle, namesIn(threads).size()) == idle; });
    sandbox.write("cut.xml", damagedAtLength());
    program.control(program.window("cut.xml"), "push button", "Repair").press();
    EXPECT_TRUE(becomesTrue([&] { return namesIn(threads).size() > idle; }));
    pressDuringRun(program, "ctrl+w");
    program.answerAlert(kCloseQuestion, "Quit");
    program.waitUntilGone("cut.xml");
    EXPECT_TRUE(becomesTrue([&] { return namesIn(threads).size() <= idle; }));
    program.waitUntilActive("idle.xml");
    program.choose(program.window("idle.xml"), "File", "Quit");
    program.expectCleanEnd();
}

TEST_F(EndProgramTest, endsCleanlyWhenTheSessionEndsIt) {
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        const std::string damaged = damagedAtLength();
        const std::string path = sandbox.write("cut.xml", damaged);
        DrivenProgram program = start({path, sandbox.write("other.xml", kSound)});
        program.control("push button", "Cancel");
        program.process().sendSignal(number);
        program.expectCleanEnd();
        EXPECT_EQ(readBytes(path), damaged);
        EXPECT_FALSE(exists(trash() + "/cut.xml"));
        expectRecordedAsCleanEnd();
    }
    DrivenProgram next = start({sandbox.write("sound.xml", kSound)});
    next.waitForLabel("No repair was necessary");
    EXPECT_EQ(next.windowCount(), 2U) << next.describe();
}

TEST_F(EndProgramTest, endsCleanlyWhileAQuestionIsOnTheScreen) {
    DrivenProgram program = start({sandbox.write("cut.xml", damagedAtLength())});
    pressDuringRun(program, "ctrl+w");
    program.waitForLabel(kCloseQuestion);
    program.process().sendSignal(SIGTERM);
    program.expectCleanEnd();
    expectRecordedAsCleanEnd();
}

TEST_F(EndProgramTest, endsCleanlyWhileTheOpenPanelOfTheStartIsUp) {
    DrivenProgram program = start({});
    program.window("Browse for");
    program.process().sendSignal(SIGTERM);
    program.expectCleanEnd();
    expectRecordedAsCleanEnd();
}

TEST_F(EndProgramTest, endsByItselfWhenTheScreenGoes) {
    const std::string damaged = damagedAtLength();
    const std::string path = sandbox.write("cut.xml", damaged);
    DrivenProgram program = start({path});
    program.control("push button", "Cancel");
    session->loseScreen();
    const ProgramResult result = program.finish();
    EXPECT_EQ(result.signal, 0) << result.errors;
    EXPECT_EQ(readBytes(path), damaged);
    EXPECT_THAT(namesIn(sandbox.home() + "/.local/share/quillmark/Logs/DiagnosticReports"),
                IsEmpty());
}

}  // namespace
}  // namespace vornic::test
