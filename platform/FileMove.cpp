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

/// Removes the original after its verified copy stands at `copy`. What is left of an original that
/// cannot be removed decides which of the two stays.
bool removeOriginal(const std::string& source, const std::string& copy, ErrorSlot& error) {
    const bool wasFolder = isDirectory(source);
    if (removeItem(source, error)) {
        return true;
    }
    if (!wasFolder && nodeExists(source)) {
        ErrorSlot ignored;
        removeItem(copy, ignored);
    }
    return false;
}

bool moveAcrossVolumes(const std::string& source, const std::string& folder,
                       const NameForAttempt& names, ErrorSlot& error) {
    const std::optional<FileIdentity> original = fileIdentity(source);
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
    if (errorNumber == 0 && fileIdentity(source) != original) {
        errorNumber = EBUSY;
    }
    if (errorNumber == 0) {
        return removeOriginal(source, copy, error);
    }
    ErrorSlot ignored;
    removeItem(copy, ignored);
    return failFile(error, source, "moved to " + placed, errorNumber);
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
