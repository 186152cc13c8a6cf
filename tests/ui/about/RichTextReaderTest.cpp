#include <cstddef>
#include <optional>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "base/Utf8.h"
#include "ui/about/RichTextReader.h"

namespace vornic {

void PrintTo(const StyledRun& run, std::ostream* stream) {
    *stream << '"' << run.text << '"' << (run.isBold ? " bold" : "")
            << (run.isItalic ? " italic" : "") << " " << run.pointSize;
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

TEST(RichTextReaderTest, endsParagraphsAndLinesWithALineFeed) {
    EXPECT_EQ(textOf(R"(one\par two\line three)"), "one\ntwo\nthree");
    EXPECT_EQ(textOf("one\\\ntwo\\\r\nthree"), "one\ntwo\nthree");
    EXPECT_EQ(textOf(R"(one\pard two)"), "onetwo");
}

TEST(RichTextReaderTest, readsTheLineEndsOfTheFileItselfAsNothing) {
    EXPECT_EQ(textOf("one \ntwo\r\nthree"), "one twothree");
}

TEST(RichTextReaderTest, readsTabsAndColumns) {
    EXPECT_EQ(textOf("a\\tab b\tc\\\td\\cell e"), "a\tb\tc\td\te");
}

TEST(RichTextReaderTest, readsBoldAndItalicOnAndOff) {
    EXPECT_THAT(runsOf(R"(a\b b\i c\b0 d\i0 e)"),
                ElementsAre(plain("a"), StyledRun{.text = "b", .isBold = true},
                            StyledRun{.text = "c", .isBold = true, .isItalic = true},
                            StyledRun{.text = "d", .isItalic = true}, plain("e")));
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

TEST(RichTextReaderTest, goesBackToPlainCharacters) {
    EXPECT_THAT(
        runsOf(R"(\b\i\fs40 a\plain b)"),
        ElementsAre(StyledRun{.text = "a", .isBold = true, .isItalic = true, .pointSize = 20},
                    plain("b")));
}

TEST(RichTextReaderTest, joinsNeighboursOfTheSameStyle) {
    EXPECT_THAT(runsOf(R"(a{b}\b\b0 c{\i }d)"), ElementsAre(plain("abcd")));
}

TEST(RichTextReaderTest, readsEscapedBracesAndBackslashes) {
    EXPECT_EQ(textOf(R"(\{a\}\\b)"), R"({a}\b)");
}

TEST(RichTextReaderTest, takesOneBlankAsTheEndOfAWord) {
    EXPECT_EQ(textOf(R"(\b a)"), "a");
    EXPECT_EQ(textOf(R"(\b  a)"), " a");
    EXPECT_EQ(textOf(R"(\b0-a)"), "-a");
}

TEST(RichTextReaderTest, readsUnicodeEscapesAndPassesOverWhatStandsForThem) {
    EXPECT_EQ(textOf(R"(\u8217?s)"), "\u2019s");
    EXPECT_EQ(textOf(R"(\u8217 ?s)"), "\u2019s");
    EXPECT_EQ(textOf(R"(\u8217\'92s)"), "\u2019s");
    EXPECT_EQ(textOf(R"(\u8217\rquote s)"), "\u2019s");
    EXPECT_EQ(textOf(R"(\u8217\~s)"), "\u2019s");
}

TEST(RichTextReaderTest, passesOverAsManyCharactersAsTheTextSays) {
    EXPECT_EQ(textOf(R"(\uc0\u8217 s)"), "\u2019s");
    EXPECT_EQ(textOf(R"(\uc2\u8217?\'3fs)"), "\u2019s");
    EXPECT_EQ(textOf(R"({\uc3 }\u8217?s)"), "\u2019s");
}

TEST(RichTextReaderTest, endsWhatStandsForAnEscapeWithTheGroup) {
    EXPECT_EQ(textOf(R"(\uc9{\u8217?}s)"), "\u2019s");
    EXPECT_EQ(textOf(R"(\uc9\u8217?{s})"), "\u2019s");
}

TEST(RichTextReaderTest, readsUnitsThatAreWrittenAsNegativeNumbers) {
    EXPECT_EQ(textOf(R"(\uc0\u-4094 )"), "\uF002");
    EXPECT_EQ(textOf(R"(\uc0\u61442 )"), "\uF002");
}

TEST(RichTextReaderTest, joinsTheTwoUnitsOfACharacter) {
    EXPECT_EQ(textOf(R"(\u-10179?\u-8704?!)"), "\U0001F600!");
}

TEST(RichTextReaderTest, replacesAUnitWithoutItsOtherHalf) {
    EXPECT_EQ(textOf(R"(\u-10179?a)"), "\uFFFDa");
    EXPECT_EQ(textOf(R"(\u-8704?a)"), "\uFFFDa");
    EXPECT_EQ(textOf(R"(\u-10179?\u-10179?\u-8704?)"), "\uFFFD\U0001F600");
    EXPECT_EQ(textOf(R"({\u-10179?}\u-8704?)"), "\uFFFD\uFFFD");
    EXPECT_EQ(textOf(R"(\u-10179?)"), "\uFFFD");
}

TEST(RichTextReaderTest, readsSeparatorsOfUnicodeAsLineEnds) {
    EXPECT_EQ(textOf(R"(a\uc0\u8232 b\u8233 c)"), "a\nb\nc");
}

TEST(RichTextReaderTest, readsBytesByTheirNumberInWindowsLatin) {
    EXPECT_EQ(textOf(R"(\'e9\'80\'41\'C9)"), "\u00E9\u20ACA\u00C9");
    EXPECT_EQ(textOf("\xE9"), "\u00E9");
}

TEST(RichTextReaderTest, readsTheEncodingThatTheTextNames) {
    EXPECT_EQ(textOf(R"(\mac\'8e)"), "\u00E9");
    EXPECT_EQ(textOf(R"(\ansicpg1251\'e9)"), "\u0439");
    EXPECT_EQ(textOf(R"(\ansicpg1250\'e8)"), "\u010D");
    EXPECT_EQ(textOf(R"(\ansicpg1253\'e1)"), "\u03B1");
    EXPECT_EQ(textOf(R"(\ansicpg1254\'fd)"), "\u0131");
    EXPECT_EQ(textOf(R"(\ansicpg10000\'8e)"), "\u00E9");
    EXPECT_EQ(textOf(R"(\mac\ansicpg1252\'e9)"), "\u00E9");
    EXPECT_EQ(textOf(R"(\ansicpg77\'e9)"), "\u00E9");
}

TEST(RichTextReaderTest, replacesAByteThatNoCharacterHas) {
    EXPECT_EQ(textOf(R"(a\'81b)"), "a\uFFFDb");
}

TEST(RichTextReaderTest, readsNamedCharacters) {
    EXPECT_EQ(textOf(R"(\bullet\endash\emdash\lquote\rquote\ldblquote\rdblquote x)"),
              "\u2022\u2013\u2014\u2018\u2019\u201C\u201Dx");
    EXPECT_EQ(textOf(R"(a\~b\_c\-d)"), "a\u00A0b\u2011cd");
}

TEST(RichTextReaderTest, dropsControlCharacters) {
    EXPECT_EQ(textOf(std::string_view("a\0b\x01\\'07c", 9)), "abc");
    EXPECT_EQ(textOf(R"(a\u7?\'00b)"), "ab");
}

TEST(RichTextReaderTest, passesOverTablesAndInformation) {
    EXPECT_EQ(
        textOf(R"({\fonttbl\f0\fswiss Helvetica;}{\colortbl;\red255;}{\stylesheet{\s1 Body;}})"
               R"({\info{\title Credits}{\author Nobody}}a)"),
        "a");
    EXPECT_EQ(textOf("{\n\\fonttbl Helvetica;}a"), "a");
}

TEST(RichTextReaderTest, passesOverPicturesHeadersAndNotes) {
    EXPECT_EQ(textOf(R"(a{\pict\pngblip 89504e47}{\header Top}{\footerf End}{\footnote Note}b)"),
              "ab");
}

TEST(RichTextReaderTest, passesOverWhatIsMarkedAsIgnorable) {
    EXPECT_EQ(textOf(R"(a{\*\unheardof text {\b more}}b)"), "ab");
}

TEST(RichTextReaderTest, passesOverHiddenText) {
    EXPECT_EQ(textOf(R"(a\v b\v0 c{\v d}e)"), "ace");
}

TEST(RichTextReaderTest, showsTheTextOfALinkWithoutItsAddress) {
    EXPECT_EQ(textOf(R"({\field{\*\fldinst{HYPERLINK "https://example.org"}}{\fldrslt Site}})"),
              "Site");
    EXPECT_EQ(textOf(R"({\field{\fldinst HYPERLINK "x"}{\fldrslt Site}})"), "Site");
}

TEST(RichTextReaderTest, showsTheMarksOfLists) {
    EXPECT_EQ(textOf(R"({\listtext\tab\uc0\u8226 \tab }One)"), "\t\u2022\tOne");
}

TEST(RichTextReaderTest, passesOverWordsThatItDoesNotKnow) {
    EXPECT_EQ(textOf(R"(\cocoatextscaling0\pard\tx560\pardirnatural\partightenfactor0 a\cf2 b)"),
              "ab");
}

TEST(RichTextReaderTest, goesOnAfterANameOfATableThatBeginsNoGroup) {
    EXPECT_EQ(textOf(R"(a \info b)"), "a b");
}

TEST(RichTextReaderTest, passesOverBinaryData) {
    EXPECT_EQ(textOf(R"(a\bin4 {}}{b)"), "ab");
    EXPECT_EQ(textOf(R"(a\u8217\bin2 {{b)"), "a\u2019b");
    EXPECT_EQ(textOf(R"(a\bin-4 b)"), "ab");
}

TEST(RichTextReaderTest, endsWithTheOutermostGroup) {
    EXPECT_EQ(readRichText(R"({\rtf1 a}b{c}})"), std::vector<StyledRun>{plain("a")});
}

TEST(RichTextReaderTest, readsWhatThereIsOfATextThatIsCutOff) {
    const std::string text = R"({\rtf1\ansi{\b bold\'e9}\u8217?{\*\x y}\bin3 abc end\})";
    for (std::size_t length = 5; length <= text.size(); ++length) {
        const auto runs = readRichText(std::string_view(text).substr(0, length));
        ASSERT_TRUE(runs) << length;
        for (const StyledRun& run : *runs) {
            EXPECT_FALSE(run.text.empty()) << length;
        }
    }
    EXPECT_EQ(readRichText(R"({\rtf1 a\)"), std::vector<StyledRun>{plain("a")});
    EXPECT_EQ(readRichText(R"({\rtf1 a\')"), std::vector<StyledRun>{plain("a")});
    EXPECT_EQ(readRichText(R"({\rtf1 a\'4)"), std::vector<StyledRun>{plain("a4")});
    EXPECT_EQ(readRichText(R"({\rtf1 a\bin999999999 b)"), std::vector<StyledRun>{plain("a")});
}

TEST(RichTextReaderTest, readsTextBehindABrokenNumberOfAByte) {
    EXPECT_EQ(textOf(R"(\'zzb\'-1)"), "zzb-1");
}

TEST(RichTextReaderTest, readsNumbersOutOfRangeAsNone) {
    EXPECT_EQ(textOf(R"(\uc99999999999\u99999999999999 a\b99999999999 b)"), "ab");
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
