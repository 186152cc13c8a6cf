#ifndef VORNIC_TESTS_FAULTS_ALLOCATION_PLAN_H
#define VORNIC_TESTS_FAULTS_ALLOCATION_PLAN_H

#include <array>
#include <atomic>
#include <cstdint>

namespace vornic::test {

/// Names the file that holds the plan.
inline constexpr const char* kAllocationPlanVariable = "VORNIC_FAULTS_ALLOCATIONS";

/// Names how many seconds later than now it is for the program.
inline constexpr const char* kLaterVariable = "VORNIC_FAULTS_LATER";

/// What a program under test and its tester share, as a file that both map.
struct AllocationPlan {
    /// The allocations so far: of the main thread, of all others.
    std::array<std::atomic<std::uint64_t>, 2> made;
    /// Which of the two counts is meant.
    std::uint64_t thread;
    /// The one that fails, from 0; beyond all of them for none.
    std::uint64_t number;
    /// Not 0: all that follow fail too, whichever thread makes them.
    std::uint64_t all;
    /// How many failed because of their number.
    std::atomic<std::uint64_t> failed;
    /// How many of all that failed libplist asked for, which looks at no result and ends the
    /// program itself.
    std::atomic<std::uint64_t> ofLibplist;
};

}  // namespace vornic::test

#endif
