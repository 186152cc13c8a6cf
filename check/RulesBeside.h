#ifndef VORNIC_CHECK_RULES_BESIDE_H
#define VORNIC_CHECK_RULES_BESIDE_H

#include <functional>
#include <future>

#include "report/Findings.h"

namespace vornic {

/// Rules that find into findings of their own, so that they can run on a thread beside the others.
/// What a check says is the same with and without the thread. It waits for its thread when it goes.
class RulesBeside {
  public:
    using Rules = std::function<void(Findings& findings)>;

    /// @param onThread false to run the rules in `addTo`, as they do when there is no thread to be
    ///     had.
    /// @param rules read what nobody changes meanwhile.
    RulesBeside(bool onThread, const Findings& findings, Rules rules);

    /// Waits for the rules and adds what they found behind what is there. What they raised passes
    /// on. Once.
    void addTo(Findings& findings) { findings.append(found_.get()); }

  private:
    std::future<Findings> found_;
};

}  // namespace vornic

#endif
