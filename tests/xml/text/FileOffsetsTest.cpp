#include <string>

#include <gtest/gtest.h>

#include "xml/text/FileOffsets.h"

namespace vornic::test {

namespace {

// Each character of the text is found in the file where its bytes are, forwards and backwards.
void expectRoundTrip(const std::string& mark, const std::string& bytes, const char* encoding) {
    ErrorSlot error;
    const std::optional<DecodedText> decoded = decodeXMLText(mark + bytes, error);
    ASSERT_TRUE(decoded.has_value()) << error->description;
    EXPECT_EQ(decoded->decoding.encoding, encoding);
    EXPECT_EQ(decoded->decoding.markLength, mark.size());
    const std::string& text = decoded->text;
    EXPECT_EQ(encodeText(text, decoded->decoding.encoding), bytes);
    FileOffsets offsets(text, decoded->decoding);
    const auto expect = [&](std::size_t offset) {
        const std::optional<std::string> before =
            encodeText(text.substr(0, offset), decoded->decoding.encoding);
        if (before) {
            EXPECT_EQ(offsets.of(offset), mark.size() + before->size()) << offset;
        }
    };
    for (std::size_t offset = 0; offset <= text.size(); ++offset) {
        expect(offset);
    }
    for (std::size_t offset = text.size(); offset > 0; --offset) {
        expect(offset);
    }
    EXPECT_EQ(offsets.of(text.size() + 10), mark.size() + bytes.size());
}

std::string wide(const std::u16string& text, bool isBigEndian) {
    std::string bytes;
    for (const char16_t unit : text) {
        const char high = static_cast<char>(unit >> 8U);
        const char low = static_cast<char>(unit & 0xFFU);
        bytes += isBigEndian ? high : low;
        bytes += isBigEndian ? low : high;
    }
    return bytes;
}

}  // namespace

TEST(FileOffsets, areTheSameInUTF8ButForTheMark) {
    expectRoundTrip("", "<a>\xC3\xA9\xF0\x9F\x98\x80</a>", "UTF-8");
    expectRoundTrip("\xEF\xBB\xBF", "<a>\xC3\xA9</a>", "UTF-8");
}

TEST(FileOffsets, countTwoOrFourBytesInUTF16) {
    expectRoundTrip("\xFF\xFE", wide(u"<a>é😀b日</a>", false), "UTF-16LE");
    expectRoundTrip("\xFE\xFF", wide(u"<a>é😀b日</a>", true), "UTF-16BE");
    expectRoundTrip("", wide(u"<a>é</a>", false), "UTF-16LE");
}

TEST(FileOffsets, countOneByteForEachCharacterOfOlderEncodings) {
    expectRoundTrip("", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9\xFF</a>", "ISO-8859-1");
    expectRoundTrip("", "<?xml version='1.0' encoding='windows-1252'?><a>\x80\x99</a>", "CP1252");
    expectRoundTrip("", "<?xml version='1.0' encoding='macintosh'?><a>\x8E\xC9</a>", "MACINTOSH");
    expectRoundTrip("", "<?xml version='1.0' encoding='us-ascii'?><a>x</a>", "ASCII");
}

TEST(TextEncoding, refusesWhatTheEncodingLacks) {
    EXPECT_EQ(encodeText("日", "ISO-8859-1"), std::nullopt);
    EXPECT_EQ(encodeText("é", "ISO-8859-1"), "\xE9");
    EXPECT_EQ(encodeText("x", "no such"), std::nullopt);
}

}  // namespace vornic::test
