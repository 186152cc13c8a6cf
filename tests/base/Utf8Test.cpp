#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "base/Utf8.h"

namespace vornic {
namespace {

std::string encoded(char32_t code) {
    std::string text;
    appendUtf8(text, code);
    return text;
}

std::string validated(std::string_view bytes) {
    std::string text = "x";
    appendAsValidUtf8(text, bytes);
    return text.substr(1);
}

TEST(Utf8, readsBackEveryCodePointThatItWrites) {
    for (char32_t code = 0; code <= 0x10FFFF; ++code) {
        if (code >= 0xD800 && code <= 0xDFFF) {
            continue;
        }
        const std::string text = encoded(code);
        const Utf8Character forwards = utf8CharacterAt(text, 0);
        const Utf8Character backwards = utf8CharacterBefore(text, text.size());
        ASSERT_TRUE(forwards.isValid && backwards.isValid);
        ASSERT_EQ(std::uint32_t{forwards.code}, std::uint32_t{code});
        ASSERT_EQ(std::uint32_t{backwards.code}, std::uint32_t{code});
        ASSERT_EQ(forwards.length, text.size());
        ASSERT_EQ(backwards.length, text.size());
    }
}

TEST(Utf8, writesAReplacementForWhatCannotBeWritten) {
    EXPECT_EQ(encoded(0xD800), "\uFFFD");
    EXPECT_EQ(encoded(0xDFFF), "\uFFFD");
    EXPECT_EQ(encoded(0x110000), "\uFFFD");
}

TEST(Utf8, findsTheEndOfARunOfASCII) {
    EXPECT_EQ(asciiPrefixLength(""), 0U);
    EXPECT_EQ(asciiPrefixLength("\x80"), 0U);
    for (std::size_t length = 1; length < 200; ++length) {
        const std::string run(length, '\x7F');
        ASSERT_EQ(asciiPrefixLength(run), length);
        ASSERT_EQ(asciiPrefixLength(run + "\xC3\xA9" + run), length);
    }
}

TEST(Utf8, readsABadByteByItself) {
    for (const std::string_view text :
         {"\x80", "\xC1\x81", "\xC3", "\xC3(", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xE2\x82",
          "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF"}) {
        const Utf8Character character = utf8CharacterAt(text, 0);
        EXPECT_FALSE(character.isValid) << text;
        EXPECT_EQ(character.length, 1U);
        EXPECT_EQ(std::uint32_t{character.code}, 0xFFFDU);
    }
}

TEST(Utf8, readsBackwardsABadByteByItself) {
    EXPECT_FALSE(utf8CharacterBefore("\xA0", 1).isValid);
    EXPECT_FALSE(utf8CharacterBefore("a\x80", 2).isValid);
    EXPECT_FALSE(utf8CharacterBefore("\xC3\xA9\xA9", 3).isValid);
    EXPECT_EQ(std::uint32_t{utf8CharacterBefore("\xC3\xA9\xA9", 2).code}, 0xE9U);
    EXPECT_FALSE(utf8CharacterBefore("\x80\x80\x80\x80\x80", 5).isValid);
    EXPECT_FALSE(utf8CharacterBefore("\xE2\x82", 2).isValid);
}

TEST(Utf8, replacesEveryBadByteAndKeepsTheRest) {
    EXPECT_EQ(validated(""), "");
    EXPECT_EQ(validated("a é € 🎬"), "a é € 🎬");
    EXPECT_EQ(validated("\xFF"), "\uFFFD");
    EXPECT_EQ(validated("a\xFF\xFE é\xC3"), "a\uFFFD\uFFFD é\uFFFD");
    EXPECT_EQ(validated("\xED\xA0\x80"), "\uFFFD\uFFFD\uFFFD");
}

}  // namespace
}  // namespace vornic
