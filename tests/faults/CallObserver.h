#ifndef VORNIC_TESTS_FAULTS_CALL_OBSERVER_H
#define VORNIC_TESTS_FAULTS_CALL_OBSERVER_H

#include "tests/faults/SystemCall.h"

namespace vornic::test {

/// What becomes of a system call.
struct Verdict {
    enum class Kind {
        proceed,
        /// It is not made and yields the error.
        fail,
        /// It is made and yields the error all the same.
        failAfter,
        /// The program is killed before it is made.
        killBefore,
        /// The program is killed when it has been made.
        killAfter,
        /// It is asked for half as many bytes.
        fallShort,
    };
    Kind kind = Kind::proceed;
    int errorNumber = 0;
};

/// Sees the system calls of a program before they are made, and decides on each. This one lets all
/// of them pass.
class CallObserver {
  public:
    CallObserver() = default;
    virtual ~CallObserver() = default;
    CallObserver(const CallObserver&) = delete;
    CallObserver& operator=(const CallObserver&) = delete;

    /// The whole program, but for threads that are in a call, stands still meanwhile.
    virtual Verdict look(const SystemCall& /*call*/) { return {}; }
    /// True for a call whose paths it wants to know; to find them out takes time.
    [[nodiscard]] virtual bool wantsPaths(const SystemCall& /*call*/) const { return false; }
    /// True when it needs to see no more calls.
    [[nodiscard]] virtual bool isDone() const { return true; }
};

}  // namespace vornic::test

#endif
