#include "platform/locks/ByteLock.h"

#include <cerrno>
#include <thread>

#include <fcntl.h>

#include "platform/files/Failure.h"

namespace vornic::platform {
namespace {

struct flock lockOf(std::uint64_t byte) {
    constexpr std::uint64_t kLargestOffset = 0x7FFF'FFFF'FFFF'FFFEU;
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = static_cast<off_t>(byte & kLargestOffset);
    lock.l_len = 1;
    return lock;
}

}  // namespace

std::optional<ByteLock> ByteLock::acquire(const std::string& path, std::uint64_t byte,
                                          std::chrono::milliseconds limit, ErrorSlot& error) {
    constexpr std::chrono::milliseconds kPause{2};
    FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file) {
        failFile(error, path, "opened", errno);
        return std::nullopt;
    }
    struct flock lock = lockOf(byte);
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (fcntl(file.get(), F_OFD_SETLK, &lock) != 0) {
        if (errno == ENOLCK || errno == ENOSYS || errno == EOPNOTSUPP) {
            break;
        }
        const bool isBusy = errno == EAGAIN || errno == EACCES || errno == EINTR;
        if (!isBusy || std::chrono::steady_clock::now() >= deadline) {
            failFile(error, path, "locked", errno);
            return std::nullopt;
        }
        std::this_thread::sleep_for(kPause);
    }
    return ByteLock(std::move(file));
}

bool ByteLock::isHeld(const std::string& path, std::uint64_t byte) {
    const FileDescriptor file(::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW));
    if (!file) {
        return errno != ENOENT;
    }
    struct flock lock = lockOf(byte);
    return fcntl(file.get(), F_OFD_GETLK, &lock) != 0 || lock.l_type != F_UNLCK;
}

}  // namespace vornic::platform
