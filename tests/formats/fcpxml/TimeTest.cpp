#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "formats/fcpxml/Time.h"

namespace vornic::fcpxml {

namespace {

constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();

TimeFault faultOf(std::string_view text) {
    return parsedTime(text).fault;
}

}  // namespace

TEST(FCPXMLTime, isReadAsAFractionOfSeconds) {
    EXPECT_EQ(parsedTime("5s").time, Time(5));
    EXPECT_EQ(parsedTime("-5/2s").time, Time(-5, 2));
    EXPECT_EQ(parsedTime("1001/24000s").time, Time(2002, 48000));
    EXPECT_EQ(parsedTime("0/1s").time, Time(0));
    EXPECT_EQ(parsedTime("007/010s").time, Time(7, 10));
}

TEST(FCPXMLTime, hasNoOtherForm) {
    for (const char* const text : {"", "s", "5", "5.5s", "/2s", "5/s", "5/-2s", "+5s", " 5s", "5s ",
                                   "5 s", "--5s", "5/2", "5/2/1s", "00:00:05:00", "5S", "5ss"}) {
        EXPECT_EQ(faultOf(text), TimeFault::malformed) << text;
        EXPECT_FALSE(parsedTime(text).time.isKnown()) << text;
    }
}

TEST(FCPXMLTime, fitsInto64BitsOver32) {
    EXPECT_EQ(faultOf("9223372036854775807/4294967295s"), TimeFault::none);
    EXPECT_EQ(faultOf("9223372036854775808s"), TimeFault::outOfRange);
    EXPECT_EQ(faultOf("99999999999999999999999999/2s"), TimeFault::outOfRange);
    EXPECT_EQ(faultOf("1/4294967296s"), TimeFault::outOfRange);
    EXPECT_EQ(faultOf("1/99999999999999999999999999s"), TimeFault::outOfRange);
    EXPECT_EQ(faultOf("5/0s"), TimeFault::outOfRange);
    EXPECT_EQ(faultOf("99999999999999999999999999/x"), TimeFault::malformed);
}

TEST(FCPXMLTime, calculatesExactly) {
    EXPECT_EQ(Time(1, 3) + Time(1, 6), Time(1, 2));
    EXPECT_EQ(Time(1001, 24000) + Time(1001, 30000), Time(9009, 120000));
    EXPECT_EQ(Time(1) - Time(1, 3), Time(2, 3));
    EXPECT_EQ(Time(1, 3).half(), Time(1, 6));
    EXPECT_LT(Time(333333333, 1000000000), Time(1, 3));
    EXPECT_GT(Time(kMost), Time(kMost - 1));
    EXPECT_EQ(Time(kMost, 4294967295) - Time(kMost, 4294967295), Time(0));
}

TEST(FCPXMLTime, thatIsTooLargeIsUnknown) {
    EXPECT_FALSE((Time(kMost) + Time(kMost)).isKnown());
    EXPECT_FALSE((Time(kMost, 4294967295) + Time(kMost, 4294967291)).isKnown());
    EXPECT_FALSE((Time() + Time(1)).isKnown());
    EXPECT_FALSE(Time() < Time(1) || Time() > Time(1) || Time() == Time(1) || Time() == Time());
}

TEST(FCPXMLTime, countsFrames) {
    const Time frame(1001, 24000);
    EXPECT_TRUE(Time(1001).isMultipleOf(frame));
    EXPECT_TRUE(Time(-1001, 24000).isMultipleOf(frame));
    EXPECT_FALSE(Time(1).isMultipleOf(frame));
    EXPECT_FALSE(Time(1).isMultipleOf(Time()) || Time(1).isMultipleOf(Time(0)) ||
                 Time().isMultipleOf(frame));
    EXPECT_EQ(Time(1).framesOf(Time(1, 25)), 25);
    EXPECT_EQ(Time(1, 50).framesOf(Time(1, 25)), 1);
    EXPECT_EQ(Time(-1, 50).framesOf(Time(1, 25)), 0);
    EXPECT_EQ(Time(-3, 100).framesOf(Time(1, 25)), -1);
    EXPECT_EQ(Time(kMost).framesOf(Time(1, 25)), 0);
    EXPECT_EQ(Time::ofFrames(24, frame).text(), "24024/24000s");
    EXPECT_FALSE(Time::ofFrames(kMost, frame).isKnown());
}

TEST(FCPXMLTime, isWrittenAsFilesAndAsPeopleWriteIt) {
    EXPECT_EQ(Time(5).text(), "5s");
    EXPECT_EQ(Time(10, 4).text(), "10/4s");
    EXPECT_EQ(Time(0, 24).text(), "0s");
    EXPECT_EQ(Time().text(), "");
    EXPECT_EQ(Time(10, 4).seconds(), "2.5 s");
    EXPECT_EQ(Time(-10).seconds(), "-10 s");
    EXPECT_EQ(Time(1001, 24000).seconds(), "0.041708 s");
    EXPECT_EQ(Time(kMost).seconds(), "9223372036854775808 s");
}

TEST(FCPXMLTime, isATimecode) {
    EXPECT_EQ(timecodeText(Time(3604), Time(1, 25), false), "01:00:04:00");
    EXPECT_EQ(timecodeText(Time(3604) + Time(12, 25), Time(1, 25), false), "01:00:04:12");
    EXPECT_EQ(timecodeText(Time(1001 * 24, 24000), Time(1001, 24000), false), "00:00:01:00");
    EXPECT_EQ(timecodeText(Time(), Time(1, 25), false), "");
    EXPECT_EQ(timecodeText(Time(-1), Time(1, 25), false), "");
    EXPECT_EQ(timecodeText(Time(1), Time(), false), "");
    EXPECT_EQ(timecodeText(Time(1), Time(2000), false), "");
    EXPECT_EQ(timecodeText(Time(1), Time(1, 5000), false), "");
    EXPECT_EQ(timecodeText(Time(kMost), Time(1, 25), false), "");
}

// The first two numbers of each minute are left out, but for each tenth minute.
TEST(FCPXMLTime, leavesNumbersOutInDropFrame) {
    const Time frame(1001, 30000);
    const auto timecode = [frame](std::int64_t count) {
        return timecodeText(Time::ofFrames(count, frame), frame, true);
    };
    EXPECT_EQ(timecode(1799), "00:00:59;29");
    EXPECT_EQ(timecode(1800), "00:01:00;02");
    EXPECT_EQ(timecode(17981), "00:09:59;29");
    EXPECT_EQ(timecode(17982), "00:10:00;00");
    EXPECT_EQ(timecode(17982 * 6), "01:00:00;00");
    const Time fast(1001, 60000);
    EXPECT_EQ(timecodeText(Time::ofFrames(3600, fast), fast, true), "00:01:00;04");
    EXPECT_EQ(timecodeText(Time(60), Time(1, 25), true), "00:01:00:00");
}

}  // namespace vornic::fcpxml
