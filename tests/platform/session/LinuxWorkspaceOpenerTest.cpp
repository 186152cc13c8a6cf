#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include <gmock/gmock.h>
#include <unistd.h>

#include "platform/session/LinuxWorkspaceOpener.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Waiting.h"
#include "tests/support/programs/StandInProgram.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;
using test::StandInProgram;
using ::testing::ElementsAre;

/// The search path is the test's own folder first.
class LinuxWorkspaceOpenerTest : public test::SandboxTest {
  protected:
    LinuxWorkspaceOpenerTest() {
        setenv("PATH", (sandbox.path("bin") + ":" + searchPath).c_str(), 1);
    }
    ~LinuxWorkspaceOpenerTest() override { setenv("PATH", searchPath.c_str(), 1); }

    StandInProgram standIn(const std::string& name) {
        return {sandbox.path(name), sandbox.path("record")};
    }

    const std::string searchPath = std::getenv("PATH");
    LinuxWorkspaceOpener opener;
    ErrorSlot error;
};

TEST_F(LinuxWorkspaceOpenerTest, handsAddressesAsTheyAreToTheDesktopsOwnOpener) {
    const StandInProgram program = standIn("bin/xdg-open");
    const std::string address = "https://a.example/x?app=b c&version=2%201";
    EXPECT_TRUE(opener.openURL(address, error));
    EXPECT_THAT(program.takeArguments(), ElementsAre(address));
    EXPECT_FALSE(error);
}

TEST_F(LinuxWorkspaceOpenerTest, refusesAnAddressWithoutScheme) {
    const StandInProgram program = standIn("bin/xdg-open");
    for (const char* address :
         {"", "--help", "www.a.example", "/etc/passwd", ":x", "1a:x", "a b:x"}) {
        error.reset();
        EXPECT_FALSE(opener.openURL(address, error)) << address;
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code, EINVAL);
    }
    EXPECT_FALSE(program.wasRun());
}

TEST_F(LinuxWorkspaceOpenerTest, opensAFileByItsAbsolutePath) {
    const StandInProgram program = standIn("bin/xdg-open");
    const std::string file = sandbox.write("-User Manual.pdf", "text");
    EXPECT_TRUE(opener.openFile(file, error));
    EXPECT_THAT(program.takeArguments(), ElementsAre(file));
    const std::string before = fs::current_path();
    fs::current_path(sandbox.folder());
    EXPECT_TRUE(opener.openFile("-User Manual.pdf", error));
    fs::current_path(before);
    EXPECT_THAT(program.takeArguments(), ElementsAre(file));
}

