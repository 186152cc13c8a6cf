#ifndef VORNIC_PLATFORM_LOCKS_FILE_LOCK_H
#define VORNIC_PLATFORM_LOCKS_FILE_LOCK_H

#include <chrono>
#include <optional>
#include <string>

#include "base/Error.h"
#include "platform/files/FileDescriptor.h"

namespace vornic::platform {

/// The right to read a file and write it anew, which one thread of all processes has at a time:
/// others that ask for it wait. It stands in a lock file beside the file, ".<name>.lock", which is
/// made when missing and stays. It binds only those who ask, and ends with the object and with the
/// process. Any thread; a thread must not ask twice.
class FileLock {
  public:
    /// Waits for the lock, but not for a program that never gives it back. A volume without locks
    /// gives it at once.
    /// @return nothing, with the slot filled, when it could not be had within the limit or the lock
    ///     file cannot be opened or made.
    [[nodiscard]] static std::optional<FileLock> acquire(const std::string& path,
                                                         std::chrono::milliseconds limit,
                                                         ErrorSlot& error);

  private:
    explicit FileLock(FileDescriptor file) : file_(std::move(file)) {}

    FileDescriptor file_;
};

}  // namespace vornic::platform

#endif
