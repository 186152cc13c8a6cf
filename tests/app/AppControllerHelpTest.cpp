#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include <gmock/gmock.h>

#include "foundation/places/QMLocalPaths.h"
#include "platform/locks/FolderLock.h"
#include "platform/settings/Bundle.h"
#include "tests/app/ControllerTest.h"
#include "tests/support/fakes/OwnMachineLibrary.h"
#include "ui/support/QMSiteLinks.h"

namespace vornic {
namespace {

using platform::PropertyList;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class AppControllerHelpTest : public test::ControllerTest {
  protected:
    /// What opening a page below the maker's home page looks like.
    [[nodiscard]] static std::string page(const std::string& place) {
        return "URL " + std::string(QMSiteLinks::kBaseAddress) + place;
    }
    [[nodiscard]] std::string logs(const std::string& name) const {
        return sandbox.home() + "/.local/share/quillmark/Logs/Quillmark/" + name;
    }
    [[nodiscard]] std::string alertShown() const {
        return alerts->shown.empty() ? "" : alerts->shown.back().contents.messageText;
    }

    std::shared_ptr<AppController> controller = AppController::init(host);
};

// Web pages

TEST_F(AppControllerHelpTest, opensTheMakersHomePage) {
    controller->helpQMHome();
    EXPECT_THAT(opener->opened, ElementsAre(page("")));
}

TEST_F(AppControllerHelpTest, opensThePageOfTheFamily) {
    controller->helpSuiteHome();
    EXPECT_THAT(opener->opened, ElementsAre(page("/brindletools")));
}

TEST_F(AppControllerHelpTest, opensTheFamilysSupportPage) {
    controller->helpSupport();
    EXPECT_THAT(opener->opened, ElementsAre(page("/support/brindletools")));
}

TEST_F(AppControllerHelpTest, reportsABugWithShortNameAndVersion) {
    writeInformation({{"QMShortName", "vornic"}, {"CFBundleShortVersionString", "2.1"}});
    controller->helpReportBug();
    EXPECT_THAT(opener->opened,
                ElementsAre(page("/support/brindletools/bugreport/?app=vornic&version=2.1")));
}

TEST_F(AppControllerHelpTest, reportsABugUnderTheFamilysNameWithoutAShortName) {
    writeInformation({{"CFBundleShortVersionString", "2.1"}});
    controller->helpReportBug();
    EXPECT_THAT(
        opener->opened,
        ElementsAre(page("/support/brindletools/bugreport/?app=brindle_tools&version=2.1")));
}

TEST_F(AppControllerHelpTest, suggestsAFeatureWithTheShortNameAlone) {
    writeInformation({{"QMShortName", "vornic"}, {"CFBundleShortVersionString", "2.1"}});
    controller->helpSuggestFeature();
    EXPECT_THAT(opener->opened,
                ElementsAre(page("/support/brindletools/featurerequest/?app=vornic")));
}

TEST_F(AppControllerHelpTest, suggestsAFeatureUnderTheFamilysNameWithoutAShortName) {
    controller->helpSuggestFeature();
    EXPECT_THAT(opener->opened,
                ElementsAre(page("/support/brindletools/featurerequest/?app=brindle_tools")));
}

TEST_F(AppControllerHelpTest, logsAndReportsAPageThatCannotBeOpened) {
    opener->answer = false;
    controller->helpQMHome();
    QMLog::finishWriting();
    EXPECT_THAT(test::readBytes(logs("Vornic.1.log")),
                HasSubstr("Unable to open " + std::string(QMSiteLinks::kBaseAddress) +
                          ". Nothing can be opened.\n"));
    EXPECT_THAT(alerts->texts(), ElementsAre(std::string(QMSiteLinks::kBaseAddress) +
                                             " could not be opened. | Nothing can be opened."));
}

// The about box

TEST_F(AppControllerHelpTest, showsTheAboutPanel) {
    controller->showAboutDialog();
    EXPECT_THAT(host.calls, ElementsAre("about"));
}

// Troubleshooting

TEST_F(AppControllerHelpTest, viewsTheCurrentLog) {
    QMLog::finishWriting();
    controller->viewLog();
    EXPECT_THAT(opener->opened, ElementsAre("file " + logs("Vornic.1.log")));
}

TEST_F(AppControllerHelpTest, viewsItsOwnLogWhereverAnotherProgramHasMovedIt) {
    QMLog::finishWriting();
    // Another program of the name starts its log.
    std::filesystem::rename(logs("Vornic.1.log"), logs("Vornic.2.log"));
    std::ofstream(logs("Vornic.1.log")) << "another program's\n";
    controller->viewLog();
    EXPECT_THAT(opener->opened, ElementsAre("file " + logs("Vornic.2.log")));
}

TEST_F(AppControllerHelpTest, reportsThatALogCannotBeOpened) {
    QMLog::finishWriting();
    opener->answer = false;
    controller->viewLog();
    controller->viewTaskLog();
    EXPECT_THAT(alerts->texts(),
                ElementsAre("The log could not be opened. | The program xdg-open is needed, and "
                            "one that shows text files.",
                            HasSubstr("No log found")));
}

TEST_F(AppControllerHelpTest, viewsTheTaskLog) {
    controller->viewTaskLog();
    EXPECT_THAT(opener->opened, IsEmpty());
    EXPECT_EQ(alertShown(), "No log found");
    std::ofstream(logs("Vornic.1.task.log")) << "task";
    controller->viewTaskLog();
    EXPECT_THAT(opener->opened, ElementsAre("file " + logs("Vornic.1.task.log")));
}

TEST_F(AppControllerHelpTest, keepsTheInterfaceLiveWhileLogsWaitForTheirTurn) {
    QMLog::finishWriting();
    std::filesystem::create_directories(sandbox.home() + "/Desktop");
    auto turn = std::make_unique<platform::FolderLock>(QMLocalPaths::tempDirectory());
    ASSERT_TRUE(turn->isHeld());
    // Nobody else lets go of the turn than an event of the main thread, which is asked meanwhile
    // for the same once more.
    platform::MainThread::performAfter(std::chrono::milliseconds(50), [this, &turn] {
        controller->gatherLogs();
        turn.reset();
    });
    controller->gatherLogs();
    EXPECT_EQ(turn, nullptr);
    EXPECT_EQ(alerts->shown.size(), 1U);
    EXPECT_EQ(alertShown(), "Logs gathered successfully");
}

TEST_F(AppControllerHelpTest, gathersTheLogsOnTheDesktop) {
    QMLog::finishWriting();
    std::filesystem::create_directories(sandbox.home() + "/Desktop");
    controller->gatherLogs();
    EXPECT_EQ(alertShown(), "Logs gathered successfully");
    EXPECT_TRUE(test::exists(sandbox.home() + "/Desktop/Vornic Logs.zip"));
}

// The manual, on a machine whose Library everybody may write

class AppControllerManualTest : protected test::OwnMachineLibrary, public AppControllerHelpTest {
  protected:
    void SetUp() override {
        if (!isMounted()) {
            GTEST_SKIP() << "needs root and the right to mount";
        }
        std::filesystem::create_directories(std::filesystem::path(manual).parent_path());
    }

