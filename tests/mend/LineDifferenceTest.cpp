#include <random>
#include <string>

#include <gtest/gtest.h>

#include "mend/LineDifference.h"

namespace vornic {
namespace {

using Lines = std::vector<std::string_view>;
using Changes = std::vector<LineChange>;

TEST(LineDifference, isNothingForEqualTexts) {
    EXPECT_EQ(lineDifference({"a", "b"}, {"a", "b"}, false), Changes{});
    EXPECT_EQ(lineDifference({}, {}, false), Changes{});
}

TEST(LineDifference, reportsReplacedAddedAndRemovedLines) {
    EXPECT_EQ(lineDifference({"a", "b", "c", "d"}, {"a", "B", "c", "e", "d"}, false),
              (Changes{{1, 1, 1, 1}, {3, 0, 3, 1}}));
    EXPECT_EQ(lineDifference({"a", "b"}, {}, false), (Changes{{0, 2, 0, 0}}));
}

TEST(LineDifference, ignoresIndentationWhereItIsAsked) {
    EXPECT_EQ(lineDifference({"a", "b"}, {"a", "  b "}, true), Changes{});
    EXPECT_EQ(lineDifference({"a", "b"}, {"a", "  b "}, false), (Changes{{1, 1, 1, 1}}));
}

TEST(LineDifference, comparesLinesThatStandThereOften) {
    EXPECT_EQ(lineDifference({"x", "x", "y", "x"}, {"x", "y", "x", "x", "x"}, false).size(), 2U);
}

TEST(LineDifference, followsALineThroughTheChanges) {
    const Changes changes = lineDifference({"a", "b", "c", "d"}, {"a", "B", "B2", "c", "d"}, false);
    EXPECT_EQ(newLineOf(0, changes), 0U);
    EXPECT_EQ(newLineOf(1, changes), 1U);
    EXPECT_EQ(newLineOf(2, changes), 3U);
    EXPECT_EQ(newLineOf(3, changes), 4U);
}

// Whatever the texts, the changes make the new one of the old one, and nothing else differs.
TEST(LineDifference, makesTheNewTextOfTheOldOne) {
    std::mt19937 random(7);
    const std::vector<std::string> words = {"a", "b", "c", "d", "e", "f"};
    for (int run = 0; run < 2000; ++run) {
        Lines oldLines(random() % 12);
        Lines newLines(random() % 12);
        for (std::string_view& line : oldLines) {
            line = words[random() % words.size()];
        }
        for (std::string_view& line : newLines) {
            line = words[random() % words.size()];
        }
        Lines made;
        std::size_t at = 0;
        for (const LineChange& change : lineDifference(oldLines, newLines, false)) {
            ASSERT_GE(change.oldLine, at);
            for (; at < change.oldLine; ++at) {
                made.push_back(oldLines[at]);
            }
            ASSERT_EQ(made.size(), change.newLine);
            for (std::size_t line = 0; line < change.newCount; ++line) {
                made.push_back(newLines[change.newLine + line]);
            }
            at += change.oldCount;
        }
        for (; at < oldLines.size(); ++at) {
            made.push_back(oldLines[at]);
        }
        ASSERT_EQ(made, newLines);
    }
}

}  // namespace
}  // namespace vornic
