#include "ui/support/QMTroubleshootingUtils.h"

#include <atomic>
#include <memory>
#include <optional>

#include "base/FormatString.h"
#include "base/PathText.h"
#include "foundation/files/QMFileManager.h"
#include "foundation/log/ConsoleFailure.h"
#include "foundation/log/LocalTimeStamp.h"
#include "foundation/log/LogGenerations.h"
#include "foundation/log/QMLog.h"
#include "foundation/places/QMLocalPaths.h"
#include "platform/files/FileSystem.h"
#include "platform/locks/FolderLock.h"
#include "platform/session/WorkspaceOpener.h"
#include "platform/settings/OwnFolder.h"
#include "platform/threads/Thread.h"
#include "ui/alerts/QMAlert.h"
#include "ui/support/LogCollection.h"

namespace vornic {

namespace {

/// What came of gathering.
enum class Gathering { failed, foundNothing, archived, notArchived };

void showAlert(const char* messageText, const char* informativeText) {
    QMAlert::alertSheetWithMessageText(messageText, informativeText, nullptr);
}

/// Removes what an earlier run left. What somebody else may have put there is not touched.
bool removeStagingFolder(const std::string& folder, ErrorSlot& error) {
    if (!platform::isOwnItem(folder)) {
        error = Error{.domain = std::string(kPosixErrorDomain),
                      .description = folder + " does not belong to this user."};
        return false;
    }
    return platform::removeItem(folder, error);
}

bool prepareStagingFolder(const std::string& folder) {
    ErrorSlot error;
    if (platform::nodeExists(folder) && !removeStagingFolder(folder, error)) {
        return failOnConsole("Error removing existing folder: %@", error);
    }
    return platform::createPrivateFolder(folder, error) ||
           failOnConsole("Error creating temp folder: %@", error);
}

/// The path of the archive; nothing when there is no desktop.
std::optional<std::string> archivePath(const std::string& appName) {
    const std::optional<std::string> desktop = QMLocalPaths::desktopDirectory();
    if (!desktop) {
        return std::nullopt;
    }
    std::string path = *desktop + formatString("/%@ Logs.zip", appName);
    if (platform::nodeExists(path)) {
        return freeStampedPath([stem = withoutExtension(path)] {
            return stem + formatString("_%@.zip", localTimeStamp());
        });
    }
    return path;
}

/// Makes the archive, and the desktop's folder with it where nobody has needed that yet.
bool archive(const std::string& folder, const std::string& appName) {
    const std::optional<std::string> path = archivePath(appName);
    if (!path) {
        return false;
    }
    ErrorSlot ignored;
    static_cast<void>(platform::createDirectory(*QMLocalPaths::desktopDirectory(), ignored));
    return QMFileManager::compressFile(folder, *path);
}

Gathering gather(const QMTroubleshootingUtils::Names& appNames,
                 const QMTroubleshootingUtils::Paths& additionalFiles) {
    const std::string temporaryFolder = QMLocalPaths::tempDirectory();
    const std::string folder = joinPath(temporaryFolder, "QM_App_Logs");
    const platform::FolderLock turn(temporaryFolder);
    if (!prepareStagingFolder(folder)) {
        return Gathering::failed;
    }
    LogCollection collection(folder, appNames);
    if (!collection.addLogs() || !collection.addFiles(additionalFiles)) {
        return Gathering::failed;
    }
    if (collection.count() == 0) {
        return Gathering::foundNothing;
    }
    const bool isArchived = archive(folder, appNames.front());
    ErrorSlot ignored;
    static_cast<void>(platform::removeItem(folder, ignored));
    return isArchived ? Gathering::archived : Gathering::notArchived;
}

void showOutcome(Gathering outcome) {
    switch (outcome) {
        case Gathering::failed:
            break;
        case Gathering::foundNothing:
            showAlert("No logs found", "There were no logs available to gather.");
            break;
        case Gathering::archived:
            showAlert("Logs gathered successfully",
                      "The gathered logs were placed on your desktop.");
            break;
        case Gathering::notArchived:
            showAlert("Logs could not be gathered", "Please check your file permissions.");
            break;
    }
}

/// Opens a file of the user's log folder.
/// @param advice how to come by the file, told when it is not there
/// @param current where the file is now when it goes by another name
bool viewLog(const std::string& name, const char* advice,
             const std::optional<std::string>& current = std::nullopt) {
    const std::optional<std::string> folder = logFolder(true);
    if (!folder || (!current && !platform::fileExists(*folder + "/" + name))) {
        showAlert("No log found", advice);
        return false;
    }
    const std::string path = current.value_or(*folder + "/" + name);
    ErrorSlot error;
    if (platform::WorkspaceOpener::shared()->openFile(path, error)) {
        return true;
    }
    QMLog::appendLog("Unable to open %@. %@", path,
                     error ? error->localizedDescription() : std::string());
    return false;
}

}  // namespace

bool QMTroubleshootingUtils::gatherLogsForAppsWithNames(const Names& appNames, bool silent,
                                                        const Paths& additionalFiles) {
    if (appNames.empty()) {
        return false;
    }
    // What is still queued belongs to the logs that are gathered.
    QMLog::finishWriting();
    // Others may have their turn first, and archives take their time.
    const auto outcome = std::make_shared<std::atomic<Gathering>>(Gathering::failed);
    const bool hasEnded = platform::performWhileDispatching(
        [outcome, appNames, additionalFiles] { *outcome = gather(appNames, additionalFiles); });
    if (hasEnded && !silent) {
        showOutcome(*outcome);
    }
    return hasEnded && *outcome == Gathering::archived;
}

bool QMTroubleshootingUtils::gatherLogsForAppsWithNames(const Names& appNames, bool silent) {
    return gatherLogsForAppsWithNames(appNames, silent, {});
}

bool QMTroubleshootingUtils::gatherLogsForAppsWithNames(const Names& appNames) {
    return gatherLogsForAppsWithNames(appNames, false);
}

bool QMTroubleshootingUtils::gatherLogsForAppWithName(const std::string& appName) {
    return !appName.empty() && gatherLogsForAppsWithNames({appName});
}

bool QMTroubleshootingUtils::viewLogForApp(const std::string& appName) {
    // What is still queued belongs to what the user wants to see.
    QMLog::finishWriting();
    // Another program that has started its log since has moved this one's on.
    const std::optional<std::string> own =
        appName == QMLog::sharedController().appName() ? QMLog::currentLog() : std::nullopt;
    return viewLog(formatString("%@.1.log", appName),
                   "You must perform a task before viewing the log.", own);
}

bool QMTroubleshootingUtils::viewTaskLogForApp(const std::string& appName) {
    QMLog::finishWriting();
    return viewLog(formatString("%@.1.task.log", appName),
                   "You must run the application as a task (e.g. through Chore Runner) before "
                   "viewing a log.");
}

}  // namespace vornic
