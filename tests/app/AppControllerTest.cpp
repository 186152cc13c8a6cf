#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <gmock/gmock.h>

#include "app/AppController.h"
#include "job/Journal.h"
#include "job/JournalFiles.h"
#include "platform/threads/Thread.h"
#include "repair/document/Document.h"
#include "tests/app/ControllerTest.h"
#include "tests/support/fakes/RecordingDocumentWindow.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/texts/LogCapture.h"

namespace vornic {

bool operator==(const OpenPanelSettings& left, const OpenPanelSettings& right) {
    return left.canChooseFiles == right.canChooseFiles &&
           left.canChooseDirectories == right.canChooseDirectories &&
           left.canCreateDirectories == right.canCreateDirectories &&
           left.allowsMultipleSelection == right.allowsMultipleSelection &&
           left.message == right.message && left.allowedFileTypes == right.allowedFileTypes;
}

namespace {

using platform::PropertyList;
using std::chrono::milliseconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class AppControllerTest : public test::ControllerTest {
  protected:
    [[nodiscard]] std::shared_ptr<AppController> made() { return AppController::init(host); }
    void showPanelAtStartup(const PropertyList& value) { store("showOpenDialogAtStartup", value); }
    [[nodiscard]] static std::optional<double> stamp(const std::string& key) {
        const auto value = stored(key);
        const auto* date = value ? std::get_if<PropertyList::Date>(&value->value()) : nullptr;
        return date != nullptr ? std::optional(date->secondsSince1970) : std::nullopt;
    }
    [[nodiscard]] std::string log() const {
        QMLog::finishWriting();
        return test::readBytes(sandbox.home() +
                               "/.local/share/quillmark/Logs/Quillmark/Vornic.1.log");
    }
};

// The making of it

TEST_F(AppControllerTest, hasAUserInterfaceForTheDesktopAlone) {
    EXPECT_TRUE(made()->hasGUI());
    EXPECT_FALSE(AppController::initWithoutGUI(host)->hasGUI());
    EXPECT_EQ(made()->awakeCount(), 0U);
    EXPECT_THAT(host.calls, IsEmpty());
}

TEST_F(AppControllerTest, recordsTheLaunchAndBeginsALog) {
    const auto controller = made();
    EXPECT_TRUE(stamp("launch"));
    EXPECT_FALSE(stamp("exit"));
    EXPECT_FALSE(log().empty());
}

/// Counts the logs that there are when a crash report is handed on.
class LogCountingOpener : public test::RecordingWorkspaceOpener {
  public:
    bool openFilesWithIdentifier(const std::vector<std::string>& paths,
                                 const std::string& bundleIdentifier, ErrorSlot& error) override {
        logs = QMLog::availableLogs().size();
        return RecordingWorkspaceOpener::openFilesWithIdentifier(paths, bundleIdentifier, error);
    }
    std::size_t logs = 0;
};

TEST_F(AppControllerTest, looksForACrashBeforeItBeginsALog) {
    const auto counting = std::make_shared<LogCountingOpener>();
    platform::WorkspaceOpener::setShared(counting);
    QMLog::createNewLog("Vornic", true);
    writeInformation({{"CFBundleName", "Vornic"}});
    store("launch", PropertyList(PropertyList::Date{1000}));
    const std::string reports = sandbox.home() + "/.local/share/quillmark/Logs/DiagnosticReports";
    std::filesystem::create_directories(reports);
    std::ofstream(reports + "/Vornic_1.crash") << "crash";
    const auto controller = made();
    EXPECT_EQ(counting->opened.size(), 1U);
    EXPECT_EQ(counting->logs, 1U);
    EXPECT_EQ(QMLog::availableLogs().size(), 2U);
}

TEST_F(AppControllerTest, registersThatThePanelIsShownAtStartup) {
    const auto controller = made();
    EXPECT_EQ(stored("showOpenDialogAtStartup"), PropertyList(1));
    EXPECT_EQ(test::readBytes(preferencesFolder() + "/com.quillmark.Vornic.plist")
                  .find("showOpenDialogAtStartup"),
              std::string::npos);
}

TEST_F(AppControllerTest, recordsTheLaunchInTheNamedFileWithoutAUserInterface) {
    const auto controller = AppController::initWithoutGUI(host);
    EXPECT_TRUE(test::exists(preferencesFolder() + "/com.quillmark.Vornic.plist"));
    EXPECT_TRUE(stamp("launch"));
    EXPECT_FALSE(log().empty());
}

TEST_F(AppControllerTest, looksForACrashUnderItsOwnNameWithoutAUserInterface) {
    QMLog::createNewLog("Vornic", true);
    writeInformation({{"CFBundleName", "Other"}});
    store("launch", PropertyList(PropertyList::Date{1000}));
    const std::string reports = sandbox.home() + "/.local/share/quillmark/Logs/DiagnosticReports";
    std::filesystem::create_directories(reports);
    std::ofstream(reports + "/Vornic_1.crash") << "crash";
    const auto controller = AppController::initWithoutGUI(host);
    EXPECT_EQ(opener->opened.size(), 1U);
}

TEST_F(AppControllerTest, mayNotAskForRightsWithoutAUserInterface) {
    QMAuthorization::setSharedController(nullptr);
    const auto controller = AppController::initWithoutGUI(host);
    EXPECT_FALSE(QMAuthorization::sharedController().canAuthorize());
}

TEST_F(AppControllerTest, recordsTheExitWhenItTerminates) {
    const auto controller = made();
    controller->applicationWillTerminate();
    ASSERT_TRUE(stamp("launch"));
    ASSERT_TRUE(stamp("exit"));
    EXPECT_GE(*stamp("exit"), *stamp("launch"));
}

// Startup

TEST_F(AppControllerTest, makesNoEmptyDocumentButShowsThePanel) {
    EXPECT_FALSE(made()->applicationShouldOpenUntitledFile());
    EXPECT_THAT(host.calls, ElementsAre("panel"));
}

TEST_F(AppControllerTest, showsThePanelAtStartupOnlyForThePreferenceOne) {
    const auto controller = made();
    for (const PropertyList& value :
         {PropertyList(0), PropertyList(2), PropertyList(-1), PropertyList("no")}) {
        showPanelAtStartup(value);
        EXPECT_FALSE(controller->applicationShouldOpenUntitledFile());
        EXPECT_THAT(host.calls, IsEmpty());
    }
    for (const PropertyList& value : {PropertyList(1), PropertyList(true), PropertyList("1")}) {
        showPanelAtStartup(value);
        host.calls.clear();
        EXPECT_FALSE(controller->applicationShouldOpenUntitledFile());
        EXPECT_THAT(host.calls, ElementsAre("panel"));
    }
}

TEST_F(AppControllerTest, showsNoPanelAtStartupWithoutAUserInterface) {
    showPanelAtStartup(1);
    AppController::initWithoutGUI(host)->performStartupAction();
    EXPECT_THAT(host.calls, IsEmpty());
}

TEST_F(AppControllerTest, showsThePanelASecondAfterTheLaunchWithoutAKeyWindow) {
    const auto controller = made();
    const auto launch = std::chrono::steady_clock::now();
    controller->applicationDidFinishLaunching();
    EXPECT_THAT(host.calls, IsEmpty());
    ASSERT_TRUE(platform::MainThread::dispatchOne(std::chrono::minutes(1)));
    EXPECT_GE(std::chrono::steady_clock::now() - launch, std::chrono::seconds(1));
    EXPECT_THAT(host.calls, ElementsAre("panel"));
    EXPECT_FALSE(platform::MainThread::dispatchOne(milliseconds(0)));
}

TEST_F(AppControllerTest, showsNoPanelWhenADocumentHasOpenedMeanwhile) {
    const auto controller = made();
    controller->applicationDidFinishLaunching();
    host.isKeyWindowUp = true;
    runLoopFor(milliseconds(1500));
    EXPECT_THAT(host.calls, IsEmpty());
}

TEST_F(AppControllerTest, showsNoPanelASecondLaterWhenThePreferenceIsNotOne) {
    showPanelAtStartup(0);
    const auto controller = made();
    controller->applicationDidFinishLaunching();
    runLoopFor(milliseconds(1500));
    EXPECT_THAT(host.calls, IsEmpty());
}

TEST_F(AppControllerTest, looksForAKeyWindowNoMoreOnceItIsGone) {
    auto controller = made();
    controller->applicationDidFinishLaunching();
    controller.reset();
    runLoopFor(milliseconds(1500));
    EXPECT_THAT(host.calls, IsEmpty());
}

TEST_F(AppControllerTest, settlesWhatAKilledProgramHasLeft) {
    const auto controller = made();
    const std::string path = std::filesystem::canonical(sandbox.folder()).string() + "/Cut.xml";
    test::writeBytes(path, "repaired");
    test::writeBytes(path + ".old", "original");
    ErrorSlot error;
    const Journal journal = Journal::ofUser().value();
    const JournalFile before = journalFileAt(path + ".old", error).value_or(JournalFile());
    ASSERT_TRUE(
        journal.begin({.program = "test", .version = "1", .file = path, .before = before}, error));
    std::filesystem::rename(path + ".old", undoAsidePath(path));
    controller->applicationDidFinishLaunching();
    EXPECT_TRUE(platform::joinDetachedThreads(std::chrono::seconds(20)));
    const std::string original = sandbox.home() + "/.local/share/Trash/files/Cut.xml";
    EXPECT_EQ(test::readBytes(original), "original");
    EXPECT_TRUE(
        test::LogCapture::contains("An earlier run with the file " + path +
                                   " was interrupted and has been finished. The original is " +
                                   std::filesystem::canonical(original).string() + "."));
    EXPECT_FALSE(test::exists(undoAsidePath(path)));
}

TEST_F(AppControllerTest, showsThePanelOnEachOfTheTwoWays) {
    const auto controller = made();
    EXPECT_FALSE(controller->applicationShouldOpenUntitledFile());
    controller->applicationDidFinishLaunching();
    runLoopFor(milliseconds(1500));
    EXPECT_THAT(host.calls, ElementsAre("panel", "panel"));
}

// Opening files

TEST_F(AppControllerTest, runsThePanelForSeveralFilesOfItsTypes) {
    using Kind = AllowedFileType::Kind;
    made()->openFile();
    const OpenPanelSettings expected{
        .canChooseFiles = true,
        .canChooseDirectories = false,
        .canCreateDirectories = false,
        .allowsMultipleSelection = true,
        .message = "Browse for a Final Cut Pro 7 or X XML file",
        .allowedFileTypes = {{Kind::extension, "xml"},
                             {Kind::extension, "fcpxml"},
                             {Kind::typeCode, "XML "},
                             {Kind::typeIdentifier, "com.apple.finalcutpro.xml"}}};
    EXPECT_EQ(host.settings, expected);
}

TEST_F(AppControllerTest, opensNothingUnlessTheUserConfirms) {
    made()->openFile();
    host.chosen = std::vector<std::string>{};
    made()->openFile();
    EXPECT_THAT(host.calls, ElementsAre("panel", "panel"));
}

TEST_F(AppControllerTest, opensWhatWasChosenInThePanelsOrderWhateverFails) {
    host.chosen = {{"/c.xml", "/a.fcpxml", "/b.xml"}};
    host.damaged = {"/a.fcpxml"};
    made()->openFile();
    EXPECT_THAT(host.calls, ElementsAre("panel", "open /c.xml", "open /a.fcpxml", "open /b.xml"));
}

TEST_F(AppControllerTest, reportsWhetherAFileOfTheSystemsWasOpened) {
    host.damaged = {"/b.xml"};
    const auto controller = made();
    EXPECT_TRUE(controller->applicationOpenFile("/a.xml"));
    EXPECT_FALSE(controller->applicationOpenFile("/b.xml"));
    EXPECT_THAT(host.calls, ElementsAre("open /a.xml", "open /b.xml"));
}

// Conversion

TEST_F(AppControllerTest, enablesTheConvertCommandForACurrentXMEMLDocumentAlone) {
    const auto controller = made();
    EXPECT_FALSE(controller->validateUserInterfaceItem("showConvertDialog:"));
    host.document = Document::create();
    host.document->setXmlType(1);
    EXPECT_FALSE(controller->validateUserInterfaceItem("showConvertDialog:"));
    host.document->setXmlType(0);
    EXPECT_TRUE(controller->validateUserInterfaceItem("showConvertDialog:"));
}

TEST_F(AppControllerTest, enablesEveryOtherCommand) {
    const auto controller = made();
    EXPECT_TRUE(controller->validateUserInterfaceItem("openFile:"));
    EXPECT_TRUE(controller->validateUserInterfaceItem("showConvertDialog"));
    EXPECT_TRUE(controller->validateUserInterfaceItem(""));
}

TEST_F(AppControllerTest, opensTheConversionDialogOfTheCurrentDocument) {
    const auto window = std::make_shared<test::RecordingDocumentWindow>();
    host.document = Document::create();
    host.document->setWindow(window);
    host.document->setFilePath(sandbox.write("cut.xml", "<xmeml version=\"5\"/>"));
    made()->showConvertDialog();
    EXPECT_THAT(window->callsOf("begin convert"), ElementsAre(""));
    EXPECT_TRUE(platform::joinDetachedThreads(std::chrono::minutes(2)));
}

TEST_F(AppControllerTest, opensNoConversionDialogWithoutADocument) {
    made()->showConvertDialog();
    EXPECT_THAT(host.calls, IsEmpty());
    EXPECT_THAT(alerts->shown, IsEmpty());
}

}  // namespace
}  // namespace vornic
