#include "platform/settings/Directories.h"

#include <cerrno>
#include <cstdlib>
#include <map>
#include <mutex>
#include <sstream>
#include <string_view>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/PathText.h"
#include "platform/files/FileSystem.h"
#include "platform/processes/ShellAssignments.h"
#include "platform/settings/OwnFolder.h"

namespace vornic::platform {
namespace {

using Folder = std::optional<std::string>;

constexpr std::string_view kLocalLibrary = "/var/lib/quillmark";
constexpr std::string_view kSystemLibrary = "/usr/lib/quillmark";
constexpr std::string_view kApplicationSupport = "Application Support";

/// The folder that a variable names; nothing unless it is absolute.
Folder folderVariable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && value[0] == '/' ? Folder(withoutTrailingSlashes(value))
                                               : std::nullopt;
}

struct UserEntry {
    std::string name;
    std::string home;
};

/// The entry of the real user id in the user database.
std::optional<UserEntry> userEntry() {
    constexpr std::size_t kFirstSize = 4096;
    constexpr std::size_t kLargestSize = std::size_t{1} << 20U;
    struct passwd entry {};
    struct passwd* found = nullptr;
    std::string buffer(kFirstSize, '\0');
    int result = ERANGE;
    while ((result = getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found)) != 0) {
        if (result != EINTR && (result != ERANGE || buffer.size() >= kLargestSize)) {
            return std::nullopt;
        }
        buffer.resize(result == ERANGE ? buffer.size() * 2 : buffer.size());
    }
    if (found == nullptr) {
        return std::nullopt;
    }
    return UserEntry{.name = found->pw_name != nullptr ? found->pw_name : "",
                     .home = found->pw_dir != nullptr ? found->pw_dir : ""};
}

Folder below(const Folder& folder, std::string_view name) {
    return folder ? Folder(joinPath(*folder, name)) : std::nullopt;
}

Folder home() {
    std::string folder = homeDirectory();
    return folder.empty() ? std::nullopt : Folder(std::move(folder));
}

/// A folder of the XDG base directories: its variable, else a place in the home folder.
Folder baseFolder(const char* variable, std::string_view placeAtHome) {
    Folder folder = folderVariable(variable);
    return folder ? folder : below(home(), placeAtHome);
}

Folder userLibrary() {
    return below(userDataDirectory(), "quillmark");
}

/// A folder that the user chose in user-dirs.dirs, else its usual place in the home folder.
Folder chosenFolder(const std::string& key, std::string_view usualName) {
    const Folder configuration = below(baseFolder("XDG_CONFIG_HOME", ".config"), "user-dirs.dirs");
    ErrorSlot ignored;
    const std::optional<std::string> text =
        configuration ? readFile(*configuration, ignored) : std::nullopt;
    if (text) {
        const auto assignments = parseShellAssignments(*text, homeDirectory());
        const auto found = assignments.find(key);
        if (found != assignments.end() && found->second.starts_with('/')) {
            return withoutTrailingSlashes(found->second);
        }
    }
    return below(home(), usualName);
}

Folder userFolder(SearchPathDirectory directory) {
    switch (directory) {
        case SearchPathDirectory::application:
            return below(home(), "Applications");
        case SearchPathDirectory::adminApplication:
            return below(home(), "Applications/Utilities");
        case SearchPathDirectory::document:
            return chosenFolder("XDG_DOCUMENTS_DIR", "Documents");
        case SearchPathDirectory::library:
            return userLibrary();
        case SearchPathDirectory::caches:
            return userCacheDirectory();
        case SearchPathDirectory::applicationSupport:
            return below(userLibrary(), kApplicationSupport);
        case SearchPathDirectory::movies:
            return chosenFolder("XDG_VIDEOS_DIR", "Videos");
        case SearchPathDirectory::desktop:
            return chosenFolder("XDG_DESKTOP_DIR", "Desktop");
        case SearchPathDirectory::documentation:
            return below(userLibrary(), "Documentation");
    }
    return std::nullopt;
}

