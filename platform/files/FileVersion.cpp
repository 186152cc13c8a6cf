#include "platform/files/FileVersion.h"

#include <cerrno>

#include <sys/stat.h>

namespace vornic::platform {
namespace {

FileTime timeFrom(const struct timespec& time) {
    return {.seconds = time.tv_sec, .nanoseconds = time.tv_nsec};
}

FileVersion versionFrom(const struct stat& status) {
    return {.identity = {.device = status.st_dev, .inode = status.st_ino},
            .size = static_cast<std::uint64_t>(status.st_size),
            .modified = timeFrom(status.st_mtim),
            .changed = timeFrom(status.st_ctim)};
}

}  // namespace

VersionMatch compareVersions(const FileVersion& one, const FileVersion& another) {
    if (one.identity != another.identity || one.size != another.size) {
        return VersionMatch::different;
    }
    return one == another ? VersionMatch::same : VersionMatch::timesDiffer;
}

ErrnoOr<FileVersion> versionOf(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) {
        return Errno{errno};
    }
    return versionFrom(status);
}

ErrnoOr<FileVersion> versionAt(const std::string& path) {
    struct stat status {};
    if (path.find('\0') != std::string::npos) {
        return Errno{EINVAL};
    }
    if (lstat(path.c_str(), &status) != 0) {
        return Errno{errno};
    }
    return versionFrom(status);
}

}  // namespace vornic::platform
