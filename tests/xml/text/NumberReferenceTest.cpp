#include <gtest/gtest.h>

#include "xml/text/NumberReference.h"

namespace vornic {
namespace {

TEST(NumberReference, isReadUpToItsSemicolon) {
    EXPECT_EQ(numberReferenceAt("&#233; and more").number, 233U);
    EXPECT_EQ(numberReferenceAt("&#233; and more").length, 6U);
    EXPECT_EQ(numberReferenceAt("&#xe9;").number, 0xE9U);
    EXPECT_EQ(numberReferenceAt("&#x00E9;").length, 8U);
}

TEST(NumberReference, isNothingElse) {
    for (const char* const text :
         {"", "&", "&#", "&#;", "&#x;", "&#233", "&#X41;", "&amp;", "&#-1;", "&#1 2;",
          "&#99999999999;", "&#00000000000000000065;", " &#65;"}) {
        EXPECT_EQ(numberReferenceAt(text).length, 0U) << text;
    }
}

TEST(NumberReference, knowsTheHalvesOfAPair) {
    const NumberReference first = numberReferenceAt("&#xD83D;");
    const NumberReference second = numberReferenceAt("&#56994;");
    EXPECT_TRUE(first.isFirstHalf() && !first.isSecondHalf());
    EXPECT_TRUE(second.isSecondHalf() && !second.isFirstHalf());
    EXPECT_EQ(characterOf(first, second), U'\U0001F6A2');
    EXPECT_FALSE(numberReferenceAt("&#xE000;").isSecondHalf());
    EXPECT_FALSE(NumberReference().isFirstHalf());
}

}  // namespace
}  // namespace vornic
