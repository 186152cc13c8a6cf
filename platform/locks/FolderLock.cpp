#include "platform/locks/FolderLock.h"

#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>

namespace vornic::platform {
namespace {

constexpr std::chrono::seconds kLongestWait{30};
constexpr std::chrono::milliseconds kPollInterval{5};

}  // namespace

FolderLock::FolderLock(const std::string& folder) {
    FileDescriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
    if (!opened) {
        return;
    }
    const auto deadline = std::chrono::steady_clock::now() + kLongestWait;
    while (flock(opened.get(), LOCK_EX | LOCK_NB) != 0) {
        const bool isBusy = errno == EWOULDBLOCK || errno == EINTR;
        if (!isBusy || std::chrono::steady_clock::now() >= deadline) {
            return;
        }
        std::this_thread::sleep_for(kPollInterval);
    }
    folder_ = std::move(opened);
}

}  // namespace vornic::platform
