#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/Failure.h"
#include "platform/FileDescriptor.h"
#include "platform/FileSystem.h"
#include "platform/FileTransfer.h"
#include "platform/PathText.h"

namespace vornic::platform {
namespace {

/// For volumes that cannot rename and refuse to replace in one step. @return 0 or the errno value.
int renameInTwoSteps(const char* source, const char* destination) {
    struct stat status {};
    if (lstat(source, &status) != 0) {
        return errno;
    }
    if (!S_ISDIR(status.st_mode) && link(source, destination) == 0) {
        if (unlink(source) == 0) {
            return 0;
        }
        const int errorNumber = errno;
        static_cast<void>(unlink(destination) == 0);
        return errorNumber;
    }
    if (!S_ISDIR(status.st_mode) && errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS &&
        errno != EMLINK) {
        return errno;
    }
    // Folders and volumes without links: looked at first, which is as much as can be done there.
    if (lstat(destination, &status) == 0) {
        return EEXIST;
    }
    return std::rename(source, destination) == 0 ? 0 : errno;
}

/// Tries the names in order. @param placed the path that was taken @return 0 or the errno value.
int renameToFreeName(const std::string& source, const std::string& folder,
                     const NameForAttempt& names, std::string& placed) {
    int errorNumber = EEXIST;
    for (long attempt = 1; errorNumber == EEXIST; ++attempt) {
        const std::optional<std::string> name = names(attempt);
        if (!name) {
            return EEXIST;
        }
        placed = joinPath(folder, *name);
        errorNumber = renameWithoutReplacing(source, placed);
    }
    return errorNumber;
}

/// What shows that an item was changed or replaced.
struct Fingerprint {
    FileIdentity identity;
    std::int64_t size = 0;
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;
    friend bool operator==(const Fingerprint&, const Fingerprint&) = default;
};

std::optional<Fingerprint> fingerprint(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return Fingerprint{.identity = {.device = status.st_dev, .inode = status.st_ino},
                       .size = status.st_size,
                       .seconds = status.st_mtim.tv_sec,
                       .nanoseconds = status.st_mtim.tv_nsec};
}

/// Removes the original after its verified copy came to stand at `copy`. An original that stays
/// whole makes the copy superfluous; of a folder a part may be gone already, so that the copy
/// stays.
bool removeOriginal(const std::string& source, const std::string& copy, ErrorSlot& error) {
    struct stat status {};
    const bool isFolder = lstat(source.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    if (removeItem(source, error)) {
        return true;
    }
    if (!isFolder && nodeExists(source)) {
        ErrorSlot ignored;
        removeItem(copy, ignored);
    }
    return false;
}

bool moveAcrossVolumes(const std::string& source, const std::string& folder,
                       const NameForAttempt& names, ErrorSlot& error) {
    const std::optional<Fingerprint> original = fingerprint(source);
    const std::string temporary = joinPath(folder, temporaryName(lastComponent(source)));
    if (!transferItem(source, temporary, Verification::readBack, error)) {
        return false;
    }
    std::string placed;
    int errorNumber = renameToFreeName(temporary, folder, names, placed);
    const std::string& copy = errorNumber == 0 ? placed : temporary;
    if (errorNumber == 0) {
        errorNumber = synchronizeFolder(folder);
    }
    if (errorNumber == 0 && fingerprint(source) == original) {
        return removeOriginal(source, copy, error);
    }
    ErrorSlot ignored;
    removeItem(copy, ignored);
    const std::string verb = "moved to " + placed;
    return errorNumber != 0
               ? failFile(error, source, verb, errorNumber)
               : failFileBecause(error, source, verb, EBUSY, "it was changed in the meantime");
}

}  // namespace

int renameWithoutReplacing(const std::string& source, const std::string& destination) {
    if (renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, destination.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP) {
        return errno;
    }
    return renameInTwoSteps(source.c_str(), destination.c_str());
}

bool moveInto(const std::string& source, const std::string& folder, const NameForAttempt& names,
              ErrorSlot& error) {
    std::string placed;
    const int errorNumber = renameToFreeName(source, folder, names, placed);
    if (errorNumber == EXDEV) {
        return moveAcrossVolumes(source, folder, names, error);
    }
    return errorNumber == 0 || failFile(error, source, "moved to " + placed, errorNumber);
}

bool moveFile(const std::string& source, const std::string& destination, ErrorSlot& error) {
    if (source.find('\0') != std::string::npos || destination.find('\0') != std::string::npos) {
        return failFile(error, source, "moved to " + destination, EINVAL);
    }
    const std::string name = lastComponent(destination);
    if (name.empty()) {
        return failFile(error, source, "moved to " + destination,
                        destination.empty() ? ENOENT : EEXIST);
    }
    return moveInto(
        source, parentFolder(destination),
        [&name](long attempt) { return attempt == 1 ? std::optional(name) : std::nullopt; }, error);
}

}  // namespace vornic::platform
