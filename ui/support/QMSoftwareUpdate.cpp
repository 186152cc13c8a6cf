#include "ui/support/QMSoftwareUpdate.h"

#include "base/PathText.h"
#include "foundation/log/QMException.h"
#include "foundation/log/QMLog.h"
#include "foundation/places/GlobalPreferences.h"
#include "foundation/places/QMLocalPaths.h"
#include "foundation/tasks/QMTaskEx.h"
#include "platform/files/FileSystem.h"
#include "platform/locks/FolderLock.h"
#include "platform/session/WorkspaceOpener.h"
#include "platform/settings/Bundle.h"
#include "platform/settings/OwnFolder.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"
#include "ui/alerts/QMAlert.h"

namespace vornic {

namespace {

constexpr std::string_view kUpdaterName = "Quillmark Software Update.app";

/// The updater that other programs of the family have installed.
std::optional<std::string> installedUpdater() {
    const std::optional<std::string> folder = QMLocalPaths::applicationDirectory(false);
    if (!folder) {
        return std::nullopt;
    }
    std::string path = joinPath(*folder, "Quillmark/" + std::string(kUpdaterName));
    return platform::fileExists(path) ? std::optional(std::move(path)) : std::nullopt;
}

/// The updater that came with this application.
std::optional<std::string> ownUpdater() {
    const std::string bundle = platform::Bundle::mainBundle().path();
    for (const char* folder : {"Contents/Resources", "Contents/MacOS"}) {
        std::string path = joinPath(joinPath(bundle, folder), kUpdaterName);
        if (platform::fileExists(path)) {
            return path;
        }
    }
    return std::nullopt;
}

/// Copies an updater to the temporary folder. @return the copy's path; nothing when somebody else
/// has put something there, which is not to be run.
std::optional<std::string> copyToTemporaryFolder(const std::string& updater) {
    const std::string folder = QMLocalPaths::tempDirectory();
    std::string copy = joinPath(folder, kUpdaterName);
    // Programs of the family that start at the same moment would remove each other's copies.
    const platform::FolderLock turn(folder);
    ErrorSlot ignored;
    static_cast<void>(platform::removeItem(copy, ignored));
    static_cast<void>(platform::copyItem(
        platform::resolveFinalLink(updater).value().value_or(updater), copy, ignored));
    const bool isForeign = platform::nodeExists(copy) && !platform::isOwnItem(copy);
    return isForeign ? std::nullopt : std::optional(std::move(copy));
}

void tellOfMissingPath() {
    QMLog::appendLogAndPrint("Unable to launch Software Update - path doesn't exist");
}

}  // namespace

void QMSoftwareUpdate::awakeFromNib() {
    startup();
}

void QMSoftwareUpdate::manualUpdateCheck() {
    if (!launchSoftwareUpdate()) {
        QMAlert::alertSheetWithMessageText(
            "No updater is installed",
            "Vornic is updated in the way in which it was installed, by the system's package "
            "manager for instance.",
            nullptr);
    }
}

void QMSoftwareUpdate::startup() {
    if (isGlobalSwitchOff("SUCheckAtStartup")) {
        return;
    }
    try {
        platform::detachNewThread([] {
            if (!platform::MainThread::isShutDown()) {
                automaticallyCheckForUpdates();
            }
        });
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, "+[QMSoftwareUpdate startup]");
    }
}

void QMSoftwareUpdate::automaticallyCheckForUpdates() {
    const std::optional<std::string> path = updaterPath();
    if (!path) {
        tellOfMissingPath();
        return;
    }
    const platform::Bundle updater(*path);
    if (!updater.exists()) {
        QMLog::appendLogAndPrint("Unable to launch Software Update - updater bundle not found.");
        return;
    }
    const std::optional<std::string> executable = updater.executablePath();
    if (!executable) {
        QMLog::appendLogAndPrint(
            "Unable to launch Software Update - executable path doesn't exist");
        return;
    }
    QMTaskEx::runTaskAndReturn(*executable, {"-checkpath", platform::Bundle::mainBundle().path()});
}

bool QMSoftwareUpdate::launchSoftwareUpdate() {
    const std::optional<std::string> path = updaterPath();
    if (!path) {
        tellOfMissingPath();
        return false;
    }
    ErrorSlot ignored;
    platform::WorkspaceOpener::shared()->openApplication(*path, ignored);
    return true;
}

std::optional<std::string> QMSoftwareUpdate::updaterPath() {
    if (std::optional<std::string> installed = installedUpdater()) {
        return installed;
    }
    const std::optional<std::string> own = ownUpdater();
    std::optional<std::string> copy = own ? copyToTemporaryFolder(*own) : std::nullopt;
    if (!copy) {
        QMLog::appendLogAndPrint("Error: unable to find software updater");
    }
    return copy;
}

}  // namespace vornic
