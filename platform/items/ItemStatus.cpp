#include "platform/items/ItemStatus.h"

#include <cerrno>
#include <chrono>

#include <fcntl.h>
#include <sys/stat.h>

namespace vornic::platform {
namespace {

FileDate dateOf(const struct statx_timestamp& time) {
    const auto sinceEpoch =
        std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    return FileDate(std::chrono::duration_cast<FileDate::duration>(sinceEpoch));
}

}  // namespace

std::optional<ItemStatus> itemStatus(const std::string& path) {
    constexpr unsigned kAsked = STATX_BASIC_STATS | STATX_BTIME;
    struct statx status {};
    if (path.find('\0') != std::string::npos ||
        statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, kAsked, &status) != 0) {
        return std::nullopt;
    }
    ItemStatus result{.isFolder = S_ISDIR(status.stx_mode),
                      .isLink = S_ISLNK(status.stx_mode),
                      .size = status.stx_size,
                      .created = std::nullopt};
    if ((status.stx_mask & STATX_BTIME) != 0) {
        result.created = dateOf(status.stx_btime);
    }
    return result;
}

ErrorSlot failedLook(const std::string& path) {
    struct stat status {};
    if (path.find('\0') != std::string::npos || stat(path.c_str(), &status) == 0 ||
        errno == ENOENT || errno == ENOTDIR) {
        return std::nullopt;
    }
    return posixError("The file " + path + " cannot be looked at", errno);
}

}  // namespace vornic::platform
