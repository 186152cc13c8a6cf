#include "app/AppController.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "foundation/PreferenceValues.h"
#include "foundation/QMAuthorization.h"
#include "foundation/QMLocalPaths.h"
#include "foundation/QMLog.h"
#include "foundation/Text.h"
#include "platform/Bundle.h"
#include "platform/FileSystem.h"
#include "platform/MainThread.h"
#include "platform/Thread.h"
#include "platform/UserPreferences.h"
#include "platform/WorkspaceOpener.h"
#include "ui/QMAlert.h"
#include "ui/QMBugReporter.h"
#include "ui/QMSiteLinks.h"
#include "ui/QMTroubleshootingUtils.h"

namespace vornic {
namespace {

using platform::UserPreferences;

constexpr const char* kApplicationName = "Vornic";
constexpr const char* kFamilyShortName = "brindletools";
constexpr const char* kPreferenceFileName = "com.quillmark.Vornic.plist";
constexpr const char* kUserManual = "Documentation/Quillmark/Brindle Tools User Manual.pdf";
constexpr std::chrono::seconds kStartupCheckDelay{1};
constexpr int kXMEML = 0;

OpenPanelSettings openPanelSettings() {
    using Kind = AllowedFileType::Kind;
    return {.canChooseFiles = true,
            .canChooseDirectories = false,
            .canCreateDirectories = false,
            .allowsMultipleSelection = true,
            .message = "Browse for a Final Cut Pro 7 or X XML file",
            .allowedFileTypes = {{Kind::extension, "xml"},
                                 {Kind::extension, "fcpxml"},
                                 {Kind::typeCode, "XML "},
                                 {Kind::typeIdentifier, "com.apple.finalcutpro.xml"}}};
}

/// The file of the application's own preferences, for a program that has no bundle to name it.
QMLocalPaths::Path preferenceFile() {
    const QMLocalPaths::Path folder = QMLocalPaths::prefsDirectory(true);
    return folder ? QMLocalPaths::Path(appendingPathComponent(*folder, kPreferenceFileName))
                  : std::nullopt;
}

std::string applicationShortName() {
    return platform::Bundle::mainBundle().infoString("QMShortName").value_or("brindle_tools");
}

void logUnopened(const std::string& what, const ErrorSlot& error) {
    QMLog::appendLog("Unable to open %@. %@", what,
                     error ? error->localizedDescription() : std::string());
}

void openPage(const std::string& address) {
    ErrorSlot error;
    if (!platform::WorkspaceOpener::shared()->openURL(address, error)) {
        logUnopened(address, error);
    }
}

void openFileWithItsApplication(const std::string& path) {
    ErrorSlot error;
    if (!platform::WorkspaceOpener::shared()->openFile(path, error)) {
        logUnopened(path, error);
    }
}

}  // namespace

std::shared_ptr<AppController> AppController::init(ApplicationHost& host) {
    std::shared_ptr<AppController> controller(new AppController(host, true));
    QMBugReporter::startBugReporter();
    QMLog::createNewLog();
    UserPreferences().registerDefaults({{kShowOpenDialogPreference, 1}});
    return controller;
}

std::shared_ptr<AppController> AppController::initWithoutGUI(ApplicationHost& host) {
    std::shared_ptr<AppController> controller(new AppController(host, false));
    QMBugReporter::startBugReporter(kApplicationName, preferenceFile());
    QMLog::createNewLog(kApplicationName);
    QMAuthorization::sharedController(false);
    return controller;
}

void AppController::setPrefsAdminPass(std::shared_ptr<CheckBoxItem> item) {
    prefsAdminPass_ = std::move(item);
}

void AppController::awakeFromNib() {
    ++awakeCount_;
    const bool isMainInterface = awakeCount_ == 1;
    if (!isMainInterface ||
        !isNumberEqualTo(UserPreferences().value(kRequireAdminPasswordPreference), 1)) {
        return;
    }
    if (prefsAdminPass_) {
        prefsAdminPass_->setState(true);
    }
    if (!authorize()) {
        isTerminating_ = true;
        host_.terminate();
    }
}

// Asks the user for an administrator's authorization, one question at a time.
bool AppController::authorize() {
    if (isAuthorizing_) {
        return false;
    }
    isAuthorizing_ = true;
    const auto isGiven = std::make_shared<std::atomic<bool>>(false);
    platform::performWhileDispatching(
        [isGiven] { *isGiven = QMAuthorization::sharedController().authStart(); });
    isAuthorizing_ = false;
    return *isGiven;
}

bool AppController::applicationShouldOpenUntitledFile() {
    performStartupAction();
    return false;
}

void AppController::applicationDidFinishLaunching() {
    platform::MainThread::performAfter(kStartupCheckDelay, [weak = weak_from_this()] {
        const std::shared_ptr<AppController> controller = weak.lock();
        if (controller && !controller->host_.hasKeyWindow()) {
            controller->performStartupAction();
        }
    });
}

void AppController::performStartupAction() {
    if (hasGUI_ && integerPreference(UserPreferences().value(kShowOpenDialogPreference)) == 1) {
        openFile();
    }
}

bool AppController::applicationOpenFile(const std::string& path) {
    return !isTerminating_ && host_.openDocument(path);
}

void AppController::applicationWillTerminate() {
    QMBugReporter::stopBugReporter();
}

void AppController::openFile() {
    if (isTerminating_) {
        return;
    }
    const auto paths = host_.runOpenPanel(openPanelSettings());
    for (const std::string& path : paths.value_or(std::vector<std::string>{})) {
        host_.openDocument(path);
    }
}

void AppController::showConvertDialog() {
    if (const std::shared_ptr<Document> document = host_.currentDocument()) {
        document->showConvertDialog();
    }
}

bool AppController::validateUserInterfaceItem(std::string_view action) const {
    if (action != kShowConvertDialogAction) {
        return true;
    }
    const std::shared_ptr<Document> document = host_.currentDocument();
    return document && document->xmlType() == kXMEML;
}

void AppController::prefsToggleAdminPass(CheckBoxItem& sender) {
    const std::optional<bool> isOn = sender.state();
    if (!isOn) {
        return;
    }
    if (!*isOn && !authorize()) {
        sender.setState(true);
        return;
    }
    // What it is now: the user may have changed it again while being asked.
    const bool isLocked = sender.state().value_or(*isOn);
    ErrorSlot error;
    if (!UserPreferences().setValueForAnyUser(kRequireAdminPasswordPreference, isLocked ? 1 : 0,
                                              error)) {
        logUnsavedPreference(kRequireAdminPasswordPreference, error);
        sender.setState(!isLocked);
        QMAlert::alertSheetWithMessageText(
            "The preference could not be saved.",
            error ? std::optional(error->localizedDescription()) : std::nullopt, nullptr);
    }
}

void AppController::helpUserManual() {
    const QMLocalPaths::Path library = QMLocalPaths::libraryDirectory(false);
    const std::string manual = library ? appendingPathComponent(*library, kUserManual) : "";
    if (platform::fileExists(manual)) {
        openFileWithItsApplication(manual);
    }
}

void AppController::helpSuiteHome() {
    openPage(QMSiteLinks::brindleToolsURL());
}

void AppController::helpReportBug() {
    openPage(QMSiteLinks::bugReportURLWithAppName(kFamilyShortName, applicationShortName()));
}

void AppController::helpSuggestFeature() {
    openPage(QMSiteLinks::featureRequestURLWithAppName(kFamilyShortName, applicationShortName()));
}

void AppController::helpSupport() {
    openPage(QMSiteLinks::supportURLForAppName(kFamilyShortName));
}

void AppController::helpQMHome() {
    openPage(QMSiteLinks::quillmarkURL());
}

void AppController::showAboutDialog() {
    host_.showAboutPanel();
}

void AppController::viewLog() {
    QMTroubleshootingUtils::viewLogForApp(kApplicationName);
}

void AppController::viewTaskLog() {
    QMTroubleshootingUtils::viewTaskLogForApp(kApplicationName);
}

void AppController::gatherLogs() {
    QMTroubleshootingUtils::gatherLogsForAppWithName(kApplicationName);
}

}  // namespace vornic
