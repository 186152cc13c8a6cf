#include "platform/volumes/TrashFolders.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <tuple>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/PathText.h"
#include "platform/files/Failure.h"
#include "platform/files/FileSystem.h"
#include "platform/settings/Directories.h"

namespace vornic::platform {
namespace {

constexpr int kFolderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

bool refuse(ErrorSlot& error, const std::string& path, std::string_view reason) {
    error = Error{.domain = std::string(kPosixErrorDomain),
                  .code = EPERM,
                  .description = "The folder " + path +
                                 " cannot be used as the Trash: " + std::string(reason) + "."};
    return false;
}

/// Whether this user alone can get at what is in an open folder.
bool isPrivate(const FileDescriptor& folder) {
    struct stat status {};
    return fstat(folder.get(), &status) == 0 && status.st_uid == geteuid() &&
           (status.st_mode & 0777U) == 0700;
}

bool isOwn(const FileDescriptor& item) {
    struct stat status {};
    return fstat(item.get(), &status) == 0 && status.st_uid == geteuid();
}

bool isVariableSet(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && value[0] != '\0';
}

/// A sandbox has a data folder of its own, which no file manager of the desktop looks into.
bool isSandboxed() {
    return isVariableSet("FLATPAK_ID") || isVariableSet("SNAP") || nodeExists("/.flatpak-info");
}

/// Where the desktop's home Trash keeps its items.
std::optional<std::string> desktopTrash() {
    const std::optional<std::string> data = userDataDirectory();
    return data ? std::optional(joinPath(*data, "Trash/files")) : std::nullopt;
}

/// Makes a folder and those above it as the XDG base directories want them: for their
/// owner alone. What cannot be made is found missing later.
void makePrivateFolders(const std::string& path) {
    std::size_t end = 0;
    while (end != std::string::npos) {
        end = path.find('/', end + 1);
        std::ignore = mkdir(path.substr(0, end).c_str(), 0700);
    }
}

/// The folder beside the items, of the same Trash, made when it is missing.
/// @param path where the items are
FileDescriptor openInfoFolder(const TrashFolders& folders, const std::string& path) {
    const FileDescriptor above(::open(parentFolder(path).c_str(), kFolderFlags));
    const FileDescriptor again(above ? openat(above.get(), "files", kFolderFlags | O_NOFOLLOW)
                                     : -1);
    if (!again || identityOf(again.get()) != identityOf(folders.items.get())) {
        return {};
    }
    std::ignore = mkdirat(above.get(), "info", 0700);
    FileDescriptor info(openat(above.get(), "info", kFolderFlags | O_NOFOLLOW));
    return info && isOwn(info) ? std::move(info) : FileDescriptor();
}

/// @param fallback the path where the system does not say it
std::string pathOfFolder(const FileDescriptor& folder, const std::string& fallback) {
    std::error_code error;
    const std::string path =
        std::filesystem::read_symlink(descriptorPath(folder.get()), error).string();
    return !error && path.starts_with('/') ? path : fallback;
}

/// The text of an open link; "" on failure.
std::string textOfLink(const FileDescriptor& link) {
    std::array<char, PATH_MAX> text{};
    const ssize_t length = readlinkat(link.get(), "", text.data(), text.size());
    return length > 0 ? std::string(text.data(), static_cast<std::size_t>(length)) : "";
}

/// A link's target, wherever it lies, with the notes when it is a desktop's Trash.
bool openTarget(const FileDescriptor& home, const std::string& path, const std::string& target,
                TrashFolders& folders, ErrorSlot& error) {
    const bool isDesktops = target == desktopTrash();
    if (isDesktops) {
        // The user may have emptied the desktop's Trash by removing all of it.
        makePrivateFolders(target);
    }
    folders.items = FileDescriptor(openat(home.get(), target.c_str(), kFolderFlags));
    if (!folders.items) {
        return failFolder(error, path, "used as the Trash", errno);
    }
    if (!isPrivate(folders.items)) {
        return refuse(error, path, "it is a link to a folder that is not for you alone");
    }
    folders.path = pathOfFolder(folders.items, target);
    if (!isDesktops && !folders.path.ends_with("/Trash/files")) {
        return true;
    }
    folders.info = openInfoFolder(folders, isDesktops ? target : folders.path);
    return folders.info || refuse(error, path, "what is put into it cannot be noted down");
}

/// Whether the Trash is to be a link to the desktop's, which is there after that.
bool prepareDesktopTrash(const FileDescriptor& home, const std::string& path) {
    const std::optional<std::string> target = desktopTrash();
    const std::string ownHome = homeDirectory();
    if (!target || ownHome.empty() || path != joinPath(ownHome, ".Trash") || !isOwn(home) ||
        isSandboxed()) {
        return false;
    }
    makePrivateFolders(*target);
    TrashFolders folders;
    ErrorSlot ignored;
    return openTarget(home, path, *target, folders, ignored) && folders.info;
}

/// @return 0 or the errno value.
int makeTrash(const FileDescriptor& home, const std::string& path, const std::string& name) {
    if (prepareDesktopTrash(home, path)) {
        return symlinkat(desktopTrash()->c_str(), home.get(), name.c_str()) == 0 ? 0 : errno;
    }
    return mkdirat(home.get(), name.c_str(), 0700) == 0 ? 0 : errno;
}

}  // namespace

bool openTrashFolders(const std::string& path, TrashFolders& folders, ErrorSlot& error) {
    const std::string place = withoutTrailingSlashes(path);
    const std::string name = lastComponent(place);
    if (!place.starts_with('/') || !isPlainName(name)) {
        return failFolder(error, path, "used as the Trash", EINVAL);
    }
    // Only the Trash itself is made: a home folder that isn't there must not come to be by this.
    const FileDescriptor home(::open(parentFolder(place).c_str(), kFolderFlags));
    if (!home) {
        return failFolder(error, path, "made", errno);
    }
    FileDescriptor item(openat(home.get(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (!item && errno == ENOENT) {
        // Another program may make it at the same time.
        const int errorNumber = makeTrash(home, place, name);
        if (errorNumber != 0 && errorNumber != EEXIST) {
            return failFolder(error, path, "made", errorNumber);
        }
        item = FileDescriptor(openat(home.get(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    }
    struct stat status {};
    if (!item || fstat(item.get(), &status) != 0) {
        return failFolder(error, path, "made", errno);
    }
    if (S_ISLNK(status.st_mode)) {
        return status.st_uid == geteuid()
                   ? openTarget(home, path, textOfLink(item), folders, error)
                   : refuse(error, path, "it is a link that belongs to somebody else");
    }
    if (!S_ISDIR(status.st_mode)) {
        return failFolder(error, path, "made", EEXIST);
    }
    folders.path = pathOfFolder(item, place);
    folders.items = std::move(item);
    return true;
}

}  // namespace vornic::platform
