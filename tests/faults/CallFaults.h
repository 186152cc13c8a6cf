#ifndef VORNIC_TESTS_FAULTS_CALL_FAULTS_H
#define VORNIC_TESTS_FAULTS_CALL_FAULTS_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/faults/CallObserver.h"

namespace vornic::test {

/// The names of the faults that make sense for a call, "kill-before" and "EIO" among them.
[[nodiscard]] std::vector<std::string> killsFor(const SystemCall& call);
[[nodiscard]] std::vector<std::string> errorsFor(const SystemCall& call);
/// Those that begin at a call and go on to the program's end: a volume that has gone or is full,
/// no more descriptors, no more memory.
[[nodiscard]] std::vector<std::string> lastingFor(const SystemCall& call);

/// Lets the named fault happen at a place.
class CallFault : public CallObserver {
  public:
    CallFault(std::string fault, CallPlace place);
    Verdict look(const SystemCall& call) override;
    [[nodiscard]] bool wantsPaths(const SystemCall& call) const override {
        return call.place == place_;
    }
    [[nodiscard]] bool isDone() const override;
    /// The call that it happened to first; nothing when there was none that it makes sense for.
    [[nodiscard]] const std::optional<SystemCall>& struck() const { return struck_; }

  private:
    [[nodiscard]] Verdict verdictFor(const SystemCall& call) const;

    std::string fault_;
    CallPlace place_;
    std::optional<SystemCall> struck_;
};

/// Does something at a place, while the program stands still.
class CallAction : public CallObserver {
  public:
    CallAction(CallPlace place, std::function<void()> action)
        : place_(place), action_(std::move(action)) {}
    Verdict look(const SystemCall& call) override {
        if (call.place == place_) {
            done_ = true;
            action_();
        }
        return {};
    }
    [[nodiscard]] bool isDone() const override { return done_; }

  private:
    CallPlace place_;
    std::function<void()> action_;
    bool done_ = false;
};

/// Sees whether a program has come to a call of its own.
class Beginning : public CallObserver {
  public:
    Verdict look(const SystemCall& /*call*/) override {
        hasBegun_ = true;
        return {};
    }
    [[nodiscard]] bool isDone() const override { return hasBegun_; }

  private:
    bool hasBegun_ = false;
};

/// The place that a text such as "0.57" names.
[[nodiscard]] std::optional<CallPlace> callPlaceOf(const std::string& text);

}  // namespace vornic::test

#endif
