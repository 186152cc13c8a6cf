#include <string>

#include <gtest/gtest.h>

#include "xml/text/TextDecoding.h"
#include "xml/text/XMLErrorCode.h"

namespace vornic::test {

namespace {

using namespace std::string_literals;

// Turns ASCII text into UTF-16.
std::string utf16(std::string_view text, bool bigEndian) {
    std::string bytes;
    for (const char c : text) {
        bytes += bigEndian ? '\0' : c;
        bytes += bigEndian ? c : '\0';
    }
    return bytes;
}

std::string decoded(std::string bytes) {
    ErrorSlot error;
    const std::optional<std::string> text = decodeXMLBytes(std::move(bytes), error);
    EXPECT_EQ(text.has_value(), !error.has_value());
    return text ? *text : error->description;
}

Error decodingError(std::string bytes) {
    ErrorSlot error;
    EXPECT_FALSE(decodeXMLBytes(std::move(bytes), error).has_value());
    return error.value_or(Error{});
}

std::string declared(const std::string& encoding, const std::string& content) {
    return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?><a>" + content + "</a>";
}

}  // namespace

TEST(FirstInvalidUTF8, findsNothingInWellFormedText) {
    EXPECT_EQ(firstInvalidUTF8(""), std::nullopt);
    EXPECT_EQ(firstInvalidUTF8("plain text that is longer than one block of bytes"), std::nullopt);
    EXPECT_EQ(firstInvalidUTF8("\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"
                               "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"),
              std::nullopt);
    EXPECT_EQ(firstInvalidUTF8("\0"s), std::nullopt);
}

TEST(FirstInvalidUTF8, findsMalformedSequencesAtEveryDistance) {
    for (const char* bad : {"\x80",
                            "\xBF",
                            "\xC0\x80",
                            "\xC1\xBF",
                            "\xC2",
                            "\xC2 ",
                            "\xE0\x80\x80",
                            "\xE0\x9F\xBF",
                            "\xE2\x82",
                            "\xE2\x82 ",
                            "\xED\xA0\x80",
                            "\xED\xBF\xBF",
                            "\xF0\x80\x80\x80",
                            "\xF0\x8F\xBF\xBF",
                            "\xF0\x9F\x98",
                            "\xF0\x9F ",
                            "\xF4\x90\x80\x80",
                            "\xF5\x80\x80\x80",
                            "\xFE",
                            "\xFF"}) {
        for (std::size_t distance = 0; distance < 20; ++distance) {
            const std::string before(distance, 'x');
            EXPECT_EQ(firstInvalidUTF8(before + bad), distance);
            EXPECT_EQ(firstInvalidUTF8(before + bad + "and text after it"), distance);
            EXPECT_EQ(firstInvalidUTF8(before + "é" + bad), distance + 2);
        }
    }
}

TEST(TextFromUTF8, dropsAByteOrderMarkAtTheBeginningAlone) {
    ErrorSlot error;
    EXPECT_EQ(textFromUTF8("\xEF\xBB\xBF"
                           "a\xEF\xBB\xBF",
                           error),
              "a\xEF\xBB\xBF");
    EXPECT_EQ(textFromUTF8("\xEF\xBB\xBF\xEF\xBB\xBF", error), "\xEF\xBB\xBF");
    EXPECT_EQ(textFromUTF8("", error), "");
    EXPECT_FALSE(error.has_value());
}

TEST(TextFromUTF8, namesThePlaceOfTheFirstBadByte) {
    ErrorSlot error;
    EXPECT_EQ(textFromUTF8("\xEF\xBB\xBFé\r\né\xFF\xFF", error), std::nullopt);
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->domain, kTextErrorDomain);
    EXPECT_EQ(error->description,
              "Line 2, column 2: the bytes here (at offset 9) are not UTF-8 text.");
    EXPECT_EQ(error->line, 2U);
    EXPECT_EQ(error->column, 2U);
}

TEST(DecodeXMLBytes, takesBytesWithoutADeclarationAsUTF8) {
    EXPECT_EQ(decoded("<a>é</a>"), "<a>é</a>");
    EXPECT_EQ(decoded(""), "");
    EXPECT_EQ(decodingError("<a>\xE9</a>").column, 4U);
}

TEST(DecodeXMLBytes, dropsAByteOrderMark) {
    EXPECT_EQ(decoded("\xEF\xBB\xBF<a/>"), "<a/>");
    EXPECT_EQ(decoded("\xFF\xFE" + utf16("<a/>", false)), "<a/>");
    EXPECT_EQ(decoded("\xFE\xFF" + utf16("<a/>", true)), "<a/>");
}

TEST(DecodeXMLBytes, knowsUTF16WithoutAByteOrderMark) {
    const std::string text = declared("UTF-16", "b");
    EXPECT_EQ(decoded(utf16(text, false)), text);
    EXPECT_EQ(decoded(utf16(text, true)), text);
    EXPECT_EQ(decoded(utf16("<a/>", true)), "<a/>");
}

TEST(DecodeXMLBytes, decodesCharactersOutsideTheBasicPlaneOfUTF16) {
    EXPECT_EQ(decoded("\xFF\xFE<\0a\0>\0\x3D\xD8\x00\xDE<\0/\0a\0>\0"s), "<a>\xF0\x9F\x98\x80</a>");
}

