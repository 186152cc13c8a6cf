#include "foundation/files/QMFileManager.h"

#include "base/Error.h"
#include "base/FormatString.h"
#include "base/PathText.h"
#include "base/Text.h"
#include "foundation/files/FolderEntries.h"
#include "foundation/log/QMLog.h"
#include "platform/files/FileSystem.h"
#include "platform/items/FileDates.h"
#include "platform/items/ImmutableFlag.h"
#include "platform/items/ItemStatus.h"
#include "platform/session/Workspace.h"

namespace vornic {
namespace {

bool setLocked(const std::string& path, bool locked) {
    ErrorSlot error;
    if (platform::setImmutable(path, locked, error)) {
        return true;
    }
    // Locking shares the words of unlocking.
    QMLog::fastAppendLog("Unable to unlock file %@: %@", path, error->localizedDescription());
    return false;
}

void setContentsLocked(const std::string& folder, bool locked) {
    for (const std::string& name : folderEntries(folder)) {
        const std::string path = joinPath(folder, name);
        const auto status = platform::itemStatus(path);
        if (status && status->isFolder) {
            setContentsLocked(path, locked);
        } else {
            setLocked(path, locked);
        }
    }
}

std::string without(std::string_view text, std::string_view deleted) {
    return replacingOccurrences(text, deleted, "");
}

}  // namespace

bool QMFileManager::fileExistsAtPath(const std::string& path) {
    return platform::fileExists(path);
}

bool QMFileManager::isDirectoryAtPath(const std::string& path) {
    return platform::isDirectory(path);
}

bool QMFileManager::isPackageAtPath(const std::string& path) {
    return platform::isFilePackage(path);
}

bool QMFileManager::isSymbolicLinkAtPath(const std::string& path) {
    const auto status = platform::itemStatus(path);
    return status && status->isLink;
}

std::optional<QMFileManager::Date> QMFileManager::modificationDateForFile(const std::string& path) {
    return platform::modificationDate(path);
}

std::optional<QMFileManager::Date> QMFileManager::creationDateForFile(const std::string& path) {
    const auto status = platform::itemStatus(path);
    const auto chosen =
        status && !status->isLink ? platform::chosenCreationDate(path) : std::nullopt;
    return chosen || !status ? chosen : status->created;
}

bool QMFileManager::isFileLocked(const std::string& path) {
    return platform::isImmutable(path);
}

bool QMFileManager::lockFile(const std::string& path) {
    return setLocked(path, true);
}

bool QMFileManager::unlockFile(const std::string& path) {
    return setLocked(path, false);
}

void QMFileManager::lockFolder(const std::string& path) {
    setContentsLocked(path, true);
}

void QMFileManager::unlockFolder(const std::string& path) {
    setContentsLocked(path, false);
}

bool QMFileManager::setPosixPermissions(unsigned long permissions, const std::string& forFile) {
    ErrorSlot error;
    if (platform::setPermissions(forFile, permissions, error)) {
        return true;
    }
    QMLog::appendLog("Error setting permissions for file %@: %@", forFile,
                     error->localizedDescription());
    return false;
}

void QMFileManager::disableFileSystemCachingForFile(const std::string& /*path*/) {}

std::uint64_t QMFileManager::fileSize(const std::string& path) {
    const auto status = platform::itemStatus(path);
    if (!status || !status->isFolder) {
        return status ? status->size : 0;
    }
    std::uint64_t size = 0;
    for (const std::string& name : folderEntries(path)) {
        size += fileSize(joinPath(path, name));
    }
    return size;
}

std::string QMFileManager::formatFileSize(double size) {
    constexpr double kStep = 1024;
    constexpr double kOneStepDown = 0.0009765625;
    if (size < kStep) {
        return formatString("%0.0f B", size);
    }
    double shown = size * kOneStepDown;
    for (const char* format : {"%0.2f KB", "%0.2f MB", "%0.2f GB"}) {
        if (shown < kStep) {
            return formatString(format, shown);
        }
        shown *= kOneStepDown;
    }
    return formatString("%0.2f TB", shown);
}

std::string QMFileManager::validateFilename(std::string_view name) {
    return validateFilename(name, true);
}

std::string QMFileManager::validateFilename(std::string_view name, bool includeSlashes) {
    if (name == ".") {
        return "";
    }
    if (name.starts_with('.')) {
        name.remove_prefix(1);
    }
    const std::string text(trimmed(name));
    return without(includeSlashes ? without(text, "/") : text, ":");
}

std::string QMFileManager::uniqueFilename(const std::string& path) {
    const std::string extension = pathExtension(path);
    std::string candidate = path;
    for (std::int64_t number = 2; fileExistsAtPath(candidate); ++number) {
        candidate = withoutExtension(path) + formatString(" %li", number) +
                    (extension.empty() ? "" : "." + extension);
    }
    return candidate;
}

}  // namespace vornic
