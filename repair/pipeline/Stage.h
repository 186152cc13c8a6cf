#ifndef VORNIC_REPAIR_PIPELINE_STAGE_H
#define VORNIC_REPAIR_PIPELINE_STAGE_H

#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

#include "base/StopToken.h"
#include "repair/pipeline/RepairResult.h"

namespace vornic {

/// How a run ends before the file could be judged.
struct RunEnd {
    /// `cancelled` or `stopped`.
    RepairOutcome outcome = RepairOutcome::stopped;
    std::optional<ClosingMessage> closing{};
};

[[nodiscard]] inline RunEnd cancelledRun() {
    return {RepairOutcome::cancelled};
}

/// What a stage has to hand on when it hands on nothing.
struct Done {};

/// What a stage of a run hands to the next one, or how the run has ended in it.
template <typename Value>
class [[nodiscard]] Stage {
  public:
    Stage(Value value) : result_(std::move(value)) {}
    Stage(RunEnd end) : result_(std::move(end)) {}

    /// Null when the run goes on.
    [[nodiscard]] const RunEnd* end() const { return std::get_if<RunEnd>(&result_); }

    /// Runs the next stage with what this one hands on, unless the run has ended.
    template <typename Next>
    [[nodiscard]] std::invoke_result_t<Next, Value> then(Next next) && {
        if (RunEnd* const end = std::get_if<RunEnd>(&result_)) {
            return std::move(*end);
        }
        return next(std::get<Value>(std::move(result_)));
    }

  private:
    std::variant<Value, RunEnd> result_;
};

/// The value, unless the run was stopped meanwhile.
template <typename Value>
Stage<Value> unlessCancelled(const StopToken& stop, Value value) {
    if (stop.stopRequested()) {
        return cancelledRun();
    }
    return value;
}

}  // namespace vornic

#endif