    const std::string manual =
        std::string(kFolder) + "/Documentation/Quillmark/Brindle Tools User Manual.pdf";
};

TEST_F(AppControllerManualTest, opensTheManualThatIsInstalled) {
    std::ofstream(manual) << "%PDF";
    controller->helpUserManual();
    EXPECT_THAT(opener->opened, ElementsAre("file " + manual));
}

TEST_F(AppControllerManualTest, opensTheManualThatCameWithTheProgramWhenThereIsNoOther) {
    const std::string own = sandbox.path("data/manual/Brindle Tools User Manual.pdf");
    std::filesystem::create_directories(std::filesystem::path(own).parent_path());
    std::ofstream(own) << "%PDF";
    platform::Bundle::setMainBundle(
        platform::Bundle(sandbox.path("Vornic.app"), {sandbox.path("data")}));
    controller->helpUserManual();
    std::ofstream(manual) << "%PDF";
    controller->helpUserManual();
    platform::Bundle::setMainBundle(std::nullopt);
    EXPECT_THAT(opener->opened, ElementsAre("file " + own, "file " + manual));
}

TEST_F(AppControllerManualTest, doesNothingWithoutAManual) {
    controller->helpUserManual();
    EXPECT_THAT(opener->opened, IsEmpty());
    EXPECT_THAT(alerts->shown, IsEmpty());
    EXPECT_THAT(host.calls, IsEmpty());
}

TEST_F(AppControllerManualTest, logsAndReportsAManualThatCannotBeOpened) {
    std::ofstream(manual) << "%PDF";
    opener->answer = false;
    controller->helpUserManual();
    QMLog::finishWriting();
    EXPECT_THAT(test::readBytes(logs("Vornic.1.log")),
                HasSubstr("Unable to open " + manual + ". Nothing can be opened.\n"));
    EXPECT_THAT(alerts->texts(),
                ElementsAre(manual + " could not be opened. | Nothing can be opened."));
}

}  // namespace
}  // namespace vornic
