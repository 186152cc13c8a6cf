#include <string>

#include <gtest/gtest.h>

#include "xml/reader/ForbiddenCharacters.h"
#include "xml/reader/XMLReader.h"

namespace vornic::test {

TEST(ForbiddenCharacters, areFoundAtEveryDistance) {
    for (const char* forbidden :
         {"\x01", "\x08", "\x0B", "\x0C", "\x0E", "\x1F", "\xEF\xBF\xBE", "\xEF\xBF\xBF"}) {
        for (std::size_t distance = 0; distance < 40; ++distance) {
            const std::string text = std::string(distance, 'x') + forbidden + "é\t\r\n end of text";
            EXPECT_EQ(ForbiddenCharacters::runsIn(text), 1U);
            EXPECT_EQ(ForbiddenCharacters(text).remainingText(),
                      std::string(distance, 'x') + "é\t\r\n end of text");
        }
    }
}

TEST(ForbiddenCharacters, areNoneAmongThoseThatAreAllowed) {
    std::string text = "\t\n\r \x7F\xC2\x80\xEF\xBF\xBD\xEF\xBE\xBF\xEF\xBB\xBF";
    EXPECT_EQ(ForbiddenCharacters::runsIn(text), 0U);
    EXPECT_EQ(ForbiddenCharacters::runsIn(""), 0U);
    // The beginning of one at the end of the text is malformed, not forbidden.
    EXPECT_EQ(ForbiddenCharacters::runsIn("\xEF\xBF"), 0U);
}

TEST(ForbiddenCharacters, countByRunsAndByCharacters) {
    const std::string_view text(
        "\x01\x02\xEF\xBF\xBF"
        "a\x03"
        "b",
        8);
    EXPECT_EQ(ForbiddenCharacters::runsIn(text), 2U);
    EXPECT_EQ(ForbiddenCharacters(text).count(), 4U);
}

TEST(ForbiddenCharacters, giveTheWayBackToTheOriginalText) {
    const ForbiddenCharacters characters(
        "\x01"
        "a\x02\x02"
        "bc\x03");
    EXPECT_EQ(characters.remainingText(), "abc");
    ForbiddenCharacters::OffsetMap map(characters);
    EXPECT_EQ(map.original(0), 1U);
    EXPECT_EQ(map.original(1), 4U);
    EXPECT_EQ(map.original(2), 5U);
    EXPECT_EQ(map.original(3), 7U);
}

TEST(ForbiddenCharacters, areTakenOutBesideOtherEdits) {
    const std::string_view text =
        "\x01"
        "a\x02"
        "b\x03"
        "c\x04";
    const ForbiddenCharacters characters(text);
    EXPECT_EQ(applyXMLEdits(text, characters.editsOfOriginal({})), "abc");
    EXPECT_EQ(applyXMLEdits(text, characters.editsOfOriginal({{0, 3, "x"}})), "x");
    EXPECT_EQ(applyXMLEdits(text, characters.editsOfOriginal({{1, 1, "x"}})), "axc");
    EXPECT_EQ(applyXMLEdits(text, characters.editsOfOriginal({{0, 0, "x"}, {3, 0, "y"}})), "xabcy");
    EXPECT_EQ(applyXMLEdits(text, characters.editsOfOriginal({{1, 0, "x"}, {1, 0, "y"}})), "axybc");
}

}  // namespace vornic::test
