#include <cerrno>
#include <chrono>
#include <thread>
#include <tuple>

#include "base/PathText.h"
#include "base/Text.h"
#include "foundation/files/QMFileManager.h"
#include "foundation/log/QMException.h"
#include "foundation/log/QMLog.h"
#include "foundation/places/QMLocalPaths.h"
#include "foundation/rights/QMAuthorization.h"
#include "foundation/rights/SystemPathGuard.h"
#include "platform/files/AtomicFile.h"
#include "platform/files/FileSystem.h"
#include "platform/processes/Console.h"
#include "platform/session/Workspace.h"
#include "platform/threads/MainThread.h"

namespace vornic {
namespace {

QMAuthorization& authorization() {
    return QMAuthorization::sharedController();
}

bool isAllowed(const std::string& path, std::string_view verb, ErrorSlot& error) {
    if (!isGuardedSystemPath(path)) {
        return true;
    }
    error = Error{.domain = std::string(kPosixErrorDomain),
                  .code = EPERM,
                  .description = "The file " + path + " cannot be " + std::string(verb) +
                                 ": it belongs to the system."};
    return false;
}

bool removeOrdinarily(const std::string& path, ErrorSlot& error) {
    // With a slash at its end a link would mean its target.
    return isAllowed(path, "removed", error) &&
           platform::removeItem(withoutTrailingSlashes(path), error);
}

bool moveOrdinarily(const std::string& source, const std::string& destination, ErrorSlot& error) {
    return isAllowed(source, "moved", error) &&
           platform::moveFile(withoutTrailingSlashes(source), destination, error);
}

/// Lets the interface live, or other threads work, for a moment.
void waitOneRound(const char* method) {
    constexpr std::chrono::milliseconds kLongestEventWait(10);
    constexpr std::chrono::milliseconds kSleep(300);
    if (!platform::MainThread::isCurrent()) {
        std::this_thread::sleep_for(kSleep);
        return;
    }
    try {
        platform::MainThread::dispatchOne(kLongestEventWait);
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, method);
    }
}

/// Waits until something exists at the path, or nothing any more.
/// @param method the signature of the operation that waits
/// @return whether it is so
bool waitUntilExists(const std::string& path, bool expected, std::chrono::seconds timeout,
                     const char* method) {
    const auto start = std::chrono::steady_clock::now();
    // A timeout may be longer than the clock's own unit can tell.
    const std::chrono::duration<double> limit(timeout);
    while (QMFileManager::fileExistsAtPath(path) != expected) {
        waitOneRound(method);
        if (std::chrono::steady_clock::now() - start > limit ||
            platform::MainThread::isShutDown()) {
            return QMFileManager::fileExistsAtPath(path) == expected;
        }
    }
    return true;
}

bool differsInCaseAtMost(const std::string& source, const std::string& destination) {
    return lowercasedLetters(source) == lowercasedLetters(destination);
}

/// By way of a name that is free, since a volume may take both names for one.
bool moveThroughFreeName(const std::string& source, const std::string& destination) {
    ErrorSlot error;
    const std::string between = QMFileManager::uniqueFilename(destination);
    if (!moveOrdinarily(source, between, error)) {
        return false;
    }
    if (between == destination || platform::moveFile(between, destination, error)) {
        return true;
    }
    // Another file has that name.
    std::ignore = platform::moveFile(between, source, error);
    return false;
}

void unlockDestination(const std::string& source, const std::string& destination) {
    if (QMFileManager::fileExistsAtPath(destination) && !isGuardedSystemPath(destination)) {
        QMFileManager::unlockFile(destination);
    }
    const std::string below = joinPath(destination, lastComponent(source));
    if (!isGuardedSystemPath(below)) {
        QMFileManager::unlockFolder(below);
    }
}

}  // namespace

bool QMFileManager::trashFile(const std::string& path) {
    return trashFile(path, true);
}

bool QMFileManager::trashFile(const std::string& path, bool shouldAuth) {
    const bool guarded = isGuardedSystemPath(path);
    if (!guarded) {
        unlockFile(path);
    }
    if (!fileExistsAtPath(path)) {
        return true;
    }
    ErrorSlot error;
    if (!guarded &&
        platform::recycle(parentFolder(path), QMLocalPaths::trashDirectory().value_or(""),
                          {lastComponent(path)}, error)) {
        return true;
    }
    return shouldAuth && authorization().authTrashFile(path);
}

