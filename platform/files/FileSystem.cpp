#include "platform/files/FileSystem.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/PathText.h"
#include "platform/files/ContentsWatcher.h"
#include "platform/files/Failure.h"
#include "platform/files/FileDescriptor.h"

namespace vornic::platform {
namespace {

/// @return 0 or the errno value.
int statusOf(const std::string& path, struct stat& status, int flags) {
    if (path.find('\0') != std::string::npos) {
        return EINVAL;
    }
    return fstatat(AT_FDCWD, path.c_str(), &status, flags) == 0 ? 0 : errno;
}

/// Makes one folder; one that is there already is success. @return 0 or the errno value.
int makeOneFolder(const std::string& path) {
    if (mkdir(path.c_str(), 0777) == 0) {
        return 0;
    }
    const int errorNumber = errno;
    return isDirectory(path) ? 0 : errorNumber;
}

}  // namespace

bool fileExists(const std::string& path) {
    struct stat status {};
    return statusOf(path, status, 0) == 0;
}

bool nodeExists(const std::string& path) {
    struct stat status {};
    return statusOf(path, status, AT_SYMLINK_NOFOLLOW) == 0;
}

bool isDirectory(const std::string& path) {
    struct stat status {};
    return statusOf(path, status, 0) == 0 && S_ISDIR(status.st_mode);
}

bool isExecutableFile(const std::string& path) {
    struct stat status {};
    return statusOf(path, status, 0) == 0 && S_ISREG(status.st_mode) &&
           faccessat(AT_FDCWD, path.c_str(), X_OK, AT_EACCESS) == 0;
}

std::optional<FileIdentity> fileIdentity(const std::string& path) {
    struct stat status {};
    if (statusOf(path, status, AT_SYMLINK_NOFOLLOW) != 0) {
        return std::nullopt;
    }
    return FileIdentity{.device = status.st_dev, .inode = status.st_ino};
}

std::optional<std::vector<std::string>> namesInFolder(const std::string& path, ErrorSlot& error) {
    const bool isPath = path.find('\0') == std::string::npos;
    const FileDescriptor folder(
        isPath ? ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC) : -1);
    std::vector<std::string> names;
    int errorNumber = isPath ? errno : EINVAL;
    if (folder) {
        errorNumber = listFolder(folder.get(), names);
    }
    if (errorNumber != 0) {
        failFolder(error, path, "read", errorNumber);
        return std::nullopt;
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string currentDirectory() {
    const std::unique_ptr<char, decltype(&std::free)> path(getcwd(nullptr, 0), &std::free);
    // A folder outside the process's root is told as "(unreachable)/…".
    return path && path.get()[0] == '/' ? std::string(path.get()) : std::string();
}

std::optional<std::string> absolutePath(const std::string& path) {
    if (path.empty() || path.starts_with('/')) {
        return path.empty() ? std::nullopt : std::optional(path);
    }
    const std::string folder = currentDirectory();
    return folder.empty() ? std::nullopt : std::optional(withTrailingSlash(folder) + path);
}

namespace {

// @param read fills the bytes of a file that is open. @return 0 or the errno value.
template <typename Read>
std::optional<std::string> readOpened(const std::string& path, ErrorSlot& error, const Read& read) {
    const ErrnoOr<FileDescriptor> file = openRegularFile(path, true);
    if (file.errorNumber() == EINVAL) {
        failFileBecause(error, path, "opened", EINVAL, "it is no ordinary file");
        return std::nullopt;
    }
    if (!file) {
        failFile(error, path, "opened", file.errorNumber());
        return std::nullopt;
    }
    std::string bytes;
    if (const int errorNumber = read(file->get(), bytes); errorNumber != 0) {
        failFile(error, path, "read", errorNumber);
        return std::nullopt;
    }
    return bytes;
}

}  // namespace

std::optional<std::string> readFile(const std::string& path, ErrorSlot& error) {
    return readOpened(path, error,
                      [](int file, std::string& bytes) { return readContents(file, bytes); });
}

std::optional<std::string> readFile(const std::string& path, ContentsWatcher& watcher,
                                    ErrorSlot& error) {
    return readOpened(path, error, [&watcher](int file, std::string& bytes) {
        return readContents(file, bytes, watcher);
    });
}

bool createDirectory(const std::string& path, ErrorSlot& error) {
    if (path.empty() || path.find('\0') != std::string::npos) {
        return failFolder(error, path, "made", path.empty() ? ENOENT : EINVAL);
    }
    // Most often the folder above is there, and often the folder itself.
    int errorNumber = makeOneFolder(path);
    for (std::size_t slash = path.find('/', 1); errorNumber == ENOENT;) {
        const std::string part = path.substr(0, slash);
        const int partError = makeOneFolder(part);
        if (partError != 0) {
            return failFolder(error, part, "made", partError);
        }
        if (slash == std::string::npos) {
            errorNumber = 0;
        } else {
            slash = path.find('/', slash + 1);
        }
    }
    return errorNumber == 0 || failFolder(error, path, "made", errorNumber);
}

bool setPermissions(const std::string& path, unsigned long permissions, ErrorSlot& error) {
    if (path.find('\0') != std::string::npos) {
        return failFile(error, path, "given its permissions", EINVAL);
    }
    return chmod(path.c_str(), static_cast<mode_t>(permissions & 07777U)) == 0 ||
           failFile(error, path, "given its permissions", errno);
}

bool synchronizeFile(const std::string& path, ErrorSlot& error) {
    if (path.find('\0') != std::string::npos) {
        return failFile(error, path, "synchronized", EINVAL);
    }
    const ErrnoOr<std::string> target = resolveFinalLink(path);
    if (!target) {
        return failFile(error, path, "synchronized", target.errorNumber());
    }
    const FileDescriptor file(
        ::open(target->c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    int errorNumber = file ? synchronize(file.get()) : errno;
    if (errorNumber == 0) {
        errorNumber = synchronizeFolder(parentFolder(*target));
    }
    return errorNumber == 0 || failFile(error, path, "synchronized", errorNumber);
}

ErrnoOr<std::string> resolveFinalLink(std::string path) {
    constexpr int kMostLinks = 40;
    for (int followed = 0; followed <= kMostLinks; ++followed) {
        std::array<char, PATH_MAX + 1> buffer{};
        const ssize_t length = readlink(path.c_str(), buffer.data(), buffer.size());
        if (length < 0) {
            if (errno == EINVAL || errno == ENOENT) {
                return path;
            }
            return Errno{errno};
        }
        const std::string_view target(buffer.data(), static_cast<std::size_t>(length));
        path =
            (target.starts_with('/') ? "" : withTrailingSlash(parentFolder(path))).append(target);
    }
    return Errno{ELOOP};
}

}  // namespace vornic::platform
