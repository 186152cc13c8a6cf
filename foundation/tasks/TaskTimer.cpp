#include "foundation/tasks/TaskTimer.h"

namespace vornic {

void TaskTimer::cancel() {
    const std::lock_guard lock(mutex_);
    cancelled_ = true;
    changed_.notify_all();
}

bool TaskTimer::isCancelled() const {
    const std::lock_guard lock(mutex_);
    return cancelled_;
}

bool TaskTimer::isCancelledWithin(std::chrono::seconds time) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, time, [this] { return cancelled_; });
}

void TaskTimer::noteAction() {
    const std::lock_guard lock(mutex_);
    acted_ = true;
    changed_.notify_all();
}

void TaskTimer::waitForAction() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return acted_ || cancelled_; });
}

}  // namespace vornic
