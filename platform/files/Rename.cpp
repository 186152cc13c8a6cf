#include "platform/files/Rename.h"

#include <cerrno>
#include <cstdio>
#include <tuple>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/FileDescriptor.h"

namespace vornic::platform {
namespace {

bool hasNul(const std::string& path) {
    return path.find('\0') != std::string::npos;
}

/// True for what the kernel answers when it or the volume does not know the flag.
bool isUnknownFlag(int errorNumber) {
    return errorNumber == EINVAL || errorNumber == ENOSYS || errorNumber == EOPNOTSUPP;
}

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
        std::ignore = unlink(destination);
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

}  // namespace

ErrnoOr<Exchange> exchangeNames(const std::string& first, const std::string& second) {
    if (hasNul(first) || hasNul(second)) {
        return Errno{EINVAL};
    }
    if (renameat2(AT_FDCWD, first.c_str(), AT_FDCWD, second.c_str(), RENAME_EXCHANGE) == 0) {
        return Exchange::done;
    }
    if (isUnknownFlag(errno)) {
        return Exchange::unavailable;
    }
    return Errno{errno};
}

int renameWithoutReplacing(const std::string& source, const std::string& destination) {
    if (hasNul(source) || hasNul(destination)) {
        return EINVAL;
    }
    if (renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, destination.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    return isUnknownFlag(errno) ? renameInTwoSteps(source.c_str(), destination.c_str()) : errno;
}

int linkOpenFile(int descriptor, const std::string& path) {
    if (hasNul(path)) {
        return EINVAL;
    }
    const std::string file = descriptorPath(descriptor);
    return linkat(AT_FDCWD, file.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0 ? 0
                                                                                          : errno;
}

}  // namespace vornic::platform
