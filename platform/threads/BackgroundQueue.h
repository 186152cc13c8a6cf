#ifndef VORNIC_PLATFORM_THREADS_BACKGROUND_QUEUE_H
#define VORNIC_PLATFORM_THREADS_BACKGROUND_QUEUE_H

#include <cstddef>
#include <functional>

namespace vornic::platform {

/// The process's queue for short work that nobody waits for. Its threads end when there is nothing
/// more to do; `joinDetachedThreads` waits for them.
class BackgroundQueue {
  public:
    /// The most functions that run at the same time; more than that wait for their turn.
    static constexpr std::size_t kMostThreads = 64;

    /// Hands a function over and returns at once. Functions are begun in the order in which they
    /// were handed over and run at the same time as each other. A function must not throw. It runs
    /// in place when the system has no thread to give and none is at work. Any thread.
    static void perform(std::function<void()> function);
};

}  // namespace vornic::platform

#endif
