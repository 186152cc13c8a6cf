#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "xml/text/TextPlace.h"

namespace vornic::test {

namespace {

void expectPlace(TextPlace& place, std::size_t offset, std::size_t line, std::size_t column) {
    place.moveTo(offset);
    EXPECT_EQ(place.line(), line) << offset;
    EXPECT_EQ(place.column(), column) << offset;
}

}  // namespace

TEST(TextPlace, beginsAtOne) {
    TextPlace place("");
    expectPlace(place, 0, 1, 1);
}

TEST(TextPlace, countsEveryLineEndOnce) {
    TextPlace place("a\nb\r\nc\rd\n\re");
    expectPlace(place, 0, 1, 1);
    expectPlace(place, 1, 1, 2);
    expectPlace(place, 2, 2, 1);
    expectPlace(place, 5, 3, 1);
    expectPlace(place, 7, 4, 1);
    expectPlace(place, 9, 5, 1);
    expectPlace(place, 10, 6, 1);
}

TEST(TextPlace, countsCharactersInColumns) {
    TextPlace place("é€\xF0\x9F\x98\x80x");
    expectPlace(place, 2, 1, 2);
    expectPlace(place, 5, 1, 3);
    expectPlace(place, 9, 1, 4);
}

TEST(TextPlace, goesBack) {
    TextPlace place("a\nbc");
    expectPlace(place, 4, 2, 3);
    expectPlace(place, 0, 1, 1);
    expectPlace(place, 3, 2, 2);
}

TEST(TextPlace, agreesWithCountingByteByByte) {
    std::minstd_rand random(7);  // NOLINT(cert-msc32-c,cert-msc51-cpp)
    for (int run = 0; run < 50; ++run) {
        std::string text;
        for (int i = 0; i < 1500; ++i) {
            constexpr std::string_view kBytes = "ab\n\r\xC3\xA9\n\r\n";
            const std::size_t length = run % 2 == 0 ? 2 : kBytes.size();
            text += kBytes[random() % length];
        }
        std::size_t line = 1;
        std::size_t column = 1;
        TextPlace steps(text);
        for (std::size_t offset = 0; offset <= text.size(); ++offset) {
            if (offset % 7 == 0) {
                expectPlace(steps, offset, line, column);
            }
            TextPlace jump(text);
            expectPlace(jump, offset, line, column);
            const bool isPair = text.compare(offset, 2, "\r\n") == 0;
            const bool isEnd =
                offset < text.size() && (text[offset] == '\n' || (text[offset] == '\r' && !isPair));
            const bool isCharacter =
                offset < text.size() && (static_cast<unsigned char>(text[offset]) & 0xC0U) != 0x80U;
            line += isEnd ? 1 : 0;
            column = isEnd ? 1 : column + (isCharacter ? 1 : 0);
        }
    }
}

TEST(TextPlace, stopsAtTheEnd) {
    TextPlace place("a\n");
    expectPlace(place, 100, 2, 1);
}

TEST(Excerpt, leavesShortTextAsItIs) {
    EXPECT_EQ(excerpt(""), "");
    EXPECT_EQ(excerpt(std::string(40, 'x')), std::string(40, 'x'));
}

TEST(Excerpt, cutsLongTextBetweenCharacters) {
    EXPECT_EQ(excerpt(std::string(41, 'x')), std::string(40, 'x') + "…");
    std::string accents;
    for (int i = 0; i < 50; ++i) {
        accents += "é";
    }
    EXPECT_EQ(excerpt(accents), accents.substr(0, 80) + "…");
}

}  // namespace vornic::test
