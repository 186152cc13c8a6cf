#ifndef VORNIC_PLATFORM_THREAD_H
#define VORNIC_PLATFORM_THREAD_H

#include <chrono>
#include <functional>

namespace vornic::platform {

/// Starts a thread that nobody waits for by itself. The function must not throw. Programs call
/// `joinDetachedThreads` before `main` returns, so that no thread outlives it.
/// @throws platform::Exception when the system has no thread to give.
void detachNewThread(std::function<void()> function);

/// Waits for every thread that `detachNewThread` started. The main thread goes on dispatching its
/// events meanwhile. @return false when some still run after `limit`.
bool joinDetachedThreads(std::chrono::milliseconds limit);

}  // namespace vornic::platform

#endif
