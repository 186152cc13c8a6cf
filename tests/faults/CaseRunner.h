#ifndef VORNIC_TESTS_FAULTS_CASE_RUNNER_H
#define VORNIC_TESTS_FAULTS_CASE_RUNNER_H

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tests/faults/AllocationPlan.h"
#include "tests/faults/FaultCase.h"
#include "tests/faults/Judge.h"
#include "tests/faults/Scene.h"

namespace vornic::test {

/// What a case came to.
struct CaseOutcome {
    /// False when this machine or this build cannot have the case.
    bool tried = false;
    std::vector<std::string> wrongs;
    /// What happened, for people.
    std::string story;
};

/// Lists cases, and tries them.
class CaseRunner {
  public:
    explicit CaseRunner(const Stage& stage) : stage_(stage) {}

    /// Every case that the wanted scenes have, by kind: "kills", "errors", "lasting",
    /// "allocations", "limits", "volumes", "races", "pairs". Runs each of those scenes without
    /// faults first.
    /// @param isWanted asked for the name of every scene
    [[nodiscard]] std::map<std::string, std::vector<FaultCase>> list(
        const std::function<bool(const std::string& scene)>& isWanted);
    [[nodiscard]] CaseOutcome run(const FaultCase& tried);
    /// The calls of a scene without faults; none where it cannot be had.
    [[nodiscard]] std::vector<SystemCall> callsOf(const std::string& scene);
    /// True when a scene without faults did not do what it is for.
    [[nodiscard]] bool hasBadBaseline() const { return hasBadBaseline_; }

  private:
    struct Prepared {
        const SceneKind* kind = nullptr;
        Baseline baseline;
        // Of the bytes that races write; empty when there are none.
        Baseline newer;
        std::array<std::uint64_t, 2> allocations{};
    };
    using Lists = std::map<std::string, std::vector<FaultCase>>;

    const Prepared* prepare(const std::string& name);
    [[nodiscard]] std::array<std::uint64_t, 2> countAllocations(const SceneKind& kind) const;
    static void listCalls(const Prepared& prepared, Lists& lists);
    static void listPlaces(const Prepared& prepared, Lists& lists);
    void listLimits(const Prepared& prepared, Lists& lists) const;

    CaseOutcome runCallFault(const Prepared& prepared, const FaultCase& tried, CallPlace place);
    CaseOutcome runAllocation(const Prepared& prepared, const FaultCase& tried, CallPlace place);
    CaseOutcome runLimit(const Prepared& prepared, const FaultCase& tried, int resource);
    CaseOutcome runVolume(const Prepared& prepared, const FaultCase& tried);
    CaseOutcome runRace(const Prepared& prepared, const FaultCase& tried, CallPlace place);
    CaseOutcome runPair(const Prepared& prepared, const FaultCase& tried, CallPlace place);
    [[nodiscard]] CaseOutcome conclude(const Scene& scene, const Prepared& prepared,
                                       const Demands& demands, const ProgramEnd& end) const;

    const Stage& stage_;
    std::map<std::string, Prepared> prepared_;
    bool hasBadBaseline_ = false;
};

}  // namespace vornic::test

#endif
