#include "formats/xmeml/Rate.h"

#include <array>
#include <charconv>

#include "base/Text.h"
#include "formats/xmeml/Number.h"

namespace vornic::xmeml {

namespace {

constexpr std::int64_t kMinutesOfHour = 60;
constexpr std::int64_t kSecondsOfMinute = 60;
constexpr std::int64_t kHoursOfDay = 24;
// A drop frame count leaves the first numbers of each minute out, but of every tenth one.
constexpr std::int64_t kMinutesWithoutDrop = 10;

std::int64_t droppedPerMinute(const Rate& rate) {
    return rate.timebase / 15;
}

// The number of two digits or a few more at the beginning of the text.
std::optional<std::int64_t> takeDigits(std::string_view& text) {
    std::int64_t number = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, number);
    const auto length = static_cast<std::size_t>(read.ptr - text.data());
    if (read.ec != std::errc() || length < 2 || length > 3 || text[0] == '-') {
        return std::nullopt;
    }
    text.remove_prefix(length);
    return number;
}

std::string twoDigits(std::int64_t number) {
    const std::string text = std::to_string(number);
    return text.size() < 2 ? "0" + text : text;
}

}  // namespace

std::optional<bool> readBoolean(std::string_view text) {
    constexpr std::size_t kLongest = 5;
    if (text.size() > kLongest) {
        return std::nullopt;
    }
    const std::string lower = lowercased(text);
    if (lower == "true" || lower == "1" || lower == "yes" || lower == "on") {
        return true;
    }
    const bool isFalse = lower == "false" || lower == "0" || lower == "no" || lower == "off";
    return isFalse ? std::optional(false) : std::nullopt;
}

bool isDropFrameFlag(std::string_view displayFormat) {
    return displayFormat.size() == 2 && lowercased(displayFormat) == "df";
}

std::optional<Rate> rateOf(const View& view, ElementNumber rate) {
    if (rate == kNoElement) {
        return std::nullopt;
    }
    const Parts parts(view, rate);
    std::string storage;
    std::string_view text = view.textOf(parts[Name::timebase], storage);
    // Wrong, and clear all the same: its mend must not change what else is said.
    text.remove_suffix(text.ends_with("/1") ? 2 : 0);
    const std::optional<std::int64_t> timebase = readNumber(text).whole();
    if (!timebase || *timebase < 1 || *timebase > kMostTimebase) {
        return std::nullopt;
    }
    return Rate{*timebase, readBoolean(view.textOf(parts[Name::ntsc], storage))};
}

bool Timecode::isIn(const Rate& rate, bool isDropFrame) const {
    if (hours >= kHoursOfDay || minutes >= kMinutesOfHour || seconds >= kSecondsOfMinute ||
        frames >= rate.timebase) {
        return false;
    }
    const bool isDropped = isDropFrame && minutes % kMinutesWithoutDrop != 0 && seconds == 0 &&
                           frames < droppedPerMinute(rate);
    return !isDropped;
}

std::int64_t Timecode::frameNumber(const Rate& rate, bool isDropFrame) const {
    const std::int64_t wholeMinutes = hours * kMinutesOfHour + minutes;
    const std::int64_t number =
        (wholeMinutes * kSecondsOfMinute + seconds) * rate.timebase + frames;
    const std::int64_t minutesWithDrop = wholeMinutes - wholeMinutes / kMinutesWithoutDrop;
    return isDropFrame ? number - minutesWithDrop * droppedPerMinute(rate) : number;
}

std::optional<Timecode> readTimecode(std::string_view text) {
    std::array<std::int64_t, 4> parts{};
    char separator = ':';
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i != 0) {
            if (text.empty() || std::string_view(":;.,").find(text[0]) == std::string_view::npos) {
                return std::nullopt;
            }
            separator = text[0];
            text.remove_prefix(1);
        }
        const std::optional<std::int64_t> part = takeDigits(text);
        if (!part) {
            return std::nullopt;
        }
        parts[i] = *part;
    }
    if (!text.empty()) {
        return std::nullopt;
    }
    return Timecode{parts[0], parts[1], parts[2], parts[3], separator != ':'};
}

std::string timecodeText(std::int64_t frame, const Rate& rate, bool isDropFrame) {
    if (isDropFrame) {
        // Put back what the count leaves out.
        const std::int64_t dropped = droppedPerMinute(rate);
        const std::int64_t perMinute = rate.timebase * kSecondsOfMinute - dropped;
        const std::int64_t perTen = perMinute * kMinutesWithoutDrop + dropped;
        const std::int64_t inTen = frame % perTen;
        const std::int64_t minutes = inTen < dropped ? 0 : (inTen - dropped) / perMinute;
        frame += frame / perTen * (kMinutesWithoutDrop - 1) * dropped + minutes * dropped;
    }
    const std::int64_t seconds = frame / rate.timebase;
    const std::int64_t minutes = seconds / kSecondsOfMinute;
    return twoDigits(minutes / kMinutesOfHour) + ":" + twoDigits(minutes % kMinutesOfHour) + ":" +
           twoDigits(seconds % kSecondsOfMinute) + (isDropFrame ? ";" : ":") +
           twoDigits(frame % rate.timebase);
}

}  // namespace vornic::xmeml
