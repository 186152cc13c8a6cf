#ifndef VORNIC_PLATFORM_PROCESSES_SPAWNED_PROCESS_H
#define VORNIC_PLATFORM_PROCESSES_SPAWNED_PROCESS_H

#include <chrono>
#include <mutex>
#include <optional>

#include <sys/types.h>

#include "platform/files/FileDescriptor.h"

namespace vornic::platform {

/// A child process from its start until its end has been taken note of. The end is fetched exactly
/// once, under a lock, so that no zombie stays and no signal reaches a stranger that was given the
/// same number. Any thread.
class SpawnedProcess {
  public:
    /// Takes charge of a child that nobody else waits for.
    explicit SpawnedProcess(pid_t identifier);

    [[nodiscard]] pid_t identifier() const { return identifier_; }
    /// A descriptor that becomes readable when the process ends; -1 on a system without such.
    [[nodiscard]] int endDescriptor() const { return endDescriptor_.get(); }

    /// Fetches the end if the process has ended.
    [[nodiscard]] bool hasEnded();
    void waitForEnd();
    /// Sends a signal unless the process has ended.
    void sendSignal(int number);
    /// The status as waitpid(2) gives it; nothing before the end, or when somebody else fetched it.
    [[nodiscard]] std::optional<int> status();

  private:
    /// With the lock held.
    bool fetchEnd();

    const pid_t identifier_;
    const FileDescriptor endDescriptor_;
    std::mutex mutex_;
    bool ended_ = false;
    std::optional<int> status_;
};

/// How often the end of a process is looked for on a system that does not tell it.
inline constexpr std::chrono::milliseconds kEndPollingInterval{10};

}  // namespace vornic::platform

#endif
