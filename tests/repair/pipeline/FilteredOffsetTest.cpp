#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "base/Exception.h"
#include "repair/pipeline/CharacterFilter.h"

namespace vornic {
namespace {

class SilentObserver : public CharacterFilterObserver {
  public:
    bool isCancelled() override { return false; }
    void removedUnit(std::int64_t, TextSpan) override {}
    bool finishedUnits(std::int64_t, std::int64_t) override { return true; }
};

std::string filtered(std::string_view text) {
    SilentObserver observer;
    return filterInvalidCharacters(text, observer).value().of(std::string(text));
}

// What stands in the text from where the filtered text has `what`.
std::string_view originOf(std::string_view text, std::string_view what) {
    const std::size_t offset = filtered(text).find(what);
    EXPECT_NE(offset, std::string::npos);
    return text.substr(originOfFilteredOffset(text, offset));
}

TEST(FilteredOffset, isThatOfTheSameByteWhereNothingWasChanged) {
    EXPECT_EQ(originOf("<a b='c'>d</a>", "d</a>"), "d</a>");
    EXPECT_EQ(originOf("<a>\n\t&amp;x</a>", "x</a>"), "x</a>");
}

TEST(FilteredOffset, countsWhatWasWrittenOtherwise) {
    EXPECT_EQ(originOf("<a>\"&'>x</a>", "x</a>"), "x</a>");
    EXPECT_EQ(originOf("<a>\xC3\xA9x</a>", "x</a>"), "x</a>");
    EXPECT_EQ(originOf("<a b='<'>x</a>", "x</a>"), "x</a>");
    EXPECT_EQ(originOf("<a><![CDATA[<\xC3\xA9]]>x</a>", "x</a>"), "x</a>");
}

TEST(FilteredOffset, countsWhatWasRemoved) {
    EXPECT_EQ(originOf("\x01<a\x02>\x03\x04\xF0\x9F\x98\x80x\x05</a>", "x</a>"), "x\x05</a>");
    EXPECT_EQ(originOf("<a>x\x05</a>", "</a>"), "</a>");
}

TEST(FilteredOffset, insideAReplacementIsTheCharactersOwn) {
    const std::string text = "<a>\xC3\xA9</a>";
    for (std::size_t offset = 3; offset < 3 + std::string("&#233;").size(); ++offset) {
        EXPECT_EQ(originOfFilteredOffset(text, offset), 3U) << offset;
    }
    EXPECT_EQ(originOfFilteredOffset(text, 9), 5U);
}

TEST(FilteredOffset, behindTheTextIsItsEnd) {
    const std::string text = "<a>&</a>";
    EXPECT_EQ(originOfFilteredOffset(text, filtered(text).size()), text.size());
    EXPECT_EQ(originOfFilteredOffset(text, 1000), text.size());
    EXPECT_EQ(originOfFilteredOffset("", 0), 0U);
    EXPECT_EQ(originOfFilteredOffset("\x01", 0), 1U);
}

TEST(FilteredOffset, isWhereFilteringUpToItLeads) {
    // Nothing here is looked at beyond its own place, so that a beginning of the text is filtered
    // as it is in the whole.
    constexpr std::string_view kPieces[] = {
        "<a b='\xC3\xA9'>", "\x01", "x", "\xF0\x9F\x98\x80", "\"", "</a>", "<", ">", " \n",
        "\xEE\x80\x80"};
    std::mt19937 random(17);
    for (int round = 0; round < 200; ++round) {
        std::string text = "x";
        for (int count = 0; count < 30; ++count) {
            text += kPieces[random() % std::size(kPieces)];
        }
        const std::size_t length = filtered(text).size();
        std::size_t last = 0;
        for (std::size_t offset = 0; offset < length; ++offset) {
            const std::size_t origin = originOfFilteredOffset(text, offset);
            EXPECT_GE(origin, last);
            last = origin;
            std::size_t next = origin + 1;
            while (next < text.size() &&
                   (static_cast<unsigned char>(text[next]) & 0xC0U) == 0x80U) {
                ++next;
            }
            EXPECT_LE(filtered(text.substr(0, origin)).size(), offset) << text;
            EXPECT_GT(filtered(text.substr(0, next)).size(), offset) << text;
        }
    }
}

TEST(FilteredOffset, ofATextThatCannotBeFilteredRaisesTheSame) {
    EXPECT_THROW(static_cast<void>(originOfFilteredOffset("<>", 5)), platform::RangeException);
}

}  // namespace
}  // namespace vornic
