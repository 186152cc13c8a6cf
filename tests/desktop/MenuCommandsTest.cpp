#include <QMainWindow>
#include <QMenuBar>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "desktop/QtAlertPanel.h"
#include "platform/settings/Bundle.h"
#include "tests/desktop/ApplicationTest.h"
#include "tests/support/fakes/OwnMachineLibrary.h"
#include "tests/support/fakes/RecordingAlertPanels.h"
#include "tests/support/fakes/RecordingWorkspaceOpener.h"
#include "tests/support/machine/Unprivileged.h"
#include "ui/support/QMSiteLinks.h"

// What the commands of the menus do, from the menu to what is opened.

namespace vornic::test {
namespace {

namespace fs = std::filesystem;

// Alerts that answer themselves, and after them the toolkit's again.
struct AnsweredAlerts {
    ~AnsweredAlerts() { QMAlert::setPanelFactory(std::make_shared<QtAlertPanelFactory>()); }
    std::shared_ptr<RecordingAlertPanels> panels = [] {
        auto made = std::make_shared<RecordingAlertPanels>();
        QMAlert::setPanelFactory(made);
        return made;
    }();
};

class MenuCommandsTest : protected OwnMachineLibrary, public Unprivileged, public ApplicationTest {
  protected:
    MenuCommandsTest() {
        platform::Bundle::setMainBundle(platform::Bundle(bundle));
        application.launch({});
        settle();
        window = visible<StartWindow>();
    }
    ~MenuCommandsTest() override { platform::Bundle::setMainBundle(std::nullopt); }

    // Chooses a command and takes what was opened.
    std::vector<std::string> choose(const char* id) {
        opener->opened.clear();
        action(*window, id)->trigger();
        return opener->opened;
    }
    [[nodiscard]] std::string logPath(const std::string& generation) const {
        return sandbox.home() + "/.local/share/quillmark/Logs/Quillmark/" +
               QMLog::sharedController().appName() + generation;
    }
    [[nodiscard]] static std::vector<std::string> page(const std::string& place) {
        return {"URL " + std::string(QMSiteLinks::kBaseAddress) + place};
    }

    const std::string bundle = sandbox.path("Vornic.app");
    InstalledWorkspaceOpener opener;
    AnsweredAlerts alerts;
    const StartWindow* window = nullptr;
};

TEST_F(MenuCommandsTest, everyCommandButTheGivenOneIsEnabledAndSaysThatNoFileIsOpen) {
    ASSERT_NE(window, nullptr);
    EXPECT_FALSE(action(*window, "toolsConvert")->isEnabled());
    for (const char* const id :
         {"fileSaveReport", "fileSaveFindings", "fileSavePicture", "fileSaveCopy",
          "fileSaveSalvaged", "viewMedia", "viewTimeline", "toolsRepair", "toolsConvertFCPXML",
          "toolsRestore", "toolsCompare", "toolsOpenInEditor"}) {
        EXPECT_TRUE(action(*window, id)->isEnabled()) << id;
        alerts.panels->shown.clear();
        action(*window, id)->trigger();
        ASSERT_EQ(alerts.panels->shown.size(), 1U) << id;
        EXPECT_EQ(alerts.panels->shown.front().contents.messageText, "No file is open") << id;
    }
}

TEST_F(MenuCommandsTest, ofHelpOpenThePagesTheyAreNamedAfter) {
    using Lines = std::vector<std::string>;
    EXPECT_EQ(choose("helpSuiteHome"), page("/brindletools"));
    EXPECT_EQ(choose("helpSupport"), page("/support/brindletools"));
    EXPECT_EQ(choose("helpQMHome"), page(""));
    EXPECT_EQ(choose("helpReportBug"), page("/support/brindletools/bugreport/?app=brindle_tools"));
    EXPECT_EQ(choose("helpSuggestFeature"),
              page("/support/brindletools/featurerequest/?app=brindle_tools"));
    EXPECT_EQ(visible<AboutWindow>(), nullptr);
    EXPECT_EQ(choose("helpAbout"), Lines{});
    EXPECT_NE(visible<AboutWindow>(), nullptr);
}

TEST_F(MenuCommandsTest, ofHelpOpenTheManual) {
    if (!isMounted()) {
        GTEST_SKIP() << "needs root and the right to mount";
    }
    const std::string manual =
        std::string(kFolder) + "/Documentation/Quillmark/Brindle Tools User Manual.pdf";
    EXPECT_TRUE(choose("helpUserManual").empty());
    fs::create_directories(fs::path(manual).parent_path());
    std::ofstream(manual) << "%PDF";
    EXPECT_EQ(choose("helpUserManual"), std::vector<std::string>{"file " + manual});
}

TEST_F(MenuCommandsTest, ofHelpStartTheUpdater) {
    const std::string updater = bundle + "/Contents/Resources/Quillmark Software Update.app";
    fs::create_directories(updater);
    const std::vector<std::string> opened = choose("helpCheckForUpdates");
    ASSERT_EQ(opened.size(), 1U);
    EXPECT_TRUE(opened.front().starts_with("application "));
    EXPECT_TRUE(opened.front().ends_with("/Quillmark Software Update.app"));
}

TEST_F(MenuCommandsTest, ofHelpSayThatThereIsNoUpdater) {
    if (exists("/opt/Quillmark")) {
        GTEST_SKIP() << "this machine has the maker's programs installed";
    }
    EXPECT_TRUE(choose("helpCheckForUpdates").empty());
    EXPECT_EQ(alerts.panels->texts(),
              std::vector<std::string>{
                  "No updater is installed | Vornic is updated in the way in which it was "
                  "installed, by the system's package manager for instance."});
}

TEST_F(MenuCommandsTest, ofTroubleshootingShowTheLogsTheyAreNamedAfter) {
    using Lines = std::vector<std::string>;
    std::ofstream(logPath(".1.task.log")) << "task";
    EXPECT_EQ(choose("troubleshootingViewLog"), Lines{"file " + logPath(".1.log")});
    EXPECT_EQ(choose("troubleshootingViewTaskLog"), Lines{"file " + logPath(".1.task.log")});
}

TEST_F(MenuCommandsTest, ofTroubleshootingGatherTheLogs) {
    fs::create_directories(sandbox.home() + "/Desktop");
    std::ofstream(sandbox.home() + "/.local/share/quillmark/Logs/Quillmark/Vornic.1.log")
        << "logged";
    EXPECT_TRUE(choose("troubleshootingGatherLogs").empty());
    EXPECT_EQ(alerts.panels->texts(),
              std::vector<std::string>{"Logs gathered successfully | The gathered logs were placed "
                                       "on your desktop."});
    EXPECT_TRUE(exists(sandbox.home() + "/Desktop/Vornic Logs.zip"));
}

}  // namespace
}  // namespace vornic::test
