#ifndef VORNIC_PLATFORM_THREADS_MAIN_THREAD_H
#define VORNIC_PLATFORM_THREADS_MAIN_THREAD_H

#include <chrono>
#include <functional>
#include <memory>

namespace vornic::platform {

/// The loop that runs on the main thread. The plain one of this folder serves programs without a
/// window and tests; a desktop application puts its toolkit's loop in its place.
class MainThreadLoop {
  public:
    virtual ~MainThreadLoop() = default;
    /// Queues a function for the main thread. Any thread; returns at once.
    virtual void post(std::function<void()> function) = 0;
    /// Queues a function that the main thread runs once the delay has passed, at the next turn of
    /// the loop; a delay below zero counts as zero. Functions with the same due time run in the
    /// order of the calls. What is not due when the loop ends is never run. Any thread; returns at
    /// once.
    virtual void postAfter(std::chrono::milliseconds delay, std::function<void()> function) = 0;
    /// On the main thread: runs at most one pending event, waiting at most `limit` for one.
    /// @return true when one was run.
    virtual bool dispatchOne(std::chrono::milliseconds limit) = 0;
};

/// The first-in first-out loop without any toolkit.
class PlainRunLoop : public MainThreadLoop {
  public:
    PlainRunLoop();
    ~PlainRunLoop() override;
    void post(std::function<void()> function) override;
    void postAfter(std::chrono::milliseconds delay, std::function<void()> function) override;
    bool dispatchOne(std::chrono::milliseconds limit) override;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Runs functions on the main thread. Which thread that is, is settled by `adopt`, or else by the
/// thread that initialised the program's static objects.
class MainThread {
  public:
    /// Makes the calling thread the main thread.
    static void adopt();
    [[nodiscard]] static bool isCurrent();
    /// Puts another loop in place (null: a plain one). Main thread, before other threads run.
    static void setLoop(std::shared_ptr<MainThreadLoop> loop);

    /// Runs the function on the main thread and waits until it has run. On the main thread it runs
    /// in place. An exception that it throws is thrown to the caller. After `shutdown` a call from
    /// another thread returns at once without running it.
    static void performAndWait(const std::function<void()>& function);
    /// Hands the function over and returns at once, on the main thread too.
    static void perform(std::function<void()> function);
    /// Hands the function over, to be run on the main thread once the delay has passed, and returns
    /// at once. `MainThreadLoop::postAfter` of the loop in place. Any thread.
    static void performAfter(std::chrono::milliseconds delay, std::function<void()> function);
    /// `MainThreadLoop::dispatchOne` of the loop in place.
    static bool dispatchOne(std::chrono::milliseconds limit);

    /// Ends the waiting of every hand-over, now and from now on, so that quitting never waits for a
    /// thread that waits for the main thread.
    static void shutdown();
    /// True from `shutdown` on, for loops that wait by themselves. Any thread.
    [[nodiscard]] static bool isShutDown();
    /// Undoes `shutdown`, for tests.
    static void restart();
};

}  // namespace vornic::platform

#endif
