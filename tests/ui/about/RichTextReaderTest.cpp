#include <cstddef>
#include <fstream>
#include <iterator>
#include <optional>
#include <ostream>
#include <random>
#include <regex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "base/Utf8.h"
#include "ui/about/RichTextReader.h"

namespace vornic {

void PrintTo(const StyledRun& run, std::ostream* stream) {
    *stream << '"' << run.text << '"' << (run.isBold ? " bold" : "") << " " << run.pointSize;
}

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

StyledRun plain(std::string text) {
    return {.text = std::move(text)};
}

/// The runs of the text inside the outermost braces.
std::vector<StyledRun> runsOf(std::string_view text) {
    const auto runs = readRichText(std::string(R"({\rtf1\ansi )").append(text).append("}"));
    EXPECT_TRUE(runs);
    return runs.value_or(std::vector<StyledRun>{});
}

/// All the text inside the outermost braces, whatever its style.
std::string textOf(std::string_view text) {
    std::string whole;
    for (const StyledRun& run : runsOf(text)) {
        whole += run.text;
    }
    return whole;
}

TEST(RichTextReaderTest, readsNothingFromBytesThatAreNoRichText) {
    for (const char* bytes : {"", "{", "plain text", R"({\rt)", R"( {\rtf1 a})", "PK\x03\x04"}) {
        EXPECT_EQ(readRichText(bytes), std::nullopt) << bytes;
    }
}

TEST(RichTextReaderTest, readsAnEmptyTextAsNoRuns) {
    EXPECT_THAT(runsOf(""), IsEmpty());
    EXPECT_EQ(readRichText(R"({\rtf1)"), std::vector<StyledRun>{});
    EXPECT_EQ(readRichText(R"({\rtf)"), std::vector<StyledRun>{});
}

TEST(RichTextReaderTest, readsTwelvePointTextUnlessToldOtherwise) {
    EXPECT_THAT(runsOf("Made by hand."), ElementsAre(plain("Made by hand.")));
}

TEST(RichTextReaderTest, readsTheLineEndsOfTheFileItselfAsNothing) {
    EXPECT_EQ(textOf("one \ntwo\r\nthree"), "one twothree");
}

TEST(RichTextReaderTest, readsFontSizesInHalfPoints) {
    EXPECT_THAT(runsOf(R"(\fs36 a\fs23 b)"),
                ElementsAre(StyledRun{.text = "a", .pointSize = 18},
                            StyledRun{.text = "b", .pointSize = 11.5}));
}

TEST(RichTextReaderTest, keepsTheSizeWhereTheNewOneIsNone) {
    EXPECT_THAT(runsOf(R"(\fs36\fs0\fs-4\fs a)"),
                ElementsAre(StyledRun{.text = "a", .pointSize = 18}));
}

TEST(RichTextReaderTest, boundsFontSizes) {
    EXPECT_THAT(runsOf(R"(\fs999999 a)"), ElementsAre(StyledRun{.text = "a", .pointSize = 1638}));
}

TEST(RichTextReaderTest, endsAStyleWithItsGroup) {
    EXPECT_THAT(runsOf(R"(a{\b\fs40 b}c)"),
                ElementsAre(plain("a"), StyledRun{.text = "b", .isBold = true, .pointSize = 20},
                            plain("c")));
}

TEST(RichTextReaderTest, readsEscapedBracesAndBackslashes) {
    EXPECT_EQ(textOf(R"(\{a\}\\b)"), R"({a}\b)");
}

TEST(RichTextReaderTest, takesOneBlankAsTheEndOfAWord) {
    EXPECT_EQ(textOf(R"(\b a)"), "a");
    EXPECT_EQ(textOf(R"(\b  a)"), " a");
    EXPECT_EQ(textOf(R"(\b0-a)"), "-a");
}

TEST(RichTextReaderTest, passesOverWhatIsMarkedAsIgnorable) {
    EXPECT_EQ(textOf(R"(a{\*\unheardof text {\b more}}b)"), "ab");
}

TEST(RichTextReaderTest, endsWithTheOutermostGroup) {
    EXPECT_EQ(readRichText(R"({\rtf1 a}b{c}})"), std::vector<StyledRun>{plain("a")});
}

TEST(RichTextReaderTest, readsNumbersOutOfRangeAsNone) {
    EXPECT_EQ(textOf(R"(\u99999999999999 a\fs99999999999 b)"), "ab");
}

TEST(RichTextReaderTest, endsLinesAtABackslashBeforeTheEndOfALine) {
    EXPECT_EQ(textOf("one\\\ntwo\\\r\nthree"), "one\ntwo\nthree");
}

TEST(RichTextReaderTest, switchesBoldOnAndOff) {
    EXPECT_THAT(runsOf(R"(a\b b\b0 c)"),
                ElementsAre(plain("a"), StyledRun{.text = "b", .isBold = true}, plain("c")));
}

TEST(RichTextReaderTest, joinsNeighboursOfTheSameStyle) {
    EXPECT_THAT(runsOf(R"(a{b}\b\b0 c{\b }d)"), ElementsAre(plain("abcd")));
}

TEST(RichTextReaderTest, readsUnicodeEscapesAndDropsTheCharacterThatStandsForThem) {
    EXPECT_EQ(textOf(R"(\u8217?s)"), "\u2019s");
    EXPECT_EQ(textOf(R"(\u8217 ?s)"), "\u2019s");
    EXPECT_EQ(textOf(R"(\u-4094?s)"), "\uF002s");
    EXPECT_EQ(textOf(R"(a{\u8217}s)"), "a\u2019s");
}

TEST(RichTextReaderTest, replacesWhatIsNoCharacter) {
    EXPECT_EQ(textOf("a\xE9z"), "a\uFFFDz");
    EXPECT_EQ(textOf(R"(\u-10179?a)"), "\uFFFDa");
}

TEST(RichTextReaderTest, dropsControlCharacters) {
    EXPECT_EQ(textOf(std::string_view("a\0b\x01\tc", 6)), "abc");
}

TEST(RichTextReaderTest, passesOverTheFontTable) {
    EXPECT_EQ(textOf("{\n\\fonttbl\\f0\\fswiss Helvetica;}a"), "a");
}

TEST(RichTextReaderTest, passesOverWordsThatItDoesNotKnow) {
    EXPECT_EQ(textOf(R"(\cocoatextscaling0\pard\tx560\pardirnatural\cf2 b)"), "b");
}

TEST(RichTextReaderTest, readsWhatThereIsOfATextThatIsCutOff) {
    const std::string text = R"({\rtf1\ansi{\b bold}\u8217?{\*\x y}\fs20 end\})";
    for (std::size_t length = 5; length <= text.size(); ++length) {
        const auto runs = readRichText(std::string_view(text).substr(0, length));
        ASSERT_TRUE(runs) << length;
        for (const StyledRun& run : *runs) {
            EXPECT_FALSE(run.text.empty()) << length;
        }
    }
    EXPECT_EQ(readRichText(R"({\rtf1 a\)"), std::vector<StyledRun>{plain("a")});
}

TEST(RichTextReaderTest, knowsEveryWordOfTheCredits) {
    std::ifstream file(VORNIC_SOURCE "/resources/Credits.rtf");
    const std::string credits{std::istreambuf_iterator<char>(file), {}};
    const std::set<std::string> known{"rtf",    "ansi", "ansicpg", "uc", "fonttbl", "f",
                                      "fswiss", "pard", "fs",      "b",  "u"};
    const std::regex word(R"(\\([a-z]+|[^a-z\n]))");
    const std::sregex_iterator first(credits.begin(), credits.end(), word);
    ASSERT_GT(std::distance(first, {}), 20);
    for (auto match = first; match != std::sregex_iterator(); ++match) {
        EXPECT_TRUE(known.contains((*match)[1])) << match->str();
    }
}

TEST(RichTextReaderTest, survivesAMillionOpenGroups) {
    EXPECT_THAT(runsOf(std::string(1'000'000, '{') + "a"), ElementsAre(plain("a")));
}

TEST(RichTextReaderTest, yieldsValidTextForAnyBytes) {
    std::mt19937 random(1);  // NOLINT: the same bytes on every run
    const std::string_view alphabet = "\\\\\\{}'*0159-abufvisn \n\t\x80\xff?";
    for (int round = 0; round < 2000; ++round) {
        std::string text = R"({\rtf1)";
        for (int position = 0; position < 60; ++position) {
            text += alphabet[random() % alphabet.size()];
        }
        const auto runs = readRichText(text);
        ASSERT_TRUE(runs);
        for (std::size_t index = 0; index < runs->size(); ++index) {
            const StyledRun& run = runs->at(index);
            std::string valid;
            appendAsValidUtf8(valid, run.text);
            EXPECT_EQ(valid, run.text) << text;
            EXPECT_FALSE(run.text.empty()) << text;
            EXPECT_GT(run.pointSize, 0) << text;
            if (index > 0) {
                StyledRun before = runs->at(index - 1);
                before.text = run.text;
                EXPECT_NE(before, run) << text;
            }
        }
    }
}

}  // namespace
}  // namespace vornic
