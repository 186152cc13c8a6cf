#include <cstdlib>
#include <limits>
#include <string>

#include "base/PathText.h"
#include "base/Text.h"

namespace vornic {
namespace {

TEST(Text, readsAnIntegerUpToTheFirstOtherCharacter) {
    EXPECT_EQ(integerValue("12"), 12);
    EXPECT_EQ(integerValue(" \t\n-12abc"), -12);
    EXPECT_EQ(integerValue("+7 8"), 7);
    EXPECT_EQ(integerValue("3.9"), 3);
    EXPECT_EQ(integerValue("\xC2\xA0"
                           "5"),
              5);
}

TEST(Text, readsAnIntegerWithoutDigitsAsZero) {
    EXPECT_EQ(integerValue(""), 0);
    EXPECT_EQ(integerValue("abc"), 0);
    EXPECT_EQ(integerValue("-"), 0);
    EXPECT_EQ(integerValue("- 5"), 0);
    EXPECT_EQ(integerValue("+-5"), 0);
    EXPECT_EQ(integerValue("   "), 0);
}

TEST(Text, holdsIntegersAtTheEndsOfTheRange) {
    constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(integerValue("9223372036854775807"), kLargest);
    EXPECT_EQ(integerValue("9223372036854775808"), kLargest);
    EXPECT_EQ(integerValue("99999999999999999999999"), kLargest);
    EXPECT_EQ(integerValue("-9223372036854775808"), kSmallest);
    EXPECT_EQ(integerValue("-9223372036854775809"), kSmallest);
}

TEST(Text, countsUtf16Units) {
    EXPECT_EQ(utf16Length(""), 0U);
    EXPECT_EQ(utf16Length("abc"), 3U);
    EXPECT_EQ(utf16Length("é€"), 2U);
    EXPECT_EQ(utf16Length("a🎬"), 3U);
}

TEST(Text, countsBytesThatAreNoUtf8AsOneUnitEach) {
    EXPECT_EQ(utf16Length("\xFF\xFE"), 2U);
    EXPECT_EQ(utf16Length("\xC0\xAF"), 2U);          // overlong
    EXPECT_EQ(utf16Length("\xED\xA0\x80"), 3U);      // a surrogate
    EXPECT_EQ(utf16Length("\xF4\x90\x80\x80"), 4U);  // above U+10FFFF
    EXPECT_EQ(utf16Length("a\xE2\x82"), 3U);         // cut off
}

TEST(Text, trimsWhiteSpaceAndLineBreaksAtBothEnds) {
    EXPECT_EQ(trimmed(" \t\r\n\v\fa b\n c \r\n"), "a b\n c");
    EXPECT_EQ(trimmed("  \n"), "");
    EXPECT_EQ(trimmed(""), "");
    EXPECT_EQ(trimmed("a"), "a");
}

TEST(Text, trimsUnicodeSeparators) {
    const std::string all = "\u0085\u00A0\u1680\u2000\u200A\u2028\u2029\u202F\u205F\u3000";
    EXPECT_EQ(trimmed(all + "a" + all), "a");
    EXPECT_EQ(trimmed(all), "");
    EXPECT_EQ(trimmed("\u200Ba\u200B"), "\u200Ba\u200B");
    EXPECT_EQ(trimmed("é"), "é");
}

TEST(Text, trimsNoByteThatOnlyLooksLikeTheEndOfASeparator) {
    EXPECT_EQ(trimmed("\xA0"), "\xA0");
    EXPECT_EQ(trimmed("\x80\x80"), "\x80\x80");
    EXPECT_EQ(trimmed("à"), "à");  // ends with 0xA0
}

TEST(Text, lowersAsciiLettersOnly) {
    EXPECT_EQ(lowercased("FCPXML Ä[@`{"), "fcpxml Ä[@`{");
}

TEST(Text, lowersLettersOfEveryScript) {
    EXPECT_EQ(lowercasedLetters("AbC-ÉЖΩß1"), "abc-éжωß1");
    EXPECT_EQ(lowercasedLetters("X\xFF\xC3🎬Y"), "x\xFF\xC3🎬y") << "other bytes stay";
    EXPECT_EQ(lowercasedLetters(""), "");
}

TEST(Text, putsLettersOfEveryScriptIntoUpperCase) {
    EXPECT_EQ(uppercasedLetters("aBc-éжω1"), "ABC-ÉЖΩ1");
    EXPECT_EQ(uppercasedLetters("ß"), "ß") << "two letters would stand for it";
    EXPECT_EQ(uppercasedLetters("x\xFF\xC3🎬y"), "X\xFF\xC3🎬Y") << "other bytes stay";
    EXPECT_EQ(uppercasedLetters(""), "");
}

TEST(Text, comparesWithoutRegardToCase) {
    EXPECT_EQ(caseInsensitiveCompare("YES", "yes"), 0);
    EXPECT_LT(caseInsensitiveCompare("1", "2"), 0);
    EXPECT_GT(caseInsensitiveCompare("b", "A"), 0);
    EXPECT_LT(caseInsensitiveCompare("a", "AB"), 0);
    EXPECT_GT(caseInsensitiveCompare("ab", "A"), 0);
    EXPECT_GT(caseInsensitiveCompare("\xC3", "z"), 0);
}

TEST(Text, replacesEveryOccurrence) {
    EXPECT_EQ(replacingOccurrences("a%@b%@", "%@", ""), "ab");
    EXPECT_EQ(replacingOccurrences("5% of 6%", "%", "%%"), "5%% of 6%%");
    EXPECT_EQ(replacingOccurrences("aaa", "aa", "b"), "ba");
    EXPECT_EQ(replacingOccurrences("abc", "", "x"), "abc");
    EXPECT_EQ(replacingOccurrences("", "a", "x"), "");
}

}  // namespace
}  // namespace vornic
