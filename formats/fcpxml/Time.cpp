#include "formats/fcpxml/Time.h"

#include <charconv>
#include <cstdio>
#include <limits>
#include <numeric>

#include "base/ASCII.h"

namespace vornic::fcpxml {

namespace {

__extension__ typedef __int128 Wide;  // NOLINT: the other form is refused

constexpr Wide kMost = std::numeric_limits<std::int64_t>::max();

Wide greatestCommonDivisor(Wide left, Wide right) {
    while (right != 0) {
        const Wide rest = left % right;
        left = right;
        right = rest;
    }
    return left < 0 ? -left : left;
}

bool fits(Wide numerator, Wide denominator) {
    return numerator <= kMost && numerator >= -kMost && denominator <= kMost;
}

// The fraction, reduced where it has to be; unknown when even so it is too large.
Time fraction(Wide numerator, Wide denominator) {
    if (!fits(numerator, denominator)) {
        const Wide divisor = greatestCommonDivisor(numerator, denominator);
        numerator /= divisor;
        denominator /= divisor;
    }
    return fits(numerator, denominator)
               ? Time(static_cast<std::int64_t>(numerator), static_cast<std::int64_t>(denominator))
               : Time();
}

// Divides and rounds down.
Wide quotientOf(Wide dividend, Wide divisor) {
    const Wide quotient = dividend / divisor;
    return dividend % divisor < 0 ? quotient - 1 : quotient;
}

// All digits at the beginning of a text; what is too large is told.
TimeFault takeNumber(std::string_view& text, std::int64_t& number, std::int64_t most) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc::invalid_argument) {
        return TimeFault::malformed;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return error != std::errc() || number > most ? TimeFault::outOfRange : TimeFault::none;
}

bool beginsWithDigit(std::string_view text) {
    return !text.empty() && isDigit(text.front());
}

// Frames a second, rounded; 0 where there is no such count.
std::int64_t countedRate(Time frame) {
    if (!(frame > Time(0)) || Time(1).framesOf(frame) > 1000) {
        return 0;
    }
    return Time(1).framesOf(frame);
}

// The number that drop frame shows for a count: the first two of each minute but each tenth are
// left out, twice as many at 60 frames a second.
std::int64_t droppedNumber(std::int64_t count, std::int64_t rate) {
    const std::int64_t dropped = rate / 15;
    const std::int64_t minute = rate * 60 - dropped;
    const std::int64_t tenMinutes = minute * 10 + dropped;
    const std::int64_t tens = count / tenMinutes;
    const std::int64_t rest = count % tenMinutes;
    const std::int64_t minutes = rest < dropped ? 0 : (rest - dropped) / minute;
    return count + dropped * (9 * tens + minutes);
}

}  // namespace

Time operator+(Time left, Time right) {
    if (!left.isKnown() || !right.isKnown()) {
        return {};
    }
    if (left.denominator_ == right.denominator_) {
        return fraction(Wide{left.numerator_} + right.numerator_, left.denominator_);
    }
    const std::int64_t divisor = std::gcd(left.denominator_, right.denominator_);
    const Wide leftFactor = right.denominator_ / divisor;
    const Wide rightFactor = left.denominator_ / divisor;
    // Both products stay below 2^126, so that their sum is no overflow.
    return fraction(left.numerator_ * leftFactor + right.numerator_ * rightFactor,
                    left.denominator_ * leftFactor);
}

Time operator-(Time left, Time right) {
    return left + (right.isKnown() ? Time(-right.numerator_, right.denominator_) : Time());
}

std::partial_ordering operator<=>(Time left, Time right) {
    if (!left.isKnown() || !right.isKnown()) {
        return std::partial_ordering::unordered;
    }
    const Wide difference =
        Wide{left.numerator_} * right.denominator_ - Wide{right.numerator_} * left.denominator_;
    return difference < 0    ? std::partial_ordering::less
           : difference == 0 ? std::partial_ordering::equivalent
                             : std::partial_ordering::greater;
}

Time Time::half() const {
    return isKnown() ? fraction(numerator_, Wide{denominator_} * 2) : Time();
}

