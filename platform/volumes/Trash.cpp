#include "platform/volumes/Trash.h"

#include <array>
#include <cerrno>
#include <ctime>
#include <mutex>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/PathText.h"
#include "base/PercentEncoding.h"
#include "platform/files/Failure.h"
#include "platform/files/FileSystem.h"
#include "platform/files/Rename.h"
#include "platform/files/TemporaryFile.h"
#include "platform/files/TemporaryName.h"
#include "platform/volumes/FileTransfer.h"
#include "platform/volumes/TrashFolders.h"

namespace vornic::platform {
namespace {

constexpr std::string_view kInfoExtension = ".trashinfo";

/// The note about an item, with the present time.
std::string infoText(const std::string& originalPath) {
    const std::time_t now = std::time(nullptr);
    struct tm local {};
    std::array<char, 32> date{};
    localtime_r(&now, &local);
    const std::size_t length = std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &local);
    return "[Trash Info]\nPath=" + percentEncoded(originalPath, "/") +
           "\nDeletionDate=" + std::string(date.data(), length) + "\n";
}

/// Makes a file that must be new. @return 0 or the errno value; nothing is left after a failure.
int writeNewFile(int folder, const std::string& name, const std::string& text) {
    FileDescriptor file(
        openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file) {
        return errno;
    }
    int errorNumber = writeAll(file.get(), text.data(), text.size());
    const int closeError = file.close();
    errorNumber = errorNumber != 0 ? errorNumber : closeError;
    if (errorNumber != 0) {
        std::ignore = unlinkat(folder, name.c_str(), 0);
    }
    return errorNumber;
}

std::string infoName(const std::string& name) {
    return name + std::string(kInfoExtension);
}

/// A path into an open folder that nobody can lead elsewhere; by its name where the system has no
/// paths for what is open.
std::string pathInto(int folder, const std::string& usualPath) {
    std::string path = descriptorPath(folder);
    return isDirectory(path) ? path : usualPath;
}

/// Errors name the folders as the user knows them.
void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos && from != to;
         at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

/// What was set aside in the Trash by a process that was killed becomes an item that can be seen.
void showItemsLeftAside(const std::string& folder) {
    for (const LeftFile& left : filesLeftAside(folder)) {
        int errorNumber = EEXIST;
        for (long attempt = 1; errorNumber == EEXIST; ++attempt) {
            const std::string name = numberedName(left.original, attempt, kLongestName);
            errorNumber = renameWithoutReplacing(left.path, joinPath(folder, name));
        }
    }
}

/// Removes copies and notes that killed processes have left half-way. Once a minute is enough, for
/// there may be many items to look at.
void clearNowAndThen(const std::string& folder, const FileDescriptor& info) {
    constexpr std::time_t kPause = 60;
    static std::mutex mutex;
    static std::string lastFolder;
    static std::time_t lastTime = 0;
    const std::lock_guard lock(mutex);
    const std::time_t now = std::time(nullptr);
    if (folder != lastFolder || now >= lastTime + kPause || now < lastTime) {
        removeDeadTemporaries(folder);
        showItemsLeftAside(folder);
        if (info) {
            removeDeadTemporaries(descriptorPath(info.get()));
        }
        lastFolder = folder;
        lastTime = now;
    }
}

}  // namespace

std::string TrashedItem::path() const {
    return joinPath(folder, name);
}

std::optional<Trash> Trash::open(const std::string& path, ErrorSlot& error) {
    TrashFolders folders;
    if (!openTrashFolders(path, folders, error)) {
        return std::nullopt;
    }
    Trash trash;
    trash.items_ = std::move(folders.items);
    trash.info_ = std::move(folders.info);
    trash.folder_ = std::move(folders.path);
    clearNowAndThen(trash.folder_, trash.info_);
    return trash;
}

std::optional<TrashedItem> Trash::take(const HeldPath& item, const std::string& originalName,
                                       ErrorSlot& error) const {
    if (!isPlainName(item.name) || !isPlainName(originalName)) {
        failFile(error, item.name, "moved to the Trash", EINVAL);
        return std::nullopt;
    }
    const std::string originalPath = joinPath(item.folderPath, originalName);
    const std::size_t longest = kLongestName - (info_ ? kInfoExtension.size() : 0);
    std::string noted;
    long number = 0;
    int infoError = 0;
    const auto nextName = [&](long attempt) -> std::optional<std::string> {
        if (!noted.empty()) {
            removeInfo(noted);
        }
        number = attempt == 1 ? 1 : number + 1;
        for (infoError = EEXIST; infoError == EEXIST; number += infoError == EEXIST ? 1 : 0) {
            noted = numberedName(originalName, number, longest);
            infoError = addInfo(noted, originalPath);
        }
        if (infoError != 0) {
            noted.clear();
            return std::nullopt;
        }
        return noted;
    };
    const std::string from = pathInto(item.folder.get(), item.folderPath);
    const std::string into = pathInto(items_.get(), folder_);
    ErrorSlot moveError;
    if (moveInto(joinPath(from, item.name), into, nextName, moveError)) {
        return TrashedItem{.folder = folder_, .name = noted};
    }
    if (!noted.empty()) {
        removeInfo(noted);
    }
    if (infoError != 0) {
        failFile(error, originalPath, "moved to the Trash", infoError);
        return std::nullopt;
    }
    replaceAll(moveError->description, withTrailingSlash(from), withTrailingSlash(item.folderPath));
    replaceAll(moveError->description, withTrailingSlash(into), withTrailingSlash(folder_));
    error = std::move(moveError);
    return std::nullopt;
}

int Trash::addInfo(const std::string& name, const std::string& originalPath) const {
    return info_ ? writeNewFile(info_.get(), infoName(name), infoText(originalPath)) : 0;
}

void Trash::removeInfo(const std::string& name) const {
    if (info_) {
        std::ignore = unlinkat(info_.get(), infoName(name).c_str(), 0);
    }
}

int Trash::replaceInfo(const std::string& name, const std::string& originalPath) const {
    if (!info_) {
        return 0;
    }
    const std::string temporary = temporaryName(name).append(kPartEnding);
    const int errorNumber = writeNewFile(info_.get(), temporary, infoText(originalPath));
    if (errorNumber != 0) {
        return errorNumber;
    }
    if (renameat(info_.get(), temporary.c_str(), info_.get(), infoName(name).c_str()) == 0) {
        return 0;
    }
    const int renameError = errno;
    std::ignore = unlinkat(info_.get(), temporary.c_str(), 0);
    return renameError;
}

}  // namespace vornic::platform
