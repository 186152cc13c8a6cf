#include "platform/items/ImmutableFlag.h"

#include <cerrno>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include "platform/files/Failure.h"
#include "platform/files/FileDescriptor.h"

namespace vornic::platform {
namespace {

/// The attributes of an open item. @return 0 or the errno value.
int readFlags(int descriptor, int& flags) {
    if (ioctl(descriptor, FS_IOC_GETFLAGS, &flags) == 0) {
        return 0;
    }
    // Volumes without attributes, and items that were opened for their metadata alone.
    const bool unknown = errno == ENOTTY || errno == EBADF || errno == EINVAL || errno == ENOSYS;
    return unknown ? EOPNOTSUPP : errno;
}

/// @return 0 or the errno value.
int changeFlag(const std::string& path, bool immutable) {
    const ErrnoOr<FileDescriptor> item = openForMetadata(path, false);
    if (!item) {
        return item.errorNumber() == ELOOP ? EOPNOTSUPP : item.errorNumber();
    }
    int flags = 0;
    if (const int errorNumber = readFlags(item->get(), flags); errorNumber != 0) {
        return errorNumber;
    }
    flags = immutable ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
    return ioctl(item->get(), FS_IOC_SETFLAGS, &flags) == 0 ? 0 : errno;
}

}  // namespace

bool isImmutable(const std::string& path) {
    struct statx status {};
    if (path.find('\0') != std::string::npos ||
        statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &status) != 0) {
        return false;
    }
    if ((status.stx_attributes_mask & STATX_ATTR_IMMUTABLE) != 0) {
        return (status.stx_attributes & STATX_ATTR_IMMUTABLE) != 0;
    }
    int flags = 0;
    const ErrnoOr<FileDescriptor> item = openForMetadata(path, false);
    return item && readFlags(item->get(), flags) == 0 && (flags & FS_IMMUTABLE_FL) != 0;
}

bool setImmutable(const std::string& path, bool immutable, ErrorSlot& error) {
    const char* verb = immutable ? "locked" : "unlocked";
    struct stat status {};
    if (path.find('\0') != std::string::npos) {
        return failFile(error, path, verb, EINVAL);
    }
    if (lstat(path.c_str(), &status) != 0) {
        return failFile(error, path, verb, errno);
    }
    if (isImmutable(path) == immutable) {
        return true;
    }
    const int errorNumber = changeFlag(path, immutable);
    return errorNumber == 0 || failFile(error, path, verb, errorNumber);
}

}  // namespace vornic::platform
