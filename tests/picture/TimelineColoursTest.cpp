#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "picture/TimelineColours.h"

namespace vornic {

namespace {

// WCAG 2.1, relative luminance and contrast ratio.
double luminance(Colour colour) {
    const auto linear = [](std::uint8_t byte) {
        const double value = byte / 255.0;
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.red) + 0.7152 * linear(colour.green) +
           0.0722 * linear(colour.blue);
}

double contrast(Colour left, Colour right) {
    const auto [low, high] = std::minmax({luminance(left), luminance(right)});
    return (high + 0.05) / (low + 0.05);
}

}  // namespace

TEST(TimelineColours, canBeReadOnTheirGrounds) {
    constexpr double kReadable = 4.5;
    constexpr double kSeen = 3;
    for (const TimelineColours* const colours :
         {&TimelineColours::light(), &TimelineColours::dark()}) {
        for (const Colour ground : {colours->paper, colours->pictureTrack, colours->soundTrack}) {
            EXPECT_GE(contrast(colours->text, ground), kReadable);
            EXPECT_GE(contrast(colours->marker, ground), kSeen);
            EXPECT_GE(contrast(colours->cursor, ground), kReadable);
        }
        EXPECT_GE(contrast(colours->faintText, colours->paper), kReadable);
        EXPECT_GE(contrast(colours->faintText, colours->of(TimelineKind::gap).fill), kReadable);
        for (const TimelineColours::OfKind& kind : colours->kinds) {
            EXPECT_GE(contrast(colours->clipText, kind.fill), kReadable);
        }
        for (const Colour severity : colours->severities) {
            EXPECT_GE(contrast(colours->sign, severity), kReadable);
            EXPECT_GE(contrast(severity, colours->paper), kSeen);
        }
    }
}

}  // namespace vornic
