#ifndef VORNIC_FOUNDATION_TASKS_TASK_DELEGATE_H
#define VORNIC_FOUNDATION_TASKS_TASK_DELEGATE_H

#include <any>
#include <functional>
#include <string>
#include <string_view>

namespace vornic {

class QMTaskEx;

/// Receives what a tool writes in an asynchronous run.
class TaskDelegate {
  public:
    /// Takes one chunk of the tool's standard output, or the empty one that ends it, the run's
    /// instance, and the object that the run was started with (null when there was none). Called on
    /// the reading thread.
    using Operation =
        std::function<void(const std::string& data, QMTaskEx& task, const std::any* object)>;

    virtual ~TaskDelegate() = default;
    /// The operation of that name; an empty one when this delegate does not answer to it. Called on
    /// the reading thread, for each chunk.
    virtual Operation operationForSelector(std::string_view selector) = 0;
};

}  // namespace vornic

#endif
