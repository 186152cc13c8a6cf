#ifndef VORNIC_MEND_LINE_DIFFERENCE_H
#define VORNIC_MEND_LINE_DIFFERENCE_H

#include <cstddef>
#include <string_view>
#include <vector>

namespace vornic {

/// Lines of an old text that were replaced by lines of a new one; either may be none.
struct LineChange {
    /// The first line, from 0.
    std::size_t oldLine = 0;
    std::size_t oldCount = 0;
    std::size_t newLine = 0;
    std::size_t newCount = 0;
    friend bool operator==(const LineChange&, const LineChange&) = default;
};

/// What differs between two texts whose edits nobody knows, line by line, in their order. It is no
/// shortest list: lines that both texts have once are matched, what lies between them is compared
/// where it is short, and counts as replaced where it is long. Lines without their ends.
/// @param isIndentationIgnored whether lines are the same that differ in white space at their
///     beginning and end alone
[[nodiscard]] std::vector<LineChange> lineDifference(const std::vector<std::string_view>& oldLines,
                                                     const std::vector<std::string_view>& newLines,
                                                     bool isIndentationIgnored);

/// The line of the new text that a line of the old one has become, or stands where it stood: lines
/// of a change follow each other. Logarithmic in the number of changes.
/// @param oldLine from 0. @return from 0; it may be one behind the last line.
[[nodiscard]] std::size_t newLineOf(std::size_t oldLine, const std::vector<LineChange>& changes);

}  // namespace vornic

#endif
