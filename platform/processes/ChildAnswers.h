#ifndef VORNIC_PLATFORM_PROCESSES_CHILD_ANSWERS_H
#define VORNIC_PLATFORM_PROCESSES_CHILD_ANSWERS_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/files/FileDescriptor.h"
#include "platform/processes/SpawnedProcess.h"

namespace vornic::platform {

/// Answers that may never come, because a server has gone: a child process asks the system for
/// them. Nothing that this process does waits for it, its end included: a child that is stuck in
/// the kernel is killed and left behind, without any file of this process but its own end of a
/// pipe.
///
/// One thread; several objects at once are several children at work.
class ChildAnswers {
  public:
    /// Called in the child, with 0, 1 and so on until it returns nothing. There it has this
    /// process's memory as it was and no other thread: it may use memory and system calls, and
    /// nothing that another thread may have held locked.
    using Question = std::function<std::optional<std::string>(std::size_t)>;

    /// Starts the child. When the system has none to give, there are no answers.
    explicit ChildAnswers(const Question& question);
    /// Kills the child if it is still at work.
    ~ChildAnswers();
    ChildAnswers(const ChildAnswers&) = delete;
    ChildAnswers& operator=(const ChildAnswers&) = delete;

    /// The next answer.
    /// @param limit how long there may be none, counted from the last one, or from the start.
    /// @return nothing at the end of the answers, and when the limit has passed; then there are no
    ///     more, and `isSilent` says so.
    [[nodiscard]] std::optional<std::string> next(std::chrono::milliseconds limit);
    /// Whether the answers ended before their end: the limit passed, the process was asked to end,
    /// or the child died.
    [[nodiscard]] bool isSilent() const { return isSilent_; }

  private:
    [[nodiscard]] bool fill(std::chrono::milliseconds limit);
    void giveUp();

    std::shared_ptr<SpawnedProcess> child_;
    FileDescriptor answers_;
    std::string read_;
    std::size_t taken_ = 0;
    std::chrono::steady_clock::time_point heard_;
    bool isSilent_ = false;
    bool hasEnded_ = false;
};

}  // namespace vornic::platform

#endif