Time Time::absolute() const {
    return isKnown() ? Time(numerator_ < 0 ? -numerator_ : numerator_, denominator_) : Time();
}

bool Time::isMultipleOf(Time frame) const {
    return isKnown() && frame > Time(0) &&
           Wide{numerator_} * frame.denominator_ % (Wide{denominator_} * frame.numerator_) == 0;
}

std::int64_t Time::framesOf(Time frame) const {
    if (!isKnown() || !(frame > Time(0))) {
        return 0;
    }
    const Wide divisor = Wide{denominator_} * frame.numerator_;
    const Wide dividend = Wide{numerator_} * frame.denominator_;
    const Wide below = quotientOf(dividend, divisor);
    const Wide nearest = dividend - below * divisor >= divisor - divisor / 2 ? below + 1 : below;
    return nearest > kMost || nearest < -kMost ? 0 : static_cast<std::int64_t>(nearest);
}

Time Time::ofFrames(std::int64_t count, Time frame) {
    const Wide numerator = Wide{count} * frame.numerator_;
    return frame.isKnown() && fits(numerator, 1)
               ? Time(static_cast<std::int64_t>(numerator), frame.denominator_)
               : Time();
}

std::string Time::text() const {
    if (!isKnown()) {
        return "";
    }
    const bool isWhole = denominator_ == 1 || numerator_ == 0;
    return std::to_string(numerator_) + (isWhole ? "" : "/" + std::to_string(denominator_)) + "s";
}

std::string Time::seconds() const {
    if (!isKnown()) {
        return "";
    }
    // Large enough for every double, "-", a point, six digits and " s".
    constexpr std::size_t kLongest = 340;
    char buffer[kLongest];
    const double value = static_cast<double>(numerator_) / static_cast<double>(denominator_);
    std::snprintf(buffer, sizeof(buffer), "%.6f", value);
    std::string text = buffer;
    text.resize(text.find_last_not_of('0') + 1);
    if (text.back() == '.') {
        text.pop_back();
    }
    return text + " s";
}

ParsedTime parsedTime(std::string_view text) {
    constexpr std::int64_t kMostUnits = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t kSmallestUnit = std::numeric_limits<std::uint32_t>::max();
    constexpr ParsedTime kMalformed{{}, TimeFault::malformed};
    const bool isNegative = text.starts_with('-');
    text.remove_prefix(isNegative ? 1 : 0);
    std::int64_t numerator = 0;
    if (!beginsWithDigit(text)) {
        return kMalformed;
    }
    const TimeFault fault = takeNumber(text, numerator, kMostUnits);
    std::int64_t denominator = 1;
    TimeFault unitFault = TimeFault::none;
    if (text.starts_with('/')) {
        text.remove_prefix(1);
        if (!beginsWithDigit(text)) {
            return kMalformed;
        }
        unitFault = takeNumber(text, denominator, kSmallestUnit);
    }
    if (text != "s") {
        return kMalformed;
    }
    if (fault != TimeFault::none || unitFault != TimeFault::none || denominator == 0) {
        return {{}, TimeFault::outOfRange};
    }
    return {Time(isNegative ? -numerator : numerator, denominator), TimeFault::none};
}

std::string timecodeText(Time position, Time frame, bool isDropFrame) {
    const std::int64_t rate = countedRate(frame);
    constexpr Time kMostSeconds(100 * 3600);
    if (rate == 0 || !(position >= Time(0)) || !(position < kMostSeconds)) {
        return "";
    }
    std::int64_t number = position.framesOf(frame);
    const bool drops = isDropFrame && (rate == 30 || rate == 60);
    if (drops) {
        number = droppedNumber(number, rate);
    }
    const std::int64_t seconds = number / rate;
    constexpr std::size_t kLongest = 32;
    char buffer[kLongest];
    std::snprintf(buffer, sizeof(buffer), "%02d:%02d:%02d%c%02d", static_cast<int>(seconds / 3600),
                  static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60),
                  drops ? ';' : ':', static_cast<int>(number % rate));
    return buffer;
}

}  // namespace vornic::fcpxml
