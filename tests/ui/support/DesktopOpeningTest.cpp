#include <cstdlib>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/session/WorkspaceOpener.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/machine/VirtualScreen.h"
#include "tests/support/programs/StandInProgram.h"
#include "tests/support/texts/LogCapture.h"
#include "ui/support/QMSiteLinks.h"
#include "ui/support/QMTroubleshootingUtils.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;

/// A desktop of the test's own, on which a program of the test's own opens addresses and texts.
class DesktopOpeningTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!test::exists("/usr/bin/xdg-open") || !test::exists("/usr/bin/file")) {
            GTEST_SKIP() << "this machine has not both of xdg-open and file";
        }
        if (!screen.display()) {
            GTEST_SKIP() << "this machine has no Xvfb";
        }
        setenv("DISPLAY", screen.display()->c_str(), 1);
        setenv("XDG_CURRENT_DESKTOP", "X-Generic", 1);
        registerHandler();
    }
    ~DesktopOpeningTest() override {
        unsetenv("DISPLAY");
        unsetenv("XDG_CURRENT_DESKTOP");
    }

    /// As a user's desktop has it: an entry for the program, and what it is the default for.
    void registerHandler() const {
        const std::string entries = sandbox.home() + "/.local/share/applications";
        fs::create_directories(entries);
        test::writeBytes(entries + "/stand-in.desktop",
                         "[Desktop Entry]\nType=Application\nName=Stand-in\nExec=" + program +
                             " %u\nMimeType=text/plain;text/x-log;x-scheme-handler/https;\n");
        fs::create_directories(sandbox.home() + "/.config");
        test::writeBytes(sandbox.home() + "/.config/mimeapps.list",
                         "[Default Applications]\ntext/plain=stand-in.desktop\n"
                         "text/x-log=stand-in.desktop\nx-scheme-handler/https=stand-in.desktop\n");
    }

    test::Unprivileged user;
    test::Sandbox sandbox;
    const std::string program = sandbox.path("stand-in");
    test::StandInProgram handler{program, sandbox.path("record")};
    test::VirtualScreen screen{sandbox.path("display")};
    test::LogCapture log;
};

TEST_F(DesktopOpeningTest, showsThePagesOfTheSiteInTheUsersBrowser) {
    for (const std::string& address :
         {QMSiteLinks::quillmarkURL(), QMSiteLinks::supportURLForAppName("brindletools"),
          QMSiteLinks::bugReportURLWithAppName("brindletools", "brindle_tools", "2.1 b3"),
          QMSiteLinks::featureRequestURLWithAppName("brindletools", "brindle_tools")}) {
        ErrorSlot error;
        ASSERT_TRUE(platform::WorkspaceOpener::shared()->openURL(address, error));
        EXPECT_THAT(handler.takeArguments(), ElementsAre(address));
    }
}

TEST_F(DesktopOpeningTest, showsTheLogInTheUsersViewer) {
    EXPECT_TRUE(QMTroubleshootingUtils::viewLogForApp("Vornic"));
    EXPECT_THAT(
        handler.takeArguments(),
        ElementsAre(sandbox.home() + "/.local/share/quillmark/Logs/Quillmark/Vornic.1.log"));
}

}  // namespace
}  // namespace vornic
