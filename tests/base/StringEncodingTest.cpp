#include <optional>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "base/StringEncoding.h"

namespace vornic::platform {
namespace {

using namespace std::literals;

std::optional<std::string> decode(std::string_view bytes, unsigned number) {
    return decodeString(bytes, static_cast<StringEncoding>(number));
}

TEST(StringEncodingTest, decodesAscii) {
    EXPECT_EQ(decode("plain\n\0text"sv, 1), "plain\n\0text"s);
    EXPECT_EQ(decode("", 1), "");
}

TEST(StringEncodingTest, decodesNoByteAbove127AsAscii) {
    EXPECT_EQ(decode("caf\xC3\xA9", 1), std::nullopt);
    EXPECT_EQ(decode("\x80", 1), std::nullopt);
}

TEST(StringEncodingTest, decodesUtf8) {
    EXPECT_EQ(decode("caf\xC3\xA9 \xF0\x9F\x8E\xAC", 4), "caf\xC3\xA9 \xF0\x9F\x8E\xAC");
    EXPECT_EQ(decode("", 4), "");
}

TEST(StringEncodingTest, leavesTheMarkOfUtf8Out) {
    EXPECT_EQ(decode("\xEF\xBB\xBFtext", 4), "text");
}

TEST(StringEncodingTest, decodesNothingThatIsNoUtf8) {
    EXPECT_EQ(decode("caf\xE9", 4), std::nullopt) << "Latin-1";
    EXPECT_EQ(decode("\xC3", 4), std::nullopt) << "cut off";
    EXPECT_EQ(decode("\xC0\xAF", 4), std::nullopt) << "overlong";
    EXPECT_EQ(decode("\xED\xA0\x80", 4), std::nullopt) << "surrogate";
    EXPECT_EQ(decode("\xF4\x90\x80\x80", 4), std::nullopt) << "above U+10FFFF";
}

TEST(StringEncodingTest, decodesEveryByteAsLatin1) {
    EXPECT_EQ(decode("caf\xE9\xFF\x80", 5), "caf\xC3\xA9\xC3\xBF\xC2\x80");
}

TEST(StringEncodingTest, decodesUtf16ByItsMark) {
    EXPECT_EQ(decode("\xFE\xFF\0A\x20\xAC"sv, 10), "A\xE2\x82\xAC");
    EXPECT_EQ(decode("\xFF\xFE"
                     "A\0\xAC\x20"sv,
                     10),
              "A\xE2\x82\xAC");
}

TEST(StringEncodingTest, decodesUtf16WithoutAMarkInTheMachinesOrder) {
    const std::u16string text = u"A\u20AC\U0001F3AC";
    const std::string_view bytes(reinterpret_cast<const char*>(text.data()), text.size() * 2);
    EXPECT_EQ(decode(bytes, 10), "A\xE2\x82\xAC\xF0\x9F\x8E\xAC");
}

TEST(StringEncodingTest, decodesNothingThatIsNoUtf16) {
    EXPECT_EQ(decode("\xFE\xFF\0A\0"sv, 10), std::nullopt) << "half a unit";
    EXPECT_EQ(decode("\xFE\xFF\xD8\x3C\0A"sv, 10), std::nullopt) << "lone high surrogate";
    EXPECT_EQ(decode("\xFE\xFF\xDF\xAC\0A"sv, 10), std::nullopt) << "lone low surrogate";
    EXPECT_EQ(decode("\xFE\xFF\xD8\x3C"sv, 10), std::nullopt) << "half a pair";
}

TEST(StringEncodingTest, decodesUtf16OfAGivenOrder) {
    EXPECT_EQ(decode("\0A"sv, 0x90000100), "A");
    EXPECT_EQ(decode("A\0"sv, 0x94000100), "A");
}

TEST(StringEncodingTest, decodesUtf32) {
    EXPECT_EQ(decode("\0\0\xFE\xFF\0\x01\xF3\xAC"sv, 0x8C000100), "\xF0\x9F\x8E\xAC");
    EXPECT_EQ(decode("\xFF\xFE\0\0"
                     "A\0\0\0"sv,
                     0x8C000100),
              "A");
    EXPECT_EQ(decode("\0\0\0A"sv, 0x98000100), "A");
    EXPECT_EQ(decode("\0\x11\0\0"sv, 0x98000100), std::nullopt) << "above U+10FFFF";
    EXPECT_EQ(decode("\0\0\xD8\0"sv, 0x98000100), std::nullopt) << "surrogate";
    EXPECT_EQ(decode("A\0\0\0"sv, 0x9C000100), "A");
}

TEST(StringEncodingTest, decodesEveryByteAsMacRoman) {
    EXPECT_EQ(decode("caf\x8E", 30), "caf\xC3\xA9");
    EXPECT_EQ(decode("\xA5 \xDB \xF0", 30), "\xE2\x80\xA2 \xE2\x82\xAC \xEF\xA3\xBF");
    EXPECT_EQ(decode("\x80\xFF", 30), "\xC3\x84\xCB\x87") << "first and last of the table";
    EXPECT_EQ(decode("\x41\x7F", 30), "A\x7F");
}

TEST(StringEncodingTest, decodesTheOtherEncodingsByTheirNumbers) {
    EXPECT_EQ(decode("\xCA\xD4", 3), "\xE7\xB7\xA8") << "EUC-JP";
    EXPECT_EQ(decode("\x95\xD2", 8), "\xE7\xB7\xA8") << "Shift JIS";
    EXPECT_EQ(decode("\xB1", 9), "\xC4\x85") << "Latin-2";
    EXPECT_EQ(decode("\xC0", 11), "\xD0\x90") << "Windows Cyrillic";
    EXPECT_EQ(decode("\x80", 12), "\xE2\x82\xAC") << "Windows Latin-1";
    EXPECT_EQ(decode("\xC1", 13), "\xCE\x91") << "Windows Greek";
    EXPECT_EQ(decode("\xDD", 14), "\xC4\xB0") << "Windows Turkish";
    EXPECT_EQ(decode("\xB9", 15), "\xC4\x85") << "Windows Latin-2";
    EXPECT_EQ(decode("\x1B$BJT\x1B(B", 21), "\xE7\xB7\xA8") << "ISO-2022-JP";
}

TEST(StringEncodingTest, decodesNothingUnderAnUnknownNumber) {
    EXPECT_EQ(decode("text", 0), std::nullopt);
    EXPECT_EQ(decode("text", 999), std::nullopt);
}

TEST(StringEncodingTest, decodesMoreThanOneBufferOfText) {
    std::string bytes;
    std::string expected;
    for (int index = 0; index < 5000; ++index) {
        bytes += "\xE9";
        expected += "\xC3\xA9";
    }
    EXPECT_EQ(decode(bytes, 5), expected);
}

}  // namespace
}  // namespace vornic::platform
