#include "platform/settings/OwnFolder.h"

#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

#include "base/PathText.h"
#include "platform/files/Failure.h"
#include "platform/files/FileSystem.h"

namespace vornic::platform {
namespace {

/// The kind and the permission bits of what this user owns at a path; 0 when that is nothing.
mode_t ownMode(const std::string& path) {
    struct stat status {};
    const bool isOwn =
        lstat(path.c_str(), &status) == 0 && !S_ISLNK(status.st_mode) && status.st_uid == geteuid();
    return isOwn ? status.st_mode : 0;
}

}  // namespace

bool isOwnItem(const std::string& path) {
    return ownMode(path) != 0;
}

bool isPrivateFolder(const std::string& path) {
    const mode_t mode = ownMode(path);
    return S_ISDIR(mode) && (mode & 0777U) == 0700;
}

bool createPrivateFolder(const std::string& path, ErrorSlot& error) {
    if (path.find('\0') != std::string::npos) {
        return failFolder(error, path, "made", EINVAL);
    }
    if (!createDirectory(parentFolder(path), error)) {
        return false;
    }
    return mkdir(path.c_str(), 0700) == 0 || failFolder(error, path, "made", errno);
}

}  // namespace vornic::platform
