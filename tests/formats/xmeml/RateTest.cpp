#include <cstdint>
#include <optional>

#include <gtest/gtest.h>

#include "formats/xmeml/Number.h"
#include "formats/xmeml/Rate.h"

namespace vornic::xmeml {
namespace {

constexpr std::int64_t kSecondsOfDay = 24 * 60 * 60;

// Every frame of a day has a timecode of its own, which the count has and which leads back to it.
void expectThereAndBack(const Rate& rate, bool isDropFrame, std::int64_t framesOfDay) {
    for (std::int64_t frame = 0; frame < framesOfDay; frame += frame % 1800 < 4 ? 1 : 97) {
        const std::string text = timecodeText(frame, rate, isDropFrame);
        const std::optional<Timecode> timecode = readTimecode(text);
        ASSERT_TRUE(timecode && timecode->isIn(rate, isDropFrame)) << text;
        ASSERT_EQ(timecode->frameNumber(rate, isDropFrame), frame) << text;
        ASSERT_EQ(timecode->hasDropSeparator, isDropFrame);
    }
}

TEST(XMEMLTimecode, leadsBackToItsFrame) {
    expectThereAndBack({25, false}, false, kSecondsOfDay * 25);
    expectThereAndBack({30, true}, true, 2589408);
    expectThereAndBack({60, true}, true, 2 * 2589408);
}

TEST(XMEMLTimecode, leavesOutTwoNumbersAMinuteButInEveryTenth) {
    const Rate rate{30, true};
    EXPECT_EQ(timecodeText(1799, rate, true), "00:00:59;29");
    EXPECT_EQ(timecodeText(1800, rate, true), "00:01:00;02");
    EXPECT_EQ(timecodeText(17982, rate, true), "00:10:00;00");
    EXPECT_EQ(timecodeText(107892, rate, true), "01:00:00;00");
    EXPECT_EQ(timecodeText(3600, {60, true}, true), "00:01:00;04");
    EXPECT_FALSE(readTimecode("00:01:00;01")->isIn(rate, true));
    EXPECT_TRUE(readTimecode("00:01:00;01")->isIn(rate, false));
}

TEST(XMEMLTimecode, hasFourPartsOfTwoDigits) {
    EXPECT_TRUE(readTimecode("00;00;00;00"));
    EXPECT_TRUE(readTimecode("01:00:00.00"));
    EXPECT_TRUE(readTimecode("01:00:00:119"));
    for (const char* const text : {"", "01:00:00", "1:00:00:00", "01:00:00:00:00", "01:00:00:-1",
                                   "01-00-00-00", "x", "01:00:00:0000", "01:00:00:00 "}) {
        EXPECT_FALSE(readTimecode(text)) << text;
    }
    EXPECT_FALSE(readTimecode("24:00:00:00")->isIn({25, false}, false));
    EXPECT_FALSE(readTimecode("00:00:00:25")->isIn({25, false}, false));
}

TEST(XMEMLNumber, reportsHowItIsWritten) {
    EXPECT_EQ(readNumber("-12").whole(), -12);
    EXPECT_EQ(readNumber("+12").whole(), 12);
    EXPECT_EQ(readNumber("12.00").form, NumberForm::wholeWithFraction);
    EXPECT_EQ(readNumber("12.00").whole(), 12);
    EXPECT_EQ(readNumber("12.5").form, NumberForm::fraction);
    EXPECT_EQ(readNumber("12.5").whole(), std::nullopt);
    EXPECT_EQ(readNumber("99999999999999999999").form, NumberForm::tooLarge);
    for (const char* const text : {"", "x", "12.", "12x", "1e3", "--1", "+-1", ".5", "12.-5"}) {
        EXPECT_EQ(readNumber(text).form, NumberForm::other) << text;
    }
}

TEST(XMEMLRate, readsWhatPeopleWriteForYesAndNo) {
    EXPECT_EQ(readBoolean("TRUE"), true);
    EXPECT_EQ(readBoolean("True"), true);
    EXPECT_EQ(readBoolean("1"), true);
    EXPECT_EQ(readBoolean("No"), false);
    for (const char* const text : {"", "2", "maybe", "TRUE ", "{{ntsc}}", "falsely"}) {
        EXPECT_EQ(readBoolean(text), std::nullopt) << text;
    }
}

TEST(XMEMLRate, ofAnUnknownFlagMayBeEitherOne) {
    const Rate open{30, std::nullopt};
    EXPECT_TRUE(open.mayEqual({30, true}));
    EXPECT_FALSE(Rate({30, false}).mayEqual({30, true}));
    EXPECT_FALSE(open.mayEqual({60, std::nullopt}));
    EXPECT_TRUE(open.allowsDropFrame());
    EXPECT_FALSE(Rate({30, false}).allowsDropFrame());
    EXPECT_FALSE(Rate({24, true}).allowsDropFrame());
}

}  // namespace
}  // namespace vornic::xmeml
