#ifndef VORNIC_TESTS_JOB_BATCH_FAILING_ALLOCATIONS_H
#define VORNIC_TESTS_JOB_BATCH_FAILING_ALLOCATIONS_H

#include <cstddef>

namespace vornic::test {

/// Makes `operator new` of this program fail on all threads, while it lives. One at a time.
class FailingAllocations {
  public:
    enum class Which { one, allFromThereOn };

    /// @param number of the allocation that fails, from 0
    FailingAllocations(std::size_t number, Which which);
    ~FailingAllocations();
    FailingAllocations(const FailingAllocations&) = delete;
    FailingAllocations& operator=(const FailingAllocations&) = delete;

    /// Memory is there again.
    static void end();
    /// How many allocations were asked for, and how many of them failed.
    [[nodiscard]] static std::size_t made();
    [[nodiscard]] static std::size_t failed();
};

}  // namespace vornic::test

#endif
