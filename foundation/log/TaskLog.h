#ifndef VORNIC_FOUNDATION_LOG_TASK_LOG_H
#define VORNIC_FOUNDATION_LOG_TASK_LOG_H

#include <memory>
#include <string_view>

#include "foundation/log/LogFile.h"

namespace vornic {

/// What an application that runs as a scheduled task has to say, for somebody who looks later:
/// "NAME.1.task.log" in the user's log folder. Nothing depends on it, so what cannot be written is
/// left out. One thread.
class TaskLog {
  public:
    /// Begins the log anew, where there is a folder for logs.
    explicit TaskLog(std::string_view name);

    void append(std::string_view line);

  private:
    std::shared_ptr<LogFile> file_;
};

}  // namespace vornic

#endif
