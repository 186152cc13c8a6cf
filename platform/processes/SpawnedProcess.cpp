#include "platform/processes/SpawnedProcess.h"

#include <cerrno>
#include <csignal>
#include <thread>

#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vornic::platform {
namespace {

/// The descriptor is close-on-exec by itself.
FileDescriptor openEndDescriptor(pid_t process) {
    return FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
}

}  // namespace

SpawnedProcess::SpawnedProcess(pid_t identifier)
    : identifier_(identifier), endDescriptor_(openEndDescriptor(identifier)) {}

bool SpawnedProcess::hasEnded() {
    const std::lock_guard lock(mutex_);
    return fetchEnd();
}

void SpawnedProcess::waitForEnd() {
    while (!hasEnded()) {
        if (endDescriptor_) {
            struct pollfd waited {
                endDescriptor_.get(), POLLIN, 0
            };
            static_cast<void>(poll(&waited, 1, -1));
        } else {
            std::this_thread::sleep_for(kEndPollingInterval);
        }
    }
}

void SpawnedProcess::sendSignal(int number) {
    const std::lock_guard lock(mutex_);
    if (!fetchEnd()) {
        static_cast<void>(kill(identifier_, number));
    }
}

std::optional<int> SpawnedProcess::status() {
    const std::lock_guard lock(mutex_);
    return status_;
}

bool SpawnedProcess::fetchEnd() {
    if (ended_) {
        return true;
    }
    int status = 0;
    const pid_t result = waitpid(identifier_, &status, WNOHANG);
    if (result == identifier_) {
        status_ = status;
    }
    // An error tells that the end is not to be had any more.
    ended_ = result == identifier_ || (result < 0 && errno != EINTR);
    return ended_;
}

}  // namespace vornic::platform
