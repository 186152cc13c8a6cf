#include <chrono>
#include <csignal>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/settings/PropertyList.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/VirtualScreen.h"
#include "tests/support/programs/ProgramRunner.h"
#include "tests/support/programs/StandInProgram.h"

// The built program in a real window on a display server of its own.

namespace vornic::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* kTool = "/usr/bin/xdotool";

class DesktopProgramTest : public SandboxTest {
  protected:
    [[nodiscard]] ProgramSettings settings(const std::string& display,
                                           std::vector<std::string> arguments) const {
        ProgramSettings program{.program = VORNIC_DESKTOP_PROGRAM,
                                .arguments = std::move(arguments),
                                .environment = {"HOME=" + sandbox.home(), "PATH=/usr/bin:/bin",
                                                "TMPDIR=" + sandbox.folder(), "LANG=C.UTF-8"}};
        if (!display.empty()) {
            program.environment.push_back("DISPLAY=" + display);
        }
        return program;
    }

    // Runs xdotool. @return what it prints; "" when it fails.
    [[nodiscard]] std::string act(const std::string& display,
                                  std::vector<std::string> arguments) const {
        const ProgramResult result =
            RunningProgram({.program = kTool,
                            .arguments = std::move(arguments),
                            .environment = {"DISPLAY=" + display, "PATH=/usr/bin:/bin"}})
                .finish();
        return result.status == 0 ? result.output : "";
    }

    // Waits for a window whose title holds a text. @return its number; "" when it does not come.
    [[nodiscard]] std::string windowNamed(const std::string& display,
                                          const std::string& name) const {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (std::chrono::steady_clock::now() < deadline) {
            const std::string found = act(display, {"search", "--onlyvisible", "--name", name});
            if (!found.empty()) {
                return found.substr(0, found.find('\n'));
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        return "";
    }

    // Presses a key in a window until the program has ended. @return false when it does not.
    bool pressUntil(const std::string& display, const std::string& window, const std::string& key,
                    const std::string& goneName) const {
        for (int attempt = 0; attempt < 100; ++attempt) {
            static_cast<void>(act(display, {"windowfocus", window, "key", key}));
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            if (act(display, {"search", "--onlyvisible", "--name", goneName}).empty()) {
                return true;
            }
        }
        return false;
    }
};

TEST_F(DesktopProgramTest, reportsThatThereIsNoDisplay) {
    const ProgramResult result = RunningProgram(settings("", {})).finish();
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("There is no display"));
}

TEST_F(DesktopProgramTest, reportsHelpAndVersionWithoutADisplay) {
    const ProgramResult help = RunningProgram(settings("", {"--help"})).finish();
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.output, HasSubstr("Usage: vornic [FILE...]"));
    const ProgramResult version = RunningProgram(settings(":4711", {"--version"})).finish();
    EXPECT_EQ(version.status, 0);
    EXPECT_THAT(version.output, ::testing::MatchesRegex("vornic-desktop [0-9.]+\n"));
    EXPECT_EQ(help.errors + version.errors, "");
}

TEST_F(DesktopProgramTest, reportsThatItsDisplayCannotBeReached) {
    const ProgramResult result = RunningProgram(settings(":4711", {})).finish();
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("vornic: No window can be opened."));
    EXPECT_FALSE(exists(sandbox.home() + "/.local/share/quillmark/Logs/DiagnosticReports"));
}

class RealWindowTest : public DesktopProgramTest {
  protected:
    void SetUp() override {
        if (!screen.display() || !exists(kTool)) {
            GTEST_SKIP() << "needs Xvfb and xdotool";
        }
        display = *screen.display();
    }

    VirtualScreen screen{sandbox.path("display")};
    std::string display;
};

class RealKeysTest : public RealWindowTest {
  protected:
    void SetUp() override {
        RealWindowTest::SetUp();
        const platform::PropertyList::Dictionary noOpenPanel{{"showOpenDialogAtStartup", 0}};
        ErrorSlot error;
        EXPECT_TRUE(platform::PropertyList(noOpenPanel)
                        .writeFile(library + "/Preferences/com.quillmark.Vornic.plist", error));
    }

