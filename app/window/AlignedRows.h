#ifndef VORNIC_APP_WINDOW_ALIGNED_ROWS_H
#define VORNIC_APP_WINDOW_ALIGNED_ROWS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "app/window/SourceText.h"
#include "mend/LineDifference.h"

namespace vornic {

/// Two texts beside each other: rows that belong together stand at one height, and where one text
/// has more rows the other has a gap.
struct AlignedRows {
    /// In the place of a row: none.
    static constexpr std::size_t kGap = static_cast<std::size_t>(-1);

    /// Rows of the texts, the same number of either.
    std::vector<std::size_t> left;
    std::vector<std::size_t> right;
    /// Whether the rows of a height differ.
    std::vector<bool> isChanged;
    /// The height at which each change begins.
    std::vector<std::size_t> changes;

    /// @param lines what differs, from the left text to the right one
    [[nodiscard]] static AlignedRows of(const SourceText& left, const SourceText& right,
                                        const std::vector<LineChange>& lines);
};

}  // namespace vornic

#endif
