#ifndef VORNIC_PLATFORM_THREADS_THREAD_H
#define VORNIC_PLATFORM_THREADS_THREAD_H

#include <chrono>
#include <functional>

namespace vornic::platform {

/// Starts a thread that nobody waits for by itself. The function must not throw. Programs call
/// `joinDetachedThreads` before `main` returns, so that no thread outlives it.
/// @throws platform::Exception when the system has no thread to give.
void detachNewThread(std::function<void()> function);

/// The same for a thread that may wait for long: `joinDetachedThreads` calls `askToEnd` once, on
/// the joining thread, so that the function returns soon. The call may come at any time until the
/// thread has ended and must neither block nor throw.
void detachNewThread(std::function<void()> function, std::function<void()> askToEnd);

/// Starts a thread that nobody waits for, not even the end of the program: for a question that may
/// never be answered, such as one to the server of a volume that has gone. The function must own
/// what it touches and must not throw.
/// @throws platform::Exception when the system has no thread to give.
void startUnattendedThread(std::function<void()> function);

/// Runs a function that may wait for long, such as for an answer of the user, and returns when it
/// has ended. Called on the main thread, it runs the function on another one, where there is one to
/// be had, and dispatches the main thread's events meanwhile, so that the windows stay live; it
/// returns early when the program quits (`MainThread::shutdown`), and the function, which then runs
/// on, must own what it touches. Elsewhere it runs in place. The function must not throw.
/// @return whether the function has ended.
[[nodiscard]] bool performWhileDispatching(const std::function<void()>& function);

/// Asks those threads that `detachNewThread` started to end that can be asked, and waits for all of
/// them. The main thread goes on dispatching its events meanwhile. @return false when some still
/// run after `limit`.
bool joinDetachedThreads(std::chrono::milliseconds limit);

}  // namespace vornic::platform

#endif
