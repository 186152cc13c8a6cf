#ifndef VORNIC_PLATFORM_PROCESSES_TERMINATION_H
#define VORNIC_PLATFORM_PROCESSES_TERMINATION_H

#include <atomic>
#include <cstddef>
#include <functional>

namespace vornic::platform {

/// Observers of the end of the application. A program posts the notice once, before `main` returns.
using WillTerminateObserver = std::function<void()>;
/// Registers an observer and returns its token. Any thread.
std::size_t addWillTerminateObserver(WillTerminateObserver observer);
/// Removes an observer, which may be the one that is being called; an unknown token is ignored. Any
/// thread.
void removeWillTerminateObserver(std::size_t token);
/// Calls every observer in the order of registration, on the calling thread.
void postWillTerminate();

/// Installs handlers for SIGINT, SIGTERM and SIGHUP that only note the signal, so that the program
/// ends at its next check point. System calls that the signal meets return early (no SA_RESTART).
/// A second signal of these ends the process at once.
void catchInterruptions();
/// The number of the signal that was noted, or 0. Safe to read from any thread at any time.
[[nodiscard]] int interruption();
/// The flag behind `interruption`, for loops that poll it; null is never returned.
[[nodiscard]] const std::atomic<int>* interruptionFlag();
/// A descriptor that can be read from once a signal has been noted, for event loops that sleep; it
/// stays open until the process ends. -1 before `catchInterruptions`, and where the system has none
/// to give.
[[nodiscard]] int interruptionDescriptor();

}  // namespace vornic::platform

#endif
