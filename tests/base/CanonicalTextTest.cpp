#include <string>

#include <gtest/gtest.h>

#include "base/CanonicalText.h"

namespace vornic::test {

namespace {

TEST(CanonicalText, oneCharacterAndLetterWithAccentAreTheSame) {
    EXPECT_EQ(canonicallyDecomposed("caf\u00E9"), "cafe\u0301");
    EXPECT_EQ(canonicallyDecomposed("cafe\u0301"), "cafe\u0301");
    EXPECT_EQ(canonicallyDecomposed("\u1EC7"), "e\u0323\u0302") << "decomposed to the end";
}

TEST(CanonicalText, marksComeInTheOrderOfTheirClasses) {
    EXPECT_EQ(canonicallyDecomposed("e\u0302\u0323"), "e\u0323\u0302");
    EXPECT_EQ(canonicallyDecomposed("e\u0301\u0302"), "e\u0301\u0302") << "of one class as written";
}

TEST(CanonicalText, syllablesAreTakenApart) {
    EXPECT_EQ(canonicallyDecomposed("\uD55C\uAE00"), "\u1112\u1161\u11AB\u1100\u1173\u11AF");
    EXPECT_EQ(canonicallyDecomposed("\uAC00"), "\u1100\u1161");
}

TEST(CanonicalText, otherTextAndBytesThatAreNoTextStay) {
    const std::string text = "a.mov \u4E2D\U0001F600 \xFF\xC3";
    EXPECT_EQ(canonicallyDecomposed(text), text);
    EXPECT_EQ(canonicallyDecomposed("\xFF\u00E9\xFF"),
              "\xFF"
              "e\u0301\xFF");
}

TEST(CanonicalText, namesFoldToTheSameWhateverTheirCase) {
    EXPECT_EQ(foldedName("CAF\u00C9.MOV"), foldedName("cafe\u0301.mov"));
    EXPECT_EQ(foldedName("\u0130x"), foldedName("\u0130X"));
    EXPECT_NE(foldedName("cafe.mov"), foldedName("caf\u00E9.mov"));
}

}  // namespace

}  // namespace vornic::test
