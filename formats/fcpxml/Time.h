#ifndef VORNIC_FORMATS_FCPXML_TIME_H
#define VORNIC_FORMATS_FCPXML_TIME_H

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

namespace vornic::fcpxml {

/// A time of FCPXML, an exact number of seconds, or unknown: what is left out, malformed or too
/// large. Arithmetic with an unknown time gives an unknown one, and every comparison with one is
/// false, as with NaN. Any thread.
class Time {
  public:
    /// Unknown.
    constexpr Time() = default;
    /// @param denominator greater than 0. The fraction stays as it is.
    constexpr explicit Time(std::int64_t numerator, std::int64_t denominator = 1)
        : numerator_(numerator), denominator_(denominator) {}

    [[nodiscard]] constexpr bool isKnown() const { return denominator_ != 0; }
    /// The time, or the other one when this is unknown.
    [[nodiscard]] constexpr Time valueOr(Time other) const { return isKnown() ? *this : other; }

    friend Time operator+(Time left, Time right);
    friend Time operator-(Time left, Time right);
    friend std::partial_ordering operator<=>(Time left, Time right);
    friend bool operator==(Time left, Time right) { return (left <=> right) == 0; }
    [[nodiscard]] Time half() const;
    [[nodiscard]] Time absolute() const;

    /// Whether it is a whole number of frames. False when one of the two is unknown or the frame
    /// has no length.
    [[nodiscard]] bool isMultipleOf(Time frame) const;
    /// The nearest whole number of frames, halves upwards. 0 where that cannot be said.
    [[nodiscard]] std::int64_t framesOf(Time frame) const;
    /// That many frames, in the frame's own fraction; unknown when that is too large.
    [[nodiscard]] static Time ofFrames(std::int64_t count, Time frame);

    /// As FCPXML writes it: "5s", "1001/24000s", without reducing the fraction; "" when unknown.
    [[nodiscard]] std::string text() const;
    /// Near enough for a drawing; 0 when unknown.
    [[nodiscard]] double approximateSeconds() const {
        return isKnown() ? static_cast<double>(numerator_) / static_cast<double>(denominator_) : 0;
    }
    /// For people: "1.25 s"; "" when unknown.
    [[nodiscard]] std::string seconds() const;

  private:
    std::int64_t numerator_ = 0;
    // Greater than 0, or 0 for an unknown time.
    std::int64_t denominator_ = 0;
};

enum class TimeFault {
    none,
    /// Not of the form `-?digits(/digits)?s`.
    malformed,
    /// The number of units does not fit into 64 bits, their size into 32, or that is 0.
    outOfRange,
};

struct ParsedTime {
    /// Unknown when there is a fault.
    Time time;
    TimeFault fault = TimeFault::none;
};

/// Reads what an attribute says, such as "1001/24000s".
[[nodiscard]] ParsedTime parsedTime(std::string_view text);

/// "01:00:04:12", with a semicolon in front of the frames for drop frame (SMPTE ST 12-1), which
/// counts at 30 and 60 frames a second alone. "" for unknown or negative positions and for frame
/// durations that no timecode counts.
[[nodiscard]] std::string timecodeText(Time position, Time frame, bool isDropFrame);

}  // namespace vornic::fcpxml

#endif
