#include <algorithm>
#include <functional>

#include "base/FormatString.h"
#include "base/PathText.h"
#include "base/Text.h"
#include "foundation/files/FolderEntries.h"
#include "foundation/files/QMFileManager.h"
#include "foundation/log/QMLog.h"
#include "foundation/rights/SystemPathGuard.h"
#include "platform/files/FileSystem.h"
#include "platform/items/ItemStatus.h"
#include "platform/processes/Console.h"

namespace vornic {
namespace {

using Paths = QMFileManager::Paths;

bool isFolderItself(const std::string& path) {
    const auto status = platform::itemStatus(path);
    return status && status->isFolder;
}

/// Trashes the files below a folder whose names are meant.
void trashFiles(const std::string& folder, const std::function<bool(const std::string&)>& isMeant,
                Paths& trashed) {
    for (const std::string& name : folderEntries(folder)) {
        const std::string path = joinPath(folder, name);
        if (isFolderItself(path)) {
            trashFiles(path, isMeant, trashed);
        } else if (isMeant(name) && !QMFileManager::isDirectoryAtPath(path)) {
            QMFileManager::trashFile(path);
            trashed.push_back(path);
        }
    }
}

bool isFinderFile(const std::string& name) {
    return name == ".DS_Store" || name == "Icon\r";
}

}  // namespace

bool QMFileManager::trashDirectoryContents(const std::string& path) {
    return trashDirectoryContents(path, true);
}

bool QMFileManager::trashDirectoryContents(const std::string& path, bool shouldAuth) {
    if (isGuardedSystemPath(path)) {
        platform::consoleLog(formatString(
            "Unable to trash folder contents of path %@ because it is a system directory.", path));
        return false;
    }
    bool succeeded = true;
    for (const std::string& name : folderEntries(path)) {
        succeeded = trashFile(joinPath(path, name), shouldAuth) && succeeded;
    }
    return succeeded;
}

Paths QMFileManager::trashFilesOfType(const std::string& type, const std::string& inFolder) {
    const std::string extension = lowercasedLetters(type);
    Paths trashed;
    trashFiles(
        inFolder,
        [&extension](const std::string& name) {
            return lowercasedLetters(pathExtension(name)) == extension;
        },
        trashed);
    return trashed;
}

Paths QMFileManager::trashFilesNamed(const std::string& name, const std::string& inFolder) {
    Paths trashed;
    trashFiles(
        inFolder, [&name](const std::string& entry) { return entry == name; }, trashed);
    return trashed;
}

bool QMFileManager::isFolderEmpty(const std::string& path) {
    if (fileExistsAtPath(path) && !isDirectoryAtPath(path)) {
        return false;
    }
    const Paths names = folderEntries(path);
    return std::all_of(names.begin(), names.end(), [&path](const std::string& name) {
        const std::string entry = joinPath(path, name);
        return isFinderFile(name) || (isFolderItself(entry) && isFolderEmpty(entry));
    });
}

bool QMFileManager::removeFolderIfEmpty(const std::string& path) {
    return isFolderEmpty(path) && removeFile(path);
}

std::string QMFileManager::createDirectoryStructure(const std::string& path,
                                                    const std::string& destination) {
    std::string below = withoutTrailingSlashes(path);
    if (!isDirectoryAtPath(path) || isPackageAtPath(path)) {
        below.resize(below.size() - lastComponent(below).size());
    }
    std::string target = joinPath(destination, below);
    if (!fileExistsAtPath(target)) {
        createDirectory(target);
    }
    return target;
}

bool QMFileManager::copyContentsOfDirectory(const std::string& source, const std::string& toPath,
                                            std::chrono::seconds timeout) {
    ErrorSlot unreadable;
    const auto names = platform::namesInFolder(source, unreadable);
    return names && std::all_of(names->begin(), names->end(), [&](const std::string& name) {
               QMLog::fastAppendLog("File: %@", name);
               return copyFile(joinPath(source, name), joinPath(toPath, name), timeout);
           });
}

}  // namespace vornic
