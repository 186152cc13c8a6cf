#include "platform/locks/FileLock.h"

#include <cerrno>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>

#include "base/PathText.h"
#include "platform/files/Failure.h"

namespace vornic::platform {

std::optional<FileLock> FileLock::acquire(const std::string& path, std::chrono::milliseconds limit,
                                          ErrorSlot& error) {
    constexpr std::chrono::milliseconds kPause{5};
    const std::string lockPath = joinPath(parentFolder(path), "." + lastComponent(path) + ".lock");
    FileDescriptor file(::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file) {
        failFile(error, lockPath, "opened", errno);
        return std::nullopt;
    }
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == ENOLCK || errno == ENOSYS || errno == EOPNOTSUPP) {
            break;  // The write itself is still atomic.
        }
        const bool busy = errno == EWOULDBLOCK || errno == EINTR;
        if (!busy || std::chrono::steady_clock::now() >= deadline) {
            failFile(error, lockPath, "locked", errno);
            return std::nullopt;
        }
        std::this_thread::sleep_for(kPause);
    }
    return FileLock(std::move(file));
}

}  // namespace vornic::platform