    // Shows the preferences' pane of the shortcuts, with the focus in its table.
    void openShortcuts() const {
        const std::string window = windowNamed(display, "^Vornic$");
        ASSERT_NE(window, "");
        std::string preferences;
        for (int attempt = 0; attempt < 50 && preferences.empty(); ++attempt) {
            static_cast<void>(act(display, {"windowfocus", window, "key", "ctrl+comma"}));
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            preferences = act(display, {"search", "--onlyvisible", "--name", "^Preferences$"});
        }
        ASSERT_NE(preferences, "");
        press({"windowfocus", preferences.substr(0, preferences.find('\n'))});
        press({"key", "alt+s"});
        press({"key", "Tab"});
    }
    // Lets the program take what a tool has sent.
    void press(std::vector<std::string> arguments) const {
        static_cast<void>(act(display, std::move(arguments)));
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
    }
    [[nodiscard]] std::vector<std::string> shortcuts() const {
        ErrorSlot error;
        const auto list = platform::PropertyList::readFile(
            library + "/Preferences/com.quillmark.shortcutkeys.plist", error);
        const auto* const entries = list ? list->find("watchlist") : nullptr;
        std::vector<std::string> texts;
        for (const platform::PropertyList& entry :
             entries != nullptr ? *entries->array() : platform::PropertyList::Array()) {
            texts.push_back(*entry.find("commandid")->string() + " " +
                            std::to_string(*entry.find("keycode")->integer()) + " " +
                            std::to_string(*entry.find("modifiers")->integer()));
        }
        return texts;
    }

    const std::string library = sandbox.home() + "/.local/share/quillmark";
    const StandInProgram manager{
        library + "/Application Support/Quillmark/Shared Resources/QMShortcutKeyManager",
        sandbox.path("arguments")};
};

TEST_F(RealKeysTest, assignsTheKeysThatArePressedAndClearsThem) {
    RunningProgram program(settings(display, {}));
    openShortcuts();
    press({"key", "Return"});
    press({"key", "Escape"});
    EXPECT_THAT(shortcuts(), IsEmpty());
    press({"key", "Return"});
    press({"key", "ctrl+shift+F5"});
    EXPECT_EQ(manager.takeArguments(), std::vector<std::string>{"-setup"});
    EXPECT_THAT(shortcuts(), ElementsAre("fileOpen 71 4608"));
    press({"key", "Down"});
    press({"key", "Return"});
    press({"key", "super+alt+a"});
    EXPECT_EQ(manager.takeArguments(), std::vector<std::string>{"-setup"});
    EXPECT_THAT(shortcuts(), ElementsAre("fileOpen 71 4608", "fileSaveReport 38 2304"));
    press({"key", "Up"});
    press({"key", "Delete"});
    EXPECT_EQ(manager.takeArguments(), std::vector<std::string>{"-setup"});
    EXPECT_THAT(shortcuts(), ElementsAre("fileSaveReport 38 2304"));
    EXPECT_NE(act(display, {"search", "--onlyvisible", "--name", "^Preferences$"}), "");
    program.sendSignal(SIGTERM);
    program.finish();
}

TEST_F(RealKeysTest, quitsWhileTheManagerHangs) {
    const std::string idFile = sandbox.path("id");
    writeBytes(library + "/Application Support/Quillmark/Shared Resources/QMShortcutKeyManager",
               "#!/bin/sh\necho $$ >'" + idFile + ".part'\nmv '" + idFile + ".part' '" + idFile +
                   "'\nexec sleep 300\n");
    RunningProgram program(settings(display, {}));
    openShortcuts();
    press({"key", "Return"});
    press({"key", "F5"});
    for (int attempt = 0; attempt < 200 && !exists(idFile); ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    ASSERT_TRUE(exists(idFile));
    EXPECT_THAT(shortcuts(), ElementsAre("fileOpen 71 0"));
    press({"key", "Escape"});
    const auto before = std::chrono::steady_clock::now();
    EXPECT_TRUE(pressUntil(display, windowNamed(display, "^Vornic$"), "ctrl+q", "^Vornic$"));
    const ProgramResult result = program.finish();
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.signal, 0);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(7))
        << "the manager is given ten";
    const pid_t hanging = std::stoi(readBytes(idFile));
    EXPECT_EQ(kill(hanging, SIGKILL), 0) << "it was left alone";
}

}  // namespace
}  // namespace vornic::test
