#include "check/fcpxml/TimeReader.h"

#include <algorithm>
#include <string>

#include "base/ASCII.h"
#include "check/fcpxml/Naming.h"

namespace vornic {

namespace {

using fcpxml::ParsedTime;
using fcpxml::Time;
using fcpxml::TimeFault;

// The same time as a fraction: "12.05s" is "1205/100s". "" for anything but a decimal number of
// seconds.
std::string fractionOfDecimal(std::string_view text) {
    constexpr std::size_t kMostDigits = 9;
    const std::size_t point = text.find('.');
    if (!text.ends_with('s') || point == std::string_view::npos) {
        return "";
    }
    std::string_view whole = text.substr(0, point);
    std::string_view decimals = text.substr(point + 1);
    decimals.remove_suffix(1);
    while (decimals.ends_with('0')) {
        decimals.remove_suffix(1);
    }
    const std::string_view digits = whole.substr(whole.starts_with('-') ? 1 : 0);
    if (digits.empty() || digits.size() > kMostDigits || decimals.size() > kMostDigits ||
        !std::all_of(digits.begin(), digits.end(), isDigit) ||
        !std::all_of(decimals.begin(), decimals.end(), isDigit)) {
        return "";
    }
    std::string number = std::string(digits).append(decimals);
    number.erase(0, std::min(number.find_first_not_of('0'), number.size() - 1));
    return (whole.starts_with('-') ? "-" : "") + number +
           (decimals.empty() ? "s" : "/1" + std::string(decimals.size(), '0') + "s");
}

// Lengths that cannot be, of what stands in no spine as an item. Stills and empty sequences may
// last for no time at all.
bool hasNoLength(StoryKind kind, std::string_view attribute, Time time) {
    if (attribute == "frameDuration") {
        return time <= Time(0);
    }
    const bool mayBeNothing = kind == StoryKind::asset || kind == StoryKind::sequence;
    return attribute == "duration" &&
           ((mayBeNothing && time < Time(0)) || (kind == StoryKind::transition && time <= Time(0)));
}

}  // namespace

Time TimeReader::judgedTime(ElementNumber element, std::string_view attribute,
                            const ParsedTime& parsed, TextSpan place) const {
    if (parsed.fault != TimeFault::none) {
        addFault(parsed.fault, element, attribute, place);
    } else if (hasNoLength(kindOf(element), attribute, parsed.time)) {
        findings_.add("timing-no-duration"_rule, place,
                      {{"attribute", attribute},
                       {"clip", calledBy(index(), element)},
                       {"value", parsed.time.text()}});
        return {};
    }
    return parsed.time;
}

void TimeReader::addFault(TimeFault fault, ElementNumber element, std::string_view attribute,
                          TextSpan place) const {
    const std::string_view value = place.of(index().text());
    Finding* const finding =
        findings_.add(fault == TimeFault::malformed ? "timing-malformed-time"_rule
                                                    : "timing-time-out-of-range"_rule,
                      place,
                      {{"attribute", attribute},
                       {"clip", calledBy(index(), element)},
                       {"value", quotedValue(value)}});
    // Elsewhere another time may not fit any more once this one is read.
    const bool isByItself = kindOf(element) == StoryKind::timed && attribute != "frameDuration";
    const std::string fraction = isByItself ? fractionOfDecimal(value) : "";
    if (finding != nullptr && !fraction.empty()) {
        finding->mend = Mend{Confidence::safe,
                             "write the same time as a fraction",
                             {{place.offset, place.length, fraction}}};
    }
}

}  // namespace vornic