TEST_F(LinuxWorkspaceOpenerTest, opensNoFileThatIsNotThere) {
    const StandInProgram program = standIn("bin/xdg-open");
    EXPECT_FALSE(opener.openFile(sandbox.path("none"), error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description,
              "The file " + sandbox.path("none") + " cannot be opened: no such file or folder.");
    EXPECT_FALSE(program.wasRun());
}

TEST_F(LinuxWorkspaceOpenerTest, saysWhenTheDesktopHasNoOpener) {
    setenv("PATH", sandbox.path("bin").c_str(), 1);
    EXPECT_FALSE(opener.openURL("https://a.example", error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description, "The program xdg-open is not installed.");
}

TEST_F(LinuxWorkspaceOpenerTest, runsNothingFromTheWorkingFolder) {
    const StandInProgram program = standIn("xdg-open");
    const std::string before = fs::current_path();
    fs::current_path(sandbox.folder());
    setenv("PATH", "::.", 1);
    EXPECT_FALSE(opener.openURL("https://a.example", error));
    fs::current_path(before);
    EXPECT_FALSE(program.wasRun());
}

TEST_F(LinuxWorkspaceOpenerTest, opensFilesInABundle) {
    const StandInProgram program = standIn("Bug Reporter.app/Contents/MacOS/Bug Reporter");
    const std::string first = sandbox.write("a b.crash", "1");
    const std::string second = sandbox.write("c.crash", "2");
    EXPECT_TRUE(opener.openFiles({first, second}, sandbox.path("Bug Reporter.app"), error));
    EXPECT_THAT(program.takeArguments(), ElementsAre(first, second));
    EXPECT_FALSE(opener.openFiles({sandbox.path("none")}, sandbox.path("Bug Reporter.app"), error));
    EXPECT_TRUE(error);
}

TEST_F(LinuxWorkspaceOpenerTest, startsABundleByTheExecutableThatItNames) {
    const StandInProgram program = standIn("Updater.app/Contents/MacOS/updater-1");
    sandbox.write("Updater.app/Contents/Info.plist",
                  "<plist><dict><key>CFBundleExecutable</key><string>updater-1</string></dict>"
                  "</plist>");
    EXPECT_TRUE(opener.openApplication(sandbox.path("Updater.app/"), error));
    // `printf` makes a line of its own for no argument.
    EXPECT_THAT(program.takeArguments(), ElementsAre(""));
}

TEST_F(LinuxWorkspaceOpenerTest, saysWhenThereIsNothingToStart) {
    fs::create_directories(sandbox.path("Empty.app/Contents/MacOS"));
    EXPECT_FALSE(opener.openApplication(sandbox.path("Empty.app"), error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description,
              "There is no application that can be started at " + sandbox.path("Empty.app") + ".");
}

TEST_F(LinuxWorkspaceOpenerTest, saysWhenAProgramCannotBeStarted) {
    const std::string broken = sandbox.path("Broken.app/Contents/MacOS/Broken");
    fs::create_directories(fs::path(broken).parent_path());
    sandbox.write("Broken.app/Contents/MacOS/Broken", "#!/no/such/interpreter\n");
    fs::permissions(broken, fs::perms::owner_all);
    EXPECT_FALSE(opener.openApplication(sandbox.path("Broken.app"), error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description,
              "The tool " + broken + " cannot be started: no such file or folder.");
}

TEST_F(LinuxWorkspaceOpenerTest, opensFilesInTheInstalledApplicationOfAnIdentifier) {
    const StandInProgram program = standIn("bin/bug-reporter");
    const std::string folder = sandbox.home() + "/.local/share/applications";
    fs::create_directories(folder);
    test::writeBytes(folder + "/com.example.BugReporter.desktop",
                     "[Desktop Entry]\nType=Application\nExec=bug-reporter --report %u\n");
    const std::string file = sandbox.write("a b.crash", "1");
    EXPECT_TRUE(opener.openFilesWithIdentifier({file}, "com.example.BugReporter", error));
    EXPECT_THAT(program.takeArguments(),
                ElementsAre("--report", "file://" + sandbox.folder() + "/a%20b.crash"));
}

TEST_F(LinuxWorkspaceOpenerTest, saysWhenNoApplicationHasTheIdentifier) {
    const std::string file = sandbox.write("a.crash", "1");
    EXPECT_FALSE(opener.openFilesWithIdentifier({file}, "com.example.BugReporter", error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description, "The application com.example.BugReporter is not installed.");
}

TEST_F(LinuxWorkspaceOpenerTest, saysWhenAnEntryHasNoCommandThatCanBeRun) {
    const std::string folder = sandbox.home() + "/.local/share/applications";
    fs::create_directories(folder);
    const std::string file = sandbox.write("a.crash", "1");
    for (const char* exec : {"\"never closed", "no-such-program %f"}) {
        test::writeBytes(folder + "/com.example.BugReporter.desktop",
                         std::string("[Desktop Entry]\nType=Application\nExec=") + exec + "\n");
        error.reset();
        EXPECT_FALSE(opener.openFilesWithIdentifier({file}, "com.example.BugReporter", error));
        EXPECT_TRUE(error);
    }
}

TEST_F(LinuxWorkspaceOpenerTest, startsProgramsOnASessionOfTheirOwnWithoutItsStreams) {
    fs::create_directories(sandbox.path("bin"));
    sandbox.write("bin/xdg-open",
                  "#!/bin/sh\n"
                  "session=$(cut -d' ' -f6 /proc/$$/stat)\n"
                  "input=$(readlink /proc/$$/fd/0)\n"
                  "output=$(readlink /proc/$$/fd/1)\n"
                  "errors=$(readlink /proc/$$/fd/2)\n"
                  "printf '%s\\n' $session $input $output $errors > \"$TMPDIR/part\"\n"
                  "mv \"$TMPDIR/part\" \"$TMPDIR/told\"\n");
    fs::permissions(sandbox.path("bin/xdg-open"), fs::perms::owner_all);
    ASSERT_TRUE(opener.openURL("https://a.example", error));
    const std::string told = std::string(std::getenv("TMPDIR")) + "/told";
    ASSERT_TRUE(test::becomesTrue([&] { return test::exists(told); }));
    const std::vector<std::string> lines = test::linesOf(test::readBytes(told));
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_NE(std::stoi(lines[0]), getsid(0));
    EXPECT_THAT(std::vector(lines.begin() + 1, lines.end()),
                ElementsAre("/dev/null", "/dev/null", "/dev/null"));
}

/// With the system's own `xdg-open`, and a stand-in that the user has chosen for addresses and
/// documents.
class DesktopsOwnOpenerTest : public LinuxWorkspaceOpenerTest {
  protected:
    void SetUp() override {
        setenv("PATH", searchPath.c_str(), 1);
        if (std::system("command -v xdg-open file > /dev/null") != 0) {
            GTEST_SKIP() << "xdg-open is not installed";
        }
        // No desktop that has an opener of its own, and a screen that is never asked for.
        for (const char* name : {"XDG_CURRENT_DESKTOP", "DESKTOP_SESSION", "BROWSER"}) {
            unsetenv(name);
        }
        setenv("DISPLAY", ":99", 1);
        const std::string applications = sandbox.home() + "/.local/share/applications";
        fs::create_directories(applications);
        fs::create_directories(sandbox.home() + "/.config");
        test::writeBytes(applications + "/stand-in.desktop",
                         "[Desktop Entry]\nType=Application\nName=Stand-in\nExec=" +
                             sandbox.path("viewer") + " %u\n");
        test::writeBytes(sandbox.home() + "/.config/mimeapps.list",
                         "[Default Applications]\nx-scheme-handler/https=stand-in.desktop\n"
                         "application/pdf=stand-in.desktop\n");
    }
    void TearDown() override { unsetenv("DISPLAY"); }
};

TEST_F(DesktopsOwnOpenerTest, opensAnAddressInTheUsersProgramForIt) {
    const StandInProgram viewer = standIn("viewer");
    const std::string address = "https://a.example/support/x/bugreport/?app=y&version=2%201";
    EXPECT_TRUE(opener.openURL(address, error));
    EXPECT_THAT(viewer.takeArguments(), ElementsAre(address));
}

TEST_F(DesktopsOwnOpenerTest, opensADocumentInTheUsersProgramForIt) {
    const StandInProgram viewer = standIn("viewer");
    const std::string manual = sandbox.write("User Manual.pdf", "%PDF-1.4\n");
    EXPECT_TRUE(opener.openFile(manual, error));
    EXPECT_THAT(viewer.takeArguments(), ElementsAre(manual));
}

}  // namespace
}  // namespace vornic::platform
