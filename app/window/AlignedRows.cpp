#include "app/window/AlignedRows.h"

#include <algorithm>

namespace vornic {

namespace {

// The rows of some lines of a text.
struct RowRange {
    std::size_t begin = 0;
    std::size_t end = 0;
};

// @param line from 0
RowRange rowsOf(const SourceText& text, std::size_t line, std::size_t count) {
    const auto rowOf = [&](std::size_t number) {
        return number >= text.lineCount() ? text.rowCount() : text.rowOfLine(number + 1);
    };
    return {rowOf(line), rowOf(line + count)};
}

}  // namespace

AlignedRows AlignedRows::of(const SourceText& left, const SourceText& right,
                            const std::vector<LineChange>& lines) {
    AlignedRows aligned;
    const auto add = [&](const RowRange& leftRows, const RowRange& rightRows, bool isChanged) {
        const std::size_t leftCount = leftRows.end - leftRows.begin;
        const std::size_t rightCount = rightRows.end - rightRows.begin;
        for (std::size_t row = 0; row < std::max(leftCount, rightCount); ++row) {
            aligned.left.push_back(row < leftCount ? leftRows.begin + row : kGap);
            aligned.right.push_back(row < rightCount ? rightRows.begin + row : kGap);
            aligned.isChanged.push_back(isChanged);
        }
    };
    // Lines that are the same but for their indentation may be broken into rows otherwise.
    std::size_t leftLine = 0;
    std::size_t rightLine = 0;
    const auto addSame = [&](std::size_t count) {
        const bool isPlain =
            left.rowCount() == left.lineCount() && right.rowCount() == right.lineCount();
        if (isPlain) {
            add({leftLine, leftLine + count}, {rightLine, rightLine + count}, false);
        }
        for (std::size_t line = 0; !isPlain && line < count; ++line) {
            add(rowsOf(left, leftLine + line, 1), rowsOf(right, rightLine + line, 1), false);
        }
        leftLine += count;
        rightLine += count;
    };
    for (const LineChange& change : lines) {
        addSame(change.oldLine - leftLine);
        aligned.changes.push_back(aligned.left.size());
        add(rowsOf(left, leftLine, change.oldCount), rowsOf(right, rightLine, change.newCount),
            true);
        leftLine += change.oldCount;
        rightLine += change.newCount;
    }
    addSame(left.lineCount() - leftLine);
    return aligned;
}

}  // namespace vornic