Folder localFolder(SearchPathDirectory directory) {
    switch (directory) {
        case SearchPathDirectory::application:
            return "/opt";
        case SearchPathDirectory::adminApplication:
            return "/opt/Utilities";
        case SearchPathDirectory::document:
            return joinPath(kLocalLibrary, "Documents");
        case SearchPathDirectory::library:
            return std::string(kLocalLibrary);
        case SearchPathDirectory::caches:
            return "/var/cache";
        case SearchPathDirectory::applicationSupport:
            return joinPath(kLocalLibrary, kApplicationSupport);
        case SearchPathDirectory::documentation:
            return joinPath(kLocalLibrary, "Documentation");
        case SearchPathDirectory::movies:
        case SearchPathDirectory::desktop:
            return std::nullopt;
    }
    return std::nullopt;
}

Folder systemFolder(SearchPathDirectory directory) {
    switch (directory) {
        case SearchPathDirectory::library:
            return std::string(kSystemLibrary);
        case SearchPathDirectory::applicationSupport:
            return joinPath(kSystemLibrary, kApplicationSupport);
        case SearchPathDirectory::documentation:
            return joinPath(kSystemLibrary, "Documentation");
        default:
            return std::nullopt;
    }
}

/// A folder below /tmp for this user and, where its name is taken, for this process.
std::string sharedTemporaryFolder() {
    std::string usual = "/tmp/quillmark-" + std::to_string(geteuid());
    if (mkdir(usual.c_str(), 0700) == 0 || isPrivateFolder(usual)) {
        return usual;
    }
    static std::mutex mutex;
    static std::string fresh;
    const std::lock_guard lock(mutex);
    if (fresh.empty() || !isPrivateFolder(fresh)) {
        std::string pattern = usual + "-XXXXXX";
        fresh = mkdtemp(pattern.data()) != nullptr ? pattern : "/tmp";
    }
    return fresh;
}

}  // namespace

std::vector<std::string> searchPathForDirectories(SearchPathDirectory directory,
                                                  SearchPathDomain domain) {
    Folder folder;
    switch (domain) {
        case SearchPathDomain::user:
            folder = userFolder(directory);
            break;
        case SearchPathDomain::local:
            folder = localFolder(directory);
            break;
        case SearchPathDomain::system:
            folder = systemFolder(directory);
            break;
    }
    return folder ? std::vector<std::string>{std::move(*folder)} : std::vector<std::string>{};
}

std::string homeDirectory() {
    if (const Folder named = folderVariable("HOME")) {
        return *named;
    }
    const std::optional<UserEntry> entry = userEntry();
    return entry && entry->home.starts_with('/') ? withoutTrailingSlashes(entry->home) : "";
}

std::string userName() {
    const std::optional<UserEntry> entry = userEntry();
    return entry && !entry->name.empty() ? entry->name : std::to_string(getuid());
}

std::string temporaryDirectory() {
    if (const Folder named = folderVariable("TMPDIR")) {
        return *named;
    }
    const Folder runtime = folderVariable("XDG_RUNTIME_DIR");
    // With changed rights the variable may still name another user's folder.
    return runtime && isPrivateFolder(*runtime) ? *runtime : sharedTemporaryFolder();
}

std::optional<std::string> userCacheDirectory() {
    return baseFolder("XDG_CACHE_HOME", ".cache");
}

std::optional<std::string> userDataDirectory() {
    return baseFolder("XDG_DATA_HOME", ".local/share");
}

std::vector<std::string> sharedDataDirectories() {
    std::vector<std::string> folders;
    if (const Folder own = userDataDirectory()) {
        folders.push_back(*own);
    }
    const char* value = std::getenv("XDG_DATA_DIRS");
    const bool isSet = value != nullptr && value[0] != '\0';
    std::istringstream list(isSet ? value : "/usr/local/share:/usr/share");
    for (std::string folder; std::getline(list, folder, ':');) {
        if (folder.starts_with('/')) {
            folders.push_back(withoutTrailingSlashes(folder));
        }
    }
    return folders;
}

unsigned realUserId() {
    return getuid();
}

std::string expandingTildeInPath(std::string_view path) {
    if (path != "~" && !path.starts_with("~/")) {
        return std::string(path);
    }
    const std::string home = homeDirectory();
    return home.empty() ? std::string(path) : joinPath(home, path.substr(1));
}

}  // namespace vornic::platform
