#ifndef VORNIC_FORMATS_XMEML_RATE_H
#define VORNIC_FORMATS_XMEML_RATE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "formats/xmeml/View.h"

namespace vornic::xmeml {

/// What a `<rate>` says.
struct Rate {
    /// Frames a second; at least 1.
    std::int64_t timebase = 1;
    /// Whether it runs 0.1 % slower; nothing where the file leaves that open.
    std::optional<bool> ntsc;

    /// False where both are known to differ.
    [[nodiscard]] bool mayEqual(const Rate& other) const {
        return timebase == other.timebase && (!ntsc || !other.ntsc || *ntsc == *other.ntsc);
    }
    /// Whether there is a drop frame count for it: 29.97 and 59.94, and what may be one of them.
    [[nodiscard]] bool allowsDropFrame() const {
        return (timebase == 30 || timebase == 60) && ntsc.value_or(true);
    }
};

/// No program counts more frames a second.
inline constexpr std::int64_t kMostTimebase = 1000;

/// "TRUE" and "FALSE" in any case of their letters, and what else people write for them: 1, yes,
/// on, 0, no, off.
[[nodiscard]] std::optional<bool> readBoolean(std::string_view text);

/// Whether a `<displayformat>` means drop frame, in any case of its letters.
[[nodiscard]] bool isDropFrameFlag(std::string_view displayFormat);

/// Of a `<rate>`; nothing for `kNoElement` and for one whose timebase is no whole number above 0.
[[nodiscard]] std::optional<Rate> rateOf(const View& view, ElementNumber rate);

/// A timecode by its parts: "01:00:04;12".
struct Timecode {
    std::int64_t hours = 0;
    std::int64_t minutes = 0;
    std::int64_t seconds = 0;
    std::int64_t frames = 0;
    /// Written with a semicolon, a comma or a full stop before the frames.
    bool hasDropSeparator = false;

    /// Whether the count has it: no part too large, and with drop frame none of the numbers that
    /// are left out.
    [[nodiscard]] bool isIn(const Rate& rate, bool isDropFrame) const;
    /// Frames since midnight, of one that the count has.
    [[nodiscard]] std::int64_t frameNumber(const Rate& rate, bool isDropFrame) const;
};

/// Two digits at least for each part; nothing for any other text.
[[nodiscard]] std::optional<Timecode> readTimecode(std::string_view text);

/// The timecode of a frame since midnight, from 0 on: "01:00:04:12", or with a semicolon.
[[nodiscard]] std::string timecodeText(std::int64_t frame, const Rate& rate, bool isDropFrame);

}  // namespace vornic::xmeml

#endif
