#ifndef VORNIC_TESTS_SUPPORT_FAKES_RECORDING_SWAP_OBSERVER_H
#define VORNIC_TESTS_SUPPORT_FAKES_RECORDING_SWAP_OBSERVER_H

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "job/SwapObserver.h"

namespace vornic::test {

/// Writes down what a swap tells, and does at its points what a test wants to happen there.
class RecordingSwapObserver : public SwapObserver {
  public:
    /// "will", "did PATH", "did not", in order.
    std::vector<std::string> told;
    std::vector<SwapIntent> intents;
    /// Run when the point is reached, each once.
    std::map<SwapPoint, std::function<void()>> at;
    /// When set, a swap is refused with it.
    ErrorSlot refusal;

    bool willSwap(const SwapIntent& intent, ErrorSlot& error) override {
        told.emplace_back("will");
        intents.push_back(intent);
        error = refusal;
        return !refusal;
    }
    void didSwap(const SwapIntent& /*intent*/, const std::string& original) override {
        told.push_back("did " + original);
    }
    void didNotSwap(const SwapIntent& /*intent*/) override { told.emplace_back("did not"); }
    void reached(SwapPoint point) override {
        if (const auto found = at.find(point); found != at.end()) {
            const std::function<void()> act = std::move(found->second);
            at.erase(found);
            act();
        }
    }
};

}  // namespace vornic::test

#endif
