#include "foundation/rights/QMAuthorization.h"

#include <cerrno>
#include <chrono>
#include <mutex>
#include <thread>
#include <utility>

#include "base/FormatString.h"
#include "base/PathText.h"
#include "foundation/files/FolderEntries.h"
#include "foundation/log/LocalTimeStamp.h"
#include "foundation/log/QMLog.h"
#include "foundation/places/QMLocalPaths.h"
#include "foundation/rights/SystemPathGuard.h"
#include "platform/files/FileSystem.h"
#include "platform/items/ItemStatus.h"
#include "platform/processes/Console.h"
#include "platform/processes/SystemTool.h"
#include "platform/rights/AuthorizationProtocol.h"
#include "platform/rights/HeldPath.h"
#include "platform/rights/ProtectedPaths.h"
#include "platform/volumes/Trash.h"

namespace vornic {

namespace {

using Path = QMAuthorization::Path;
using platform::absolutePath;

constexpr const char* kRemoveTool = "/bin/rm";
constexpr const char* kMoveTool = "/bin/mv";
constexpr const char* kCopyTool = "/bin/cp";
constexpr const char* kCreateFolderTool = "/bin/mkdir";

constexpr platform::AuthorizationFlags kWithoutAsking =
    platform::kAuthorizationFlagExtendRights | platform::kAuthorizationFlagPreAuthorize;
constexpr platform::AuthorizationFlags kAsking =
    kWithoutAsking | platform::kAuthorizationFlagInteractionAllowed;

template <typename... Arguments>
void logToConsole(std::string_view format, const Arguments&... arguments) {
    platform::consoleLog(formatString(format, arguments...));
}

/// @param format the refusal, with the path as its argument
bool isRefused(const std::string& path, std::string_view format) {
    if (!isGuardedSystemPath(path)) {
        return false;
    }
    logToConsole(format, path);
    return true;
}

/// The platform's own guard, which every road passes.
bool isProtectedPlace(const std::string& folder) {
    return !platform::isDirectory(folder) && platform::makingLeadsToProtectedPath(folder);
}

/// Whether a tool that writes would replace what the platform protects.
bool replacesProtected(const std::string& source, const std::string& destination) {
    return platform::writingLeadsToProtectedPath(source, destination);
}

struct SharedController {
    std::mutex mutex;
    std::shared_ptr<QMAuthorization> controller;
};

/// Never destroyed: the rights last until the process ends.
SharedController& shared() {
    static SharedController* const instance = new SharedController;  // NOLINT
    return *instance;
}

}  // namespace

QMAuthorization& QMAuthorization::sharedController() {
    return sharedController(true);
}

QMAuthorization& QMAuthorization::sharedController(bool withGUI) {
    SharedController& own = shared();
    const std::lock_guard lock(own.mutex);
    if (!own.controller) {
        own.controller = std::make_shared<QMAuthorization>(withGUI);
    }
    return *own.controller;
}

void QMAuthorization::setSharedController(std::shared_ptr<QMAuthorization> controller) {
    SharedController& own = shared();
    const std::lock_guard lock(own.mutex);
    own.controller.swap(controller);
}

QMAuthorization::QMAuthorization(bool hasGUI, std::shared_ptr<AuthorizationHost> host)
    : host_(std::move(host)), hasGUI_(hasGUI) {
    platform::AuthorizationRef inherited;
    if (host_->services().copyPrivilegedReference(
            inherited, platform::kAuthorizationFlagDefaults) == platform::kAuthorizationSuccess) {
        authRef_ = std::move(inherited);
    }
    if (!host_->isSuperUser()) {
        userDirectory_ = QMLocalPaths::userDirectory().value_or("");
    }
}

QMAuthorization::~QMAuthorization() {
    authEnd();
}

bool QMAuthorization::authStart() {
    const std::lock_guard lock(mutex_);
    if (isAuthorized()) {
        return true;
    }
    if (!hasGUI_) {
        logToConsole("Unable to authorize");
        return false;
    }
    // One whose rights have ended by themselves.
    authEnd();
    if (host_->services().create({}, platform::kAuthorizationFlagDefaults, authRef_) !=
        platform::kAuthorizationSuccess) {
        authRef_ = nullptr;
        return false;
    }
    return obtainRights({}, kAsking);
}

bool QMAuthorization::authStartWithUser(const std::optional<std::string>& user,
                                        std::optional<platform::SecretText> password) {
    const std::lock_guard lock(mutex_);
    if (host_->isSuperUser()) {
        return true;
    }
    if (!user || !password) {
        return false;
    }
    platform::AuthorizationEnvironment credentials;
    credentials.push_back({.name = std::string(platform::kAuthorizationEnvironmentUsername),
                           .value = platform::SecretText(std::string_view(*user))});
    credentials.push_back({.name = std::string(platform::kAuthorizationEnvironmentPassword),
                           .value = std::move(*password)});
    const platform::AuthorizationStatus status =
        host_->services().create(credentials, platform::kAuthorizationFlagDefaults, authRef_);
    if (status != platform::kAuthorizationSuccess) {
        logToConsole("Unable to create authRef - error %d", status);
        authRef_ = nullptr;
        return false;
    }
    if (obtainRights(credentials, kWithoutAsking)) {
        return true;
    }
    logToConsole("Authorization failed. Invalid username or password");
    QMLog::appendLog("Authorization failed. Invalid username or password");
    return false;
}

bool QMAuthorization::obtainRights(const platform::AuthorizationEnvironment& environment,
                                   platform::AuthorizationFlags flags) {
    if (host_->services().copyRights(authRef_, platform::kAdministratorRight, environment, flags) ==
        platform::kAuthorizationSuccess) {
        return true;
    }
    host_->services().free(authRef_, platform::kAuthorizationFlagDefaults);
    authRef_ = nullptr;
    return false;
}

void QMAuthorization::authEnd() {
    const std::lock_guard lock(mutex_);
    if (authRef_ && !host_->isSuperUser()) {
        host_->services().free(authRef_, platform::kAuthorizationFlagDefaults);
    }
    authRef_ = nullptr;
}

bool QMAuthorization::isAuthorized() const {
    const std::lock_guard lock(mutex_);
    return host_->isSuperUser() || (authRef_ != nullptr && host_->services().isAlive(authRef_));
}

bool QMAuthorization::canAskForRights() const {
    const std::lock_guard lock(mutex_);
    return isAuthorized() || (hasGUI_ && host_->services().canAskUser());
}

bool QMAuthorization::canAuthorize() const {
    return hasGUI_ || host_->isSuperUser();
}

bool QMAuthorization::authRemoveFile(const std::string& path) {
    const Path removed = absolutePath(path);
    const Arguments arguments{"-Rdf", removed.value_or("")};
    const Seen seen = platform::lookAtArguments(kRemoveTool, arguments);
    if (isRefused(path, "Unable to delete path %@ because it is a system directory.")) {
        return false;
    }
    return removed && execute(kRemoveTool, arguments, seen, true) == 0;
}

bool QMAuthorization::authTrashFile(const std::string& path) {
    return authTrashFile(path, false);
}

bool QMAuthorization::authTrashFile(const std::string& path, bool deleteOnRootAccount) {
    if (isRefused(path, "Unable to trash path %@ because it is a system directory.")) {
        return false;
    }
    const Path destination = trashDestination(path);
    if (deletesInstead(deleteOnRootAccount)) {
        // Required as it stands: it is the destination that goes, not the item.
        return destination && authRemoveFile(*destination);
    }
    return destination ? moveToTrash(path, *destination) : authMoveFile(path, destination);
}

bool QMAuthorization::moveToTrash(const std::string& path, const std::string& destination) {
    const std::string place = parentFolder(destination);
    const std::string name = lastComponent(destination);
    const std::optional<platform::HeldPath> item = platform::holdPath(path);
    std::optional<platform::Trash> trash;
    // A Trash in another user's home is not made by the super-user.
    if (!host_->isSuperUser() || userDirectory_.empty() || platform::nodeExists(place)) {
        ErrorSlot reason;
        trash = platform::Trash::open(place, reason);
    }
    const std::optional<platform::ItemStatus> status = platform::itemStatus(place);
    if (!trash && status && status->isLink) {
        return false;  // it leads to no Trash
    }
    // No item has that name, so that a note which has it is about none.
    if (trash && item && trash->addInfo(name, item->path()) == EEXIST) {
        static_cast<void>(trash->replaceInfo(name, item->path()));
    }
    const bool isMoved = authMoveFile(path, destination);
    if (!isMoved && trash) {
        trash->removeInfo(name);
    }
    return isMoved;
}

Path QMAuthorization::trashDestination(const std::string& path) const {
    const std::string name = lastComponent(path);
    Path destination;
    if (host_->isSuperUser() && !userDirectory_.empty()) {
        destination = userDirectory_ + formatString("/.Trash/%@", name);
    } else if (const Path trash = QMLocalPaths::trashDirectory()) {
        destination = joinPath(*trash, name);
    }
    if (!destination || !platform::fileExists(*destination)) {
        return destination;
    }
    const std::string stem = withoutExtension(*destination);
    const std::string extension = pathExtension(path);
    return freeStampedPath(
        [&] { return stem + formatString("_%@.%@", localTimeStamp(), extension); });
}

bool QMAuthorization::deletesInstead(bool deleteOnRootAccount) const {
    return deleteOnRootAccount && userDirectory_.empty() && host_->isSuperUser();
}

bool QMAuthorization::authTrashFolderContents(const std::string& folder) {
    return authTrashFolderContents(folder, false);
}

bool QMAuthorization::authTrashFolderContents(const std::string& folder, bool deleteOnRootAccount) {
    if (isRefused(folder,
                  "Unable to trash folder contents of path %@ because it is a system directory.")) {
        return false;
    }
    bool succeeded = true;
    for (const std::string& name : folderEntries(folder)) {
        const std::string path = joinPath(folder, name);
        if (!deletesInstead(deleteOnRootAccount)) {
            succeeded = authTrashFile(path) && succeeded;
            continue;
        }
        const Path removed = absolutePath(path);
        const Arguments arguments{"-R", "-f", removed.value_or("")};
        const Seen seen = platform::lookAtArguments(kRemoveTool, arguments);
        succeeded =
            removed &&
            !isRefused(path, "Unable to delete path %@ because it is a system directory.") &&
            execute(kRemoveTool, arguments, seen, true) == 0 && succeeded;
    }
    return succeeded;
}

bool QMAuthorization::authMoveFolderContents(const std::string& source, const std::string& toPath) {
    if (isRefused(source, "Unable to move contents of path %@ because it is a system directory.")) {
        return false;
    }
    bool succeeded = true;
    for (const std::string& name : folderEntries(source)) {
        succeeded = authMoveFile(joinPath(source, name), joinPath(toPath, name)) && succeeded;
    }
    return succeeded;
}

bool QMAuthorization::authMoveFile(const Path& source, const Path& toPath) {
    if (!source) {
        logToConsole("Error in authMoveFile: old path is null");
        return false;
    }
    if (!toPath) {
        logToConsole("Error in authMoveFile: new path is null");
        return false;
    }
    const Path moved = absolutePath(*source);
    const Path destination = absolutePath(*toPath);
    const Arguments arguments{"-f", moved.value_or(""), destination.value_or("")};
    const Seen seen = platform::lookAtArguments(kMoveTool, arguments);
    if (isRefused(*source, "Unable to move path %@ because it is a system directory.") ||
        !platform::fileExists(*source)) {
        return false;
    }
    return moved && destination && !replacesProtected(*moved, *destination) &&
           startDirectlyOrAuthorized(kMoveTool, arguments, seen);
}

bool QMAuthorization::authCopyFile(const Path& source, const Path& toPath) {
    if (!source) {
        logToConsole("Error in authCopyFile: old path is null");
        return false;
    }
    if (!toPath) {
        logToConsole("Error in authCopyFile: new path is null");
        return false;
    }
    if (!platform::fileExists(*source)) {
        return false;
    }
    const Path copied = absolutePath(*source);
    const Path destination = absolutePath(*toPath);
    const Arguments arguments{"-f", "-p", "-R", copied.value_or(""), destination.value_or("")};
    const Seen seen = platform::lookAtArguments(kCopyTool, arguments);
    return copied && destination && !replacesProtected(*copied, *destination) &&
           startDirectlyOrAuthorized(kCopyTool, arguments, seen);
}

bool QMAuthorization::authCreateDir(const std::string& path) {
    const Path folder = absolutePath(path);
    const Arguments arguments{"-p", folder.value_or("")};
    const Seen seen = platform::lookAtArguments(kCreateFolderTool, arguments);
    const bool isAllowed = folder && !isProtectedPlace(*folder);
    if (!isAllowed || !startDirectlyOrAuthorized(kCreateFolderTool, arguments, seen)) {
        return false;
    }
    if (!host_->isSuperUser()) {
        std::this_thread::sleep_for(std::chrono::microseconds(500));
    }
    return true;
}

bool QMAuthorization::startDirectlyOrAuthorized(const std::string& tool, const Arguments& arguments,
                                                const Seen& seen) {
    if (host_->isSuperUser()) {
        host_->runTaskAndReturn(tool, arguments);
        return true;
    }
    return execute(tool, arguments, seen, true) == 0;
}

std::int32_t QMAuthorization::authExecTask(const std::string& tool, const Arguments& parameters) {
    return authExecTask(tool, parameters, true);
}

std::int32_t QMAuthorization::authExecTask(const std::string& tool, const Arguments& parameters,
                                           bool async) {
    return execute(tool, parameters, platform::lookAtArguments(tool, parameters), async);
}

std::int32_t QMAuthorization::execute(const std::string& tool, const Arguments& parameters,
                                      const Seen& seen, bool async) {
    const std::lock_guard lock(mutex_);
    constexpr std::int32_t kToolMissing = -2;
    constexpr std::int32_t kNotAuthorized = -1;
    if (!platform::fileExists(platform::systemToolPath(tool))) {
        logToConsole("Unable to execute task: path %@ doesn't exist", tool);
        return kToolMissing;
    }
    if (host_->isSuperUser()) {
        async ? host_->runTaskAndReturn(tool, parameters) : host_->runTask(tool, parameters);
        return 0;
    }
    if (!isAuthorized() && !authStart()) {
        return kNotAuthorized;
    }
    std::unique_ptr<platform::CommunicationsPipe> pipe;
    const platform::AuthorizationStatus status = host_->services().executeWithPrivileges(
        authRef_, tool, platform::kAuthorizationFlagDefaults, parameters, seen,
        async ? nullptr : &pipe);
    if (status == platform::kAuthorizationSuccess && pipe) {
        while (!pipe->readAvailable().empty()) {
        }
    }
    return status;
}

}  // namespace vornic
