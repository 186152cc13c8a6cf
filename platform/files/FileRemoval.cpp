#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/PathText.h"
#include "platform/files/Failure.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"

namespace vornic::platform {
namespace {

/// Removes the entry of an open folder with everything in it. Each step goes through the folder
/// that is open, so that nobody can put a link in its way. @return 0 or the errno value.
int removeNode(int folder, const char* name, dev_t volume);

int removeContents(int folder, dev_t volume) {
    std::vector<std::string> names;
    int errorNumber = listFolder(folder, names);
    for (auto name = names.begin(); errorNumber == 0 && name != names.end(); ++name) {
        errorNumber = removeNode(folder, name->c_str(), volume);
    }
    return errorNumber;
}

int removeNode(int folder, const char* name, dev_t volume) {
    struct stat status {};
    if (fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno;
    }
    if (status.st_dev != volume) {
        return EXDEV;
    }
    if (!S_ISDIR(status.st_mode)) {
        return unlinkat(folder, name, 0) == 0 ? 0 : errno;
    }
    const FileDescriptor opened(
        openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    const int errorNumber = opened ? removeContents(opened.get(), volume) : errno;
    // A folder that cannot be read can be removed when it is empty.
    if (unlinkat(folder, name, AT_REMOVEDIR) == 0) {
        return 0;
    }
    return errorNumber != 0 ? errorNumber : errno;
}

}  // namespace

bool removeFile(const std::string& path, ErrorSlot& error) {
    if (path.find('\0') != std::string::npos) {
        return failFile(error, path, "removed", EINVAL);
    }
    return unlink(path.c_str()) == 0 || failFile(error, path, "removed", errno);
}

bool removeItem(const std::string& path, ErrorSlot& error) {
    struct stat status {};
    const std::string name = lastComponent(path);
    // A folder under these names loses its contents before the system refuses to remove it.
    if (path.find('\0') != std::string::npos || name == "." || name == "..") {
        return failFile(error, path, "removed", EINVAL);
    }
    if (lstat(path.c_str(), &status) != 0) {
        return failFile(error, path, "removed", errno);
    }
    const int errorNumber = removeNode(AT_FDCWD, path.c_str(), status.st_dev);
    return errorNumber == 0 || failFile(error, path, "removed", errorNumber);
}

}  // namespace vornic::platform
