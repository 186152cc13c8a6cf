#include "foundation/places/QMLocalPaths.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <vector>

#include "base/PathText.h"
#include "base/Text.h"
#include "base/Utf8.h"
#include "platform/processes/ProcessInfo.h"
#include "platform/settings/Directories.h"

namespace vornic {

namespace {

using Path = QMLocalPaths::Path;
using Directory = QMLocalPaths::Directory;
using Domain = QMLocalPaths::Domain;

Path userOrLocal(Directory directory, bool userDomain) {
    return QMLocalPaths::pathForDirectory(directory, userDomain ? Domain::user : Domain::local);
}

Path below(const Path& folder, std::string_view component) {
    return folder ? Path(joinPath(*folder, component)) : Path();
}

/// Moves a folder of the super-user from either spelling of root's home to the home folder in use.
/// A folder elsewhere is where this platform put it, and stays.
Path correctedForSuperUser(const std::string& entry) {
    constexpr std::string_view kRootHome = "/var/root";
    constexpr std::string_view kPrivateRootHome = "/private/var/root";
    std::string_view remainder = entry;
    if (remainder.starts_with(kRootHome)) {
        remainder.remove_prefix(kRootHome.size());
    }
    if (remainder.starts_with(kPrivateRootHome)) {
        // One less than the prefix: the last letter of "root" stays in front of the rest.
        remainder.remove_prefix(kPrivateRootHome.size() - 1);
    }
    if (remainder.size() == entry.size()) {
        return entry;
    }
    return below(QMLocalPaths::userDirectory(), remainder);
}

/// The path without its last two UTF-16 units. Half of a surrogate pair cannot be left standing in
/// UTF-8; the torso of the character stands for it, which equals no folder's name either.
std::string_view withoutLastTwoUnits(std::string_view path) {
    path.remove_suffix(1);
    const std::size_t length = utf8CharacterBefore(path, path.size()).length;
    path.remove_suffix(length == 4 ? 2 : length);
    return path;
}

bool isStandardFolder(std::string_view path) {
    for (const bool userDomain : {true, false}) {
        const std::array<Path, 7> folders{
            QMLocalPaths::applicationDirectory(userDomain),
            QMLocalPaths::adminApplicationDirectory(userDomain),
            QMLocalPaths::documentDirectory(userDomain),
            QMLocalPaths::libraryDirectory(userDomain),
            QMLocalPaths::prefsDirectory(userDomain),
            QMLocalPaths::cacheDirectory(userDomain),
            QMLocalPaths::appSupportDirectory(userDomain),
        };
        if (std::find(folders.begin(), folders.end(), path) != folders.end()) {
            return true;
        }
    }
    return path == QMLocalPaths::desktopDirectory() || path == QMLocalPaths::userDirectory() ||
           path == QMLocalPaths::systemLibraryDirectory() ||
           path == QMLocalPaths::localDocumentationDirectory();
}

bool isFixedSystemFolder(std::string_view path) {
    constexpr std::array<std::string_view, 6> kFolders{"/Users/Shared", "/usr",  "/var",
                                                       "/bin",          "/sbin", "/System"};
    return std::find(kFolders.begin(), kFolders.end(), path) != kFolders.end();
}

bool isInsideSystemTree(std::string_view path) {
    constexpr std::array<std::string_view, 5> kTrees{"/var/", "/bin/", "/sbin/", "/private/var/",
                                                     "/System/"};
    if (path.starts_with("/usr/")) {
        return !path.starts_with("/usr/local/");
    }
    return std::any_of(kTrees.begin(), kTrees.end(),
                       [path](std::string_view tree) { return path.starts_with(tree); });
}

}  // namespace

Path QMLocalPaths::pathForDirectory(Directory directory, Domain forUserDomain) {
    const std::vector<std::string> folders =
        platform::searchPathForDirectories(directory, forUserDomain);
    if (folders.empty()) {
        return std::nullopt;
    }
    const std::string first = platform::expandingTildeInPath(folders.front());
    if (forUserDomain == Domain::user && platform::realUserId() == 0) {
        return correctedForSuperUser(first);
    }
    return first;
}

Path QMLocalPaths::applicationDirectory(bool userDomain) {
    return userOrLocal(Directory::application, userDomain);
}

Path QMLocalPaths::adminApplicationDirectory(bool userDomain) {
    return userOrLocal(Directory::adminApplication, userDomain);
}

Path QMLocalPaths::documentDirectory(bool userDomain) {
    return userOrLocal(Directory::document, userDomain);
}

Path QMLocalPaths::libraryDirectory(bool userDomain) {
    return userOrLocal(Directory::library, userDomain);
}

Path QMLocalPaths::prefsDirectory(bool userDomain) {
    return below(libraryDirectory(userDomain), "Preferences");
}

Path QMLocalPaths::cacheDirectory(bool userDomain) {
    return userOrLocal(Directory::caches, userDomain);
}

Path QMLocalPaths::appSupportDirectory(bool userDomain) {
    return userOrLocal(Directory::applicationSupport, userDomain);
}

Path QMLocalPaths::logDirectory(bool userDomain) {
    return below(libraryDirectory(userDomain), "Logs");
}

Path QMLocalPaths::movieDirectory() {
    return pathForDirectory(Directory::movies, Domain::user);
}

Path QMLocalPaths::desktopDirectory() {
    return pathForDirectory(Directory::desktop, Domain::user);
}

Path QMLocalPaths::systemLibraryDirectory() {
    return pathForDirectory(Directory::library, Domain::system);
}

Path QMLocalPaths::localDocumentationDirectory() {
    return pathForDirectory(Directory::documentation, Domain::local);
}

Path QMLocalPaths::userDirectory() {
    std::string home = platform::homeDirectory();
    return home.empty() ? Path() : Path(std::move(home));
}

std::string QMLocalPaths::username() {
    return platform::userName();
}

Path QMLocalPaths::trashDirectory() {
    return below(userDirectory(), ".Trash");
}

std::string QMLocalPaths::tempDirectory() {
    return platform::temporaryDirectory();
}

Path QMLocalPaths::darwinCacheDirectory() {
    return platform::userCacheDirectory();
}

std::string QMLocalPaths::tempFile() {
    constexpr std::size_t kRandomCharacters = 8;
    return joinPath(tempDirectory(), uuid() + randomString(kRandomCharacters));
}

std::string QMLocalPaths::uuid() {
    return platform::globallyUniqueString();
}

std::string QMLocalPaths::randomString(std::size_t length) {
    constexpr std::string_view kAlphabet = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::srand(static_cast<unsigned>(std::time(nullptr)) * static_cast<unsigned>(std::clock()));
    std::string result(length, '\0');
    for (char& character : result) {
        character = kAlphabet[static_cast<std::size_t>(std::rand()) % kAlphabet.size()];
    }
    return result;
}

std::string QMLocalPaths::ensureTrailingSlash(std::string_view path) {
    std::string result(path);
    if (!result.empty() && result.back() != '/') {
        result += '/';
    }
    return result;
}

std::string QMLocalPaths::stripTrailingSlash(std::string_view path) {
    if (path.size() >= 2 && path.ends_with('/')) {
        path.remove_suffix(1);
    }
    return std::string(path);
}

bool QMLocalPaths::isPathSystemDirectory(std::optional<std::string_view> path) {
    return isPathSystemDirectory(path, false);
}

bool QMLocalPaths::isPathSystemDirectory(std::optional<std::string_view> path, bool exactMatch) {
    constexpr std::size_t kShortestFolder = 3;
    if (path == "/") {
        return true;
    }
    if (!path || utf16Length(*path) < kShortestFolder) {
        return false;
    }
    // The character before the slash goes with it: "/usr/" is looked at as "/us".
    const std::string_view compared = path->ends_with('/') ? withoutLastTwoUnits(*path) : *path;
    if (isStandardFolder(compared) || isFixedSystemFolder(compared)) {
        return true;
    }
    return !exactMatch && isInsideSystemTree(compared);
}

bool QMLocalPaths::isPathOnTimeMachineVolume(std::optional<std::string_view> path) {
    if (!path || !path->starts_with("/Volumes/")) {
        return false;
    }
    return (std::string(*path) + "/").find("/Backups.backupdb/") != std::string::npos;
}

}  // namespace vornic
