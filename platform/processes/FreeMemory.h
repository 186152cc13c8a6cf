#ifndef VORNIC_PLATFORM_PROCESSES_FREE_MEMORY_H
#define VORNIC_PLATFORM_PROCESSES_FREE_MEMORY_H

#include <cstdint>
#include <optional>

namespace vornic::platform {

/// How many bytes the machine can give to programs now without taking them from others: memory that
/// is free or could be freed at once, and swap space (`/proc/meminfo`), or what the limit of this
/// process's address space allows when that is less. @return nothing when the system does not say.
/// Any thread.
[[nodiscard]] std::optional<std::uint64_t> freeMemory();

/// Gives the system back what this process has freed and its allocator keeps for later: for a step
/// that needs pages of its own after one that freed much. Takes milliseconds; any thread.
void giveFreedMemoryBack();

}  // namespace vornic::platform

#endif
