#ifndef VORNIC_TESTS_FAULTS_SYSTEM_CALL_H
#define VORNIC_TESTS_FAULTS_SYSTEM_CALL_H

#include <array>
#include <cstdint>
#include <string>

#include <sys/types.h>

namespace vornic::test {

/// Where in a run a system call stands: which thread makes it, in the order of their starts, and
/// which of that thread's calls it is, from 0. The loader's calls and those of other kinds, waiting
/// among them, do not count. Threads run side by side, so that only the order within one is the
/// same in every run, and that not always: the one that finds the log idle writes to it.
struct CallPlace {
    int thread = 0;
    long ordinal = 0;
    friend bool operator==(const CallPlace&, const CallPlace&) = default;
};

/// "thread.ordinal"
[[nodiscard]] std::string textOf(CallPlace place);

/// A system call that a program is about to make.
struct SystemCall {
    CallPlace place;
    long number = -1;
    std::array<std::uint64_t, 6> arguments{};
    /// The paths among the arguments, or the path of the first one's descriptor, for people.
    std::string paths;
};

/// "openat /home/anna/Cut.xml", as far as the call is known here.
[[nodiscard]] std::string textOf(const SystemCall& call);

/// The name of a call, or its number.
[[nodiscard]] std::string nameOfCall(long number);

/// What a call works on.
enum class CallKind {
    /// Makes, opens, reads, changes, moves or removes files.
    file,
    /// Asks for memory.
    memory,
    /// Starts a thread or process.
    thread,
    /// Others, which do not fail in practice or whose failure says nothing about files; no observer
    /// sees them.
    other,
};

[[nodiscard]] CallKind kindOfCall(long number);
/// True for a call that gives a new descriptor.
[[nodiscard]] bool opensDescriptor(long number);
/// True for a call that takes room on a volume.
[[nodiscard]] bool takesRoom(const SystemCall& call);
/// True for a call that a signal can end before it has done anything.
[[nodiscard]] bool canBeInterrupted(long number);
/// True for a call that some volumes carry out and yet report as failed.
[[nodiscard]] bool mayFailAfterwards(long number);
/// True for a call that may do less than it was asked to.
[[nodiscard]] bool mayFallShort(long number);
/// True for a call on standard output or standard error.
[[nodiscard]] bool isOnStandardStream(const SystemCall& call);

}  // namespace vornic::test

#endif
