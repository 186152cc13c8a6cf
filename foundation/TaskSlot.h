#ifndef VORNIC_FOUNDATION_TASK_SLOT_H
#define VORNIC_FOUNDATION_TASK_SLOT_H

#include <memory>
#include <mutex>
#include <utility>

#include "platform/Process.h"

namespace vornic {

/// A place in which a run leaves its process object, before the launch, for another thread to find.
/// Any thread.
class TaskSlot {
  public:
    [[nodiscard]] std::shared_ptr<platform::Process> process() const {
        const std::lock_guard lock(mutex_);
        return process_;
    }
    void set(std::shared_ptr<platform::Process> process) {
        // The one that was there may go with this, which must not happen under the lock.
        const std::lock_guard lock(mutex_);
        process_.swap(process);
    }

  private:
    mutable std::mutex mutex_;
    std::shared_ptr<platform::Process> process_;
};

}  // namespace vornic

#endif
