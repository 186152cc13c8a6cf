#include "app/AppController.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "app/cli/InterruptedRuns.h"
#include "base/FormatString.h"
#include "base/PathText.h"
#include "formats/FileCodes.h"
#include "formats/FileKind.h"
#include "foundation/log/LogGenerations.h"
#include "foundation/log/QMLog.h"
#include "foundation/places/PreferenceValues.h"
#include "foundation/places/QMLocalPaths.h"
#include "foundation/rights/QMAuthorization.h"
#include "platform/files/FileSystem.h"
#include "platform/session/WorkspaceOpener.h"
#include "platform/settings/Bundle.h"
#include "platform/settings/UserPreferences.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"
#include "ui/alerts/QMAlert.h"
#include "ui/support/QMBugReporter.h"
#include "ui/support/QMSiteLinks.h"
#include "ui/support/QMTroubleshootingUtils.h"

namespace vornic {
namespace {

using platform::UserPreferences;

constexpr const char* kApplicationName = "Vornic";
constexpr const char* kFamilyShortName = "brindletools";
constexpr const char* kPreferenceFileName = "com.quillmark.Vornic.plist";
constexpr const char* kOwnManual = "manual/Brindle Tools User Manual";
constexpr const char* kUserManual = "Documentation/Quillmark/Brindle Tools User Manual.pdf";
constexpr std::chrono::seconds kStartupCheckDelay{1};

OpenPanelSettings openPanelSettings() {
    using Kind = AllowedFileType::Kind;
    return {.canChooseFiles = true,
            .canChooseDirectories = false,
            .canCreateDirectories = false,
            .allowsMultipleSelection = true,
            .message = "Browse for a Final Cut Pro 7 or X XML file",
            .allowedFileTypes = {{Kind::extension, "xml"},
                                 {Kind::extension, "fcpxml"},
                                 {Kind::typeCode, std::string(kFinalCutTypeCode)},
                                 {Kind::typeIdentifier, "com.apple.finalcutpro.xml"}}};
}

/// The file of the application's own preferences, for a program that has no bundle to name it.
QMLocalPaths::Path preferenceFile() {
    const QMLocalPaths::Path folder = QMLocalPaths::prefsDirectory(true);
    return folder ? QMLocalPaths::Path(joinPath(*folder, kPreferenceFileName)) : std::nullopt;
}

std::string applicationShortName() {
    return platform::Bundle::mainBundle().infoString("QMShortName").value_or("brindle_tools");
}

void tellUnopened(const std::string& what, const ErrorSlot& error) {
    const std::string reason = error ? error->localizedDescription() : std::string();
    QMLog::appendLog("Unable to open %@. %@", what, reason);
    QMAlert::alertSheetWithMessageText(formatString("%@ could not be opened.", what), reason,
                                       nullptr);
}

/// Tells that a log is there and nothing shows it; that there is none has been told already.
void tellUnopenedLog(std::string_view name) {
    const QMLocalPaths::Path folder = logFolder(true);
    if (folder && platform::fileExists(joinPath(*folder, formatString(name, kApplicationName)))) {
        QMAlert::alertSheetWithMessageText(
            "The log could not be opened.",
            "The program xdg-open is needed, and one that shows text files.", nullptr);
    }
}

/// What a program that was killed has left may lie on a volume that is slow, and is copied to the
/// Trash where that is on another one.
void settleInterruptedRunsInTheBackground() {
    try {
        platform::detachNewThread([] {
            try {
                settleInterruptedRuns();
            } catch (const std::bad_alloc&) {
                // The next start tries again.
            }
        });
    } catch (const platform::Exception& exception) {
        QMLog::appendLog("%@", exception.reason());
    }
}

void openPage(const std::string& address) {
    ErrorSlot error;
    if (!platform::WorkspaceOpener::shared()->openURL(address, error)) {
        tellUnopened(address, error);
    }
}

void openFileWithItsApplication(const std::string& path) {
    ErrorSlot error;
    if (!platform::WorkspaceOpener::shared()->openFile(path, error)) {
        tellUnopened(path, error);
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
        QMLog::appendLog(
            "The application ends: it is locked and no administrator has authorized "
            "its start.");
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
    const bool isAnswered = platform::performWhileDispatching(
        [isGiven] { *isGiven = QMAuthorization::sharedController().authStart(); });
    isAuthorizing_ = false;
    return isAnswered && *isGiven;
}

// Whether the lock is wanted even where it would keep everybody out.
bool AppController::keepsLock() {
    if (QMAuthorization::sharedController().canAskForRights()) {
        return true;
    }
    constexpr std::int64_t kKeep = 1;
    return QMAlert::alertSheetWithMessageText(
               "Nobody will be able to start the application.", "Keep", "Undo", std::nullopt,
               "An administrator password is to be asked for at the start, but nothing on this "
               "machine can ask for one: the programs pkexec and vornic-auth-helper and the "
               "authorization service (polkit) are needed.",
               nullptr, true) == kKeep;
}

bool AppController::applicationShouldOpenUntitledFile() {
    performStartupAction();
    return false;
}

void AppController::applicationDidFinishLaunching() {
    if (!isTerminating_) {
        settleInterruptedRunsInTheBackground();
    }
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
    isTerminating_ = true;
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
    return document && document->fileKind() == FileKind::xmeml;
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
    if (*isOn && !keepsLock()) {
        sender.setState(false);
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
    const std::string manual = library ? joinPath(*library, kUserManual) : "";
    if (platform::fileExists(manual)) {
        openFileWithItsApplication(manual);
    } else if (const auto own = platform::Bundle::mainBundle().pathForResource(kOwnManual, "pdf")) {
        openFileWithItsApplication(*own);
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
    if (!QMTroubleshootingUtils::viewLogForApp(kApplicationName)) {
        tellUnopenedLog("%@.1.log");
    }
}

void AppController::viewTaskLog() {
    if (!QMTroubleshootingUtils::viewTaskLogForApp(kApplicationName)) {
        tellUnopenedLog("%@.1.task.log");
    }
}

void AppController::gatherLogs() {
    if (std::exchange(isGathering_, true)) {
        return;
    }
    QMTroubleshootingUtils::gatherLogsForAppWithName(kApplicationName);
    isGathering_ = false;
}

}  // namespace vornic
