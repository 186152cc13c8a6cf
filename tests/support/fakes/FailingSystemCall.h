#ifndef VORNIC_TESTS_SUPPORT_FAKES_FAILING_SYSTEM_CALL_H
#define VORNIC_TESTS_SUPPORT_FAKES_FAILING_SYSTEM_CALL_H

#include <cstdint>
#include <functional>

#include <sys/syscall.h>

namespace vornic::test {

/// Makes one system call fail from now on, on this thread and those that it starts, without being
/// made: what a volume or a kernel without it does. Nothing undoes it, so that only a
/// `ChildProcess` may call this.
/// @param number a `SYS_…` constant
/// @param errorNumber the errno value that each call yields
/// @param flags when not 0, only calls that have one of these bits in the argument with that index
/// @return false when the system takes no filters.
[[nodiscard]] bool failSystemCall(long number, int errorNumber, std::uint32_t flags = 0,
                                  unsigned argument = 0);

/// Does something each time that this thread is about to make a system call. Nothing undoes it, so
/// that only a `ChildProcess` may call this.
/// @param number a `SYS_…` constant
/// @param act called on another thread before the call is made; returns 0 to let it be made, or the
///     errno value that it yields without being made
/// @return false when the system takes no such filters.
[[nodiscard]] bool interceptSystemCall(long number, std::function<int()> act);

/// Makes one system call of this thread fail, without being made, the next time.
[[nodiscard]] bool failSystemCallOnce(long number, int errorNumber);

}  // namespace vornic::test

#endif