TEST(DecodeXMLBytes, refusesHalfACharacterOfUTF16) {
    const Error error = decodingError("\xFF\xFE<\0a\0>\0\n\0x\0\x3D\xD8<\0"s);
    EXPECT_EQ(error.code, static_cast<int>(XMLErrorCode::undecodableBytes));
    EXPECT_EQ(error.description,
              "Line 2, column 2: the bytes here (at offset 12) do not belong to the file's "
              "encoding, UTF-16LE.");
    EXPECT_EQ(error.line, 2U);
    EXPECT_EQ(error.column, 2U);
    EXPECT_EQ(decodingError("\xFF\xFE<\0a"s).code,
              static_cast<int>(XMLErrorCode::undecodableBytes));
}

TEST(DecodeXMLBytes, decodesLatin1) {
    EXPECT_EQ(decoded(declared("ISO-8859-1", "caf\xE9 \xA4")), declared("ISO-8859-1", "café ¤"));
    EXPECT_EQ(decoded(declared("latin1", "\xE9")), declared("latin1", "é"));
}

TEST(DecodeXMLBytes, decodesWindows1252) {
    EXPECT_EQ(decoded(declared("Windows-1252", "\x80 \x93")), declared("Windows-1252", "€ “"));
    EXPECT_EQ(decodingError(declared("windows-1252", "\x81")).code,
              static_cast<int>(XMLErrorCode::undecodableBytes));
}

TEST(DecodeXMLBytes, decodesMacRoman) {
    EXPECT_EQ(decoded(declared("macintosh", "caf\x8E \xA5")), declared("macintosh", "café •"));
    EXPECT_EQ(decoded(declared("x-mac-roman", "\x8E")), declared("x-mac-roman", "é"));
}

TEST(DecodeXMLBytes, refusesOtherBytesInASCII) {
    EXPECT_EQ(decoded(declared("US-ASCII", "b")), declared("US-ASCII", "b"));
    EXPECT_EQ(decodingError(declared("US-ASCII", "\xC3\xA9")).code,
              static_cast<int>(XMLErrorCode::undecodableBytes));
}

TEST(DecodeXMLBytes, takesNamesOfEncodingsInAnyCase) {
    EXPECT_EQ(decoded(declared("utf-8", "é")), declared("utf-8", "é"));
    EXPECT_EQ(decoded(declared("iSo-8859-1", "\xE9")), declared("iSo-8859-1", "é"));
}

TEST(DecodeXMLBytes, believesTheByteOrderMarkMoreThanTheDeclaration) {
    EXPECT_EQ(decoded("\xEF\xBB\xBF" + declared("ISO-8859-1", "é")), declared("ISO-8859-1", "é"));
    EXPECT_EQ(decoded("\xFF\xFE" + utf16(declared("UTF-8", "b"), false)), declared("UTF-8", "b"));
}

TEST(DecodeXMLBytes, readsAFileAsUTF8ThatOnlySaysThatItIsUTF16) {
    EXPECT_EQ(decoded(declared("UTF-16", "é")), declared("UTF-16", "é"));
    EXPECT_EQ(decoded(declared("utf-16le", "é")), declared("utf-16le", "é"));
}

TEST(DecodeXMLBytes, namesAnEncodingThatItDoesNotKnow) {
    const Error error = decodingError(declared("Shift_JIS", "b"));
    EXPECT_EQ(error.code, static_cast<int>(XMLErrorCode::unknownEncoding));
    EXPECT_EQ(error.description, "The file's encoding, Shift_JIS, is not supported.");
}

TEST(DecodeXMLBytes, cutsTheNameOfAnEncodingInItsMessage) {
    EXPECT_LT(decodingError(declared(std::string(5000, 'x'), "b")).description.size(), 200U);
    EXPECT_EQ(firstInvalidUTF8(decodingError(declared("\xFF\xFF", "b")).description), std::nullopt);
}

TEST(DecodeXMLBytes, refusesUTF32AndEBCDIC) {
    for (const std::string& bytes :
         {"\xFF\xFE\0\0<\0\0\0"s, "\0\0\xFE\xFF\0\0\0<"s, "\0\0\0<\0\0\0a"s, "<\0\0\0a\0\0\0"s,
          "\x4C\x6F\xA7\x94\x93"s}) {
        EXPECT_EQ(decodingError(bytes).code, static_cast<int>(XMLErrorCode::unknownEncoding));
    }
}

TEST(DecodeXMLBytes, readsEncodingsOnlyFromADeclarationAtTheBeginning) {
    EXPECT_EQ(decoded("<a encoding='EBCDIC'>é</a>"), "<a encoding='EBCDIC'>é</a>");
    EXPECT_EQ(decoded("<?xml version='1.0'?><a encoding='EBCDIC'/>"),
              "<?xml version='1.0'?><a encoding='EBCDIC'/>");
    EXPECT_EQ(decoded("<?xml encoding"), "<?xml encoding");
    EXPECT_EQ(decoded("<?xml encoding="), "<?xml encoding=");
    EXPECT_EQ(decoded("<?xml encoding='x"), "<?xml encoding='x");
}

TEST(DecodeXMLBytes, decodesMoreThanOneBlock) {
    std::string bytes = declared("ISO-8859-1", "");
    std::string text = bytes;
    for (int i = 0; i < 200'000; ++i) {
        bytes += '\xE9';
        text += "é";
    }
    EXPECT_EQ(decoded(bytes), text);
}

}  // namespace vornic::test
