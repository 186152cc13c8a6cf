#ifndef VORNIC_FOUNDATION_TASKS_TASK_TIMER_H
#define VORNIC_FOUNDATION_TASKS_TASK_TIMER_H

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace vornic {

/// What the watchdog of one timed run waits for: the end of the run, the time, the time-out action.
/// Any thread.
class TaskTimer {
  public:
    /// The run has ended; whoever waits here wakes.
    void cancel();
    [[nodiscard]] bool isCancelled() const;
    /// @return true when the run ended before the time had passed.
    [[nodiscard]] bool isCancelledWithin(std::chrono::seconds time);
    /// The time-out action has run; whoever waits for it wakes.
    void noteAction();
    /// Returns when the action has run or the run has ended.
    void waitForAction();

  private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    bool cancelled_ = false;
    bool acted_ = false;
};

}  // namespace vornic

#endif