bool QMFileManager::trashFile(const std::string& path, std::chrono::seconds timeout) {
    return trashFile(path) &&
           waitUntilExists(path, false, timeout, "+[QMFileManager trashFile:timeout:]");
}

bool QMFileManager::removeFile(const std::string& path) {
    return removeFile(path, true);
}

bool QMFileManager::removeFile(const std::string& path, bool shouldAuth) {
    if (!isGuardedSystemPath(path)) {
        unlockFile(path);
    }
    ErrorSlot error;
    if (!fileExistsAtPath(path) || removeOrdinarily(path, error)) {
        return true;
    }
    QMLog::appendLog("Error removing file: %@. Authorizing...", error->localizedDescription());
    return shouldAuth && authorization().authRemoveFile(path);
}

bool QMFileManager::removeFile(const std::string& path, std::chrono::seconds timeout) {
    return removeFile(path) &&
           waitUntilExists(path, false, timeout, "+[QMFileManager removeFile:timeout:]");
}

bool QMFileManager::createDirectory(const std::string& path) {
    return createDirectory(path, true);
}

bool QMFileManager::createDirectory(const std::string& path, bool shouldAuth) {
    if (!isDriveMountedForPath(path)) {
        platform::consoleLog("Unable to create directory. Drive is not mounted.");
        return false;
    }
    ErrorSlot error;
    if (platform::createDirectory(path, error)) {
        return true;
    }
    QMLog::appendLog("Error creating folder: %@. Authorizing...", error->localizedDescription());
    return shouldAuth && authorization().authCreateDir(path);
}

bool QMFileManager::createDirectory(const std::string& path, std::chrono::seconds timeout) {
    return createDirectory(path) &&
           waitUntilExists(path, true, timeout, "+[QMFileManager createDirectory:timeout:]");
}

bool QMFileManager::createEmptyFile(const std::string& path) {
    const std::string temporary = QMLocalPaths::tempFile();
    ErrorSlot error;
    if (!platform::writeFileAtomically(temporary, "", platform::Durability::buffered, error)) {
        return false;
    }
    if (moveFile(temporary, path)) {
        return true;
    }
    std::ignore = platform::removeFile(temporary, error);
    return false;
}

bool QMFileManager::copyFile(const Path& source, const Path& toPath) {
    return copyFile(source, toPath, true);
}

bool QMFileManager::copyFile(const Path& source, const Path& toPath, bool shouldAuth) {
    if (!source) {
        QMLog::appendLogAndPrint("Error copying file: source path is nil");
        return false;
    }
    if (!toPath) {
        QMLog::appendLogAndPrint("Error copying file %@: destination path is nil", *source);
        return false;
    }
    unlockFile(parentFolder(*toPath));
    ErrorSlot error;
    if (platform::copyItem(*source, *toPath, error)) {
        return true;
    }
    QMLog::appendLog("Error copying file: %@. Authorizing...", error->localizedDescription());
    return shouldAuth && authorization().authCopyFile(source, toPath);
}

bool QMFileManager::copyFile(const Path& source, const Path& toPath, std::chrono::seconds timeout) {
    return copyFile(source, toPath) &&
           waitUntilExists(*toPath, true, timeout, "+[QMFileManager copyFile:toPath:timeout:]");
}

bool QMFileManager::moveFile(const std::string& source, const std::string& toPath) {
    return moveFile(source, toPath, true);
}

bool QMFileManager::moveFile(const std::string& source, const std::string& toPath,
                             bool shouldAuth) {
    unlockDestination(source, toPath);
    if (differsInCaseAtMost(source, toPath) && moveThroughFreeName(source, toPath)) {
        return true;
    }
    ErrorSlot error;
    if (moveOrdinarily(source, toPath, error)) {
        return true;
    }
    QMLog::appendLog("Error moving file from %@ to %@: %@.", source, toPath,
                     error->localizedDescription());
    if (!shouldAuth) {
        return false;
    }
    QMLog::appendLog("Authorizing...");
    return authorization().authMoveFile(source, toPath);
}

bool QMFileManager::moveFile(const std::string& source, const std::string& toPath,
                             std::chrono::seconds timeout) {
    if (!moveFile(source, toPath)) {
        return false;
    }
    if (differsInCaseAtMost(source, toPath)) {
        // A volume that takes both names for one still has the source.
        std::this_thread::sleep_for(std::chrono::microseconds(500));
        return true;
    }
    return waitUntilExists(source, false, timeout, "+[QMFileManager moveFile:toPath:timeout:]");
}

}  // namespace vornic
