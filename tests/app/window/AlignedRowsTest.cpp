#include <string>

#include <gtest/gtest.h>

#include "app/window/AlignedRows.h"
#include "app/window/Inspection.h"

namespace vornic {
namespace {

constexpr std::size_t kGap = AlignedRows::kGap;

AlignedRows aligned(const std::string& left, const std::string& right) {
    const auto leftText = SourceText::of(left);
    const auto rightText = SourceText::of(right);
    return AlignedRows::of(*leftText, *rightText,
                           lineDifference(linesOf(*leftText), linesOf(*rightText), true));
}

TEST(AlignedRows, leaveGapsWhereOneTextHasMoreLines) {
    const AlignedRows rows = aligned("a\nb\nc", "a\nB\nB2\nc");
    EXPECT_EQ(rows.left, (std::vector<std::size_t>{0, 1, kGap, 2}));
    EXPECT_EQ(rows.right, (std::vector<std::size_t>{0, 1, 2, 3}));
    EXPECT_EQ(rows.isChanged, (std::vector<bool>{false, true, true, false}));
    EXPECT_EQ(rows.changes, (std::vector<std::size_t>{1}));
}

TEST(AlignedRows, keepLinesThatAreBrokenOtherwiseAtOneHeight) {
    const std::string line(SourceText::kLongestRow, 'x');
    // The indentation breaks the line.
    const AlignedRows rows = aligned("a\n" + line + "\nc", "a\n  " + line + "\nc");
    EXPECT_EQ(rows.left, (std::vector<std::size_t>{0, 1, kGap, 2}));
    EXPECT_EQ(rows.right, (std::vector<std::size_t>{0, 1, 2, 3}));
    EXPECT_TRUE(rows.changes.empty());
}

TEST(AlignedRows, showATextBesideNothing) {
    const AlignedRows rows = aligned("", "a\nb");
    EXPECT_EQ(rows.left.size(), rows.right.size());
    EXPECT_EQ(rows.right, (std::vector<std::size_t>{0, 1}));
}

}  // namespace
}  // namespace vornic
