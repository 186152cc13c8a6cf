#ifndef VORNIC_PLATFORM_LOCKS_BYTE_LOCK_H
#define VORNIC_PLATFORM_LOCKS_BYTE_LOCK_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "base/Error.h"
#include "platform/files/FileDescriptor.h"

namespace vornic::platform {

/// A lock on one byte of a lock file: many locks in one file, each known by its number, for one
/// holder of all processes each. The byte need not exist. It binds only those who ask and ends with
/// the object and with the process, however that ends. Any thread.
class ByteLock {
  public:
    /// Waits for the lock, but not for a program that never gives it back. The lock file is made
    /// with mode 0600 when it is missing. A volume without locks gives the lock at once.
    /// @return nothing, with the slot filled, when it could not be had within the limit or the file
    ///     cannot be opened or made.
    [[nodiscard]] static std::optional<ByteLock> acquire(const std::string& path,
                                                         std::uint64_t byte,
                                                         std::chrono::milliseconds limit,
                                                         ErrorSlot& error);

    /// Whether somebody holds the lock, this process included. True also where that cannot be
    /// determined.
    [[nodiscard]] static bool isHeld(const std::string& path, std::uint64_t byte);

  private:
    explicit ByteLock(FileDescriptor file) : file_(std::move(file)) {}

    FileDescriptor file_;
};

}  // namespace vornic::platform

#endif
