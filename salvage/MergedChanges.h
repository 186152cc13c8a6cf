#ifndef VORNIC_SALVAGE_MERGED_CHANGES_H
#define VORNIC_SALVAGE_MERGED_CHANGES_H

#include <algorithm>
#include <array>
#include <cstddef>

#include "salvage/Change.h"

namespace vornic::salvage {

/// What makes pieces whole by themselves, what makes tags fit, and what is between documents. Of
/// changes that are as good as each other those of the first list come first.
using ChangeLists = std::array<Changes, 3>;

/// Goes through several lists of changes as if they were one.
class MergedChanges {
  public:
    /// @param lists must outlive this.
    /// @param offset of the first change.
    MergedChanges(const ChangeLists& lists, std::size_t offset) : lists_(lists) {
        for (std::size_t i = 0; i < lists.size(); ++i) {
            const auto first = std::lower_bound(
                lists[i].begin(), lists[i].end(), offset,
                [](const Change& change, std::size_t limit) { return change.offset < limit; });
            next_[i] = static_cast<std::size_t>(first - lists[i].begin());
        }
    }

    /// @return null behind the last one.
    [[nodiscard]] const Change* next() {
        const Change* best = nullptr;
        std::size_t from = 0;
        for (std::size_t i = 0; i < lists_.size(); ++i) {
            const Change* const change =
                next_[i] < lists_[i].size() ? &lists_[i][next_[i]] : nullptr;
            if (change != nullptr && (best == nullptr || isBefore(*change, *best))) {
                best = change;
                from = i;
            }
        }
        next_[from] += best == nullptr ? 0 : 1;
        return best;
    }

  private:
    const ChangeLists& lists_;
    std::array<std::size_t, std::tuple_size_v<ChangeLists>> next_{};
};

}  // namespace vornic::salvage

#endif
