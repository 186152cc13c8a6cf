#include "check/fcpxml/TimeReader.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "check/fcpxml/Naming.h"
#include "formats/StartTag.h"
#include "formats/fcpxml/Catalogue.h"
#include "xml/AttributeValue.h"

namespace vornic {

namespace {

using fcpxml::Catalogue;
using fcpxml::ParsedTime;
using fcpxml::Time;
using fcpxml::TimeFault;

constexpr std::array<std::pair<std::string_view, StoryKind>, 20> kKinds = {{
    {"sequence", StoryKind::sequence},    {"multicam", StoryKind::multicam},
    {"spine", StoryKind::spine},          {"clip", StoryKind::clip},
    {"asset-clip", StoryKind::assetClip}, {"video", StoryKind::video},
    {"audio", StoryKind::audio},          {"title", StoryKind::title},
    {"ref-clip", StoryKind::refClip},     {"mc-clip", StoryKind::mcClip},
    {"sync-clip", StoryKind::syncClip},   {"gap", StoryKind::gap},
    {"caption", StoryKind::caption},      {"live-drawing", StoryKind::liveDrawing},
    {"audition", StoryKind::audition},    {"transition", StoryKind::transition},
    {"timeMap", StoryKind::timeMap},      {"timept", StoryKind::timePoint},
    {"asset", StoryKind::asset},          {"info-asc-cdl", StoryKind::none},
}};

constexpr std::array<std::string_view, 11> kTimes = {
    "offset",        "start", "duration", "tcStart", "audioStart",  "audioDuration",
    "frameDuration", "time",  "inTime",   "outTime", "posterOffset"};

bool isTime(std::string_view attribute) {
    return std::find(kTimes.begin(), kTimes.end(), attribute) != kTimes.end();
}

// Elements that no version knows have no times.
StoryKind kindOfName(std::string_view name) {
    for (const auto& [known, kind] : kKinds) {
        if (known == name) {
            return kind;
        }
    }
    const Catalogue& catalogue = Catalogue::shared();
    const fcpxml::ElementId id = catalogue.idOf(name);
    if (id == fcpxml::kNoElement) {
        return StoryKind::none;
    }
    const auto& attributes = catalogue.element(id).attributes;
    return std::any_of(attributes.begin(), attributes.end(),
                       [](const auto& attribute) { return isTime(attribute.name); })
               ? StoryKind::timed
               : StoryKind::none;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

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

TimeReader::TimeReader(const ElementIndex& index, Findings* findings)
    : index_(index), findings_(findings) {
    kinds_.reserve(index.nameCount() + 1);
    for (std::size_t number = 0; number < index.nameCount(); ++number) {
        kinds_.push_back(kindOfName(index.nameNumbered(number)));
    }
    kinds_.push_back(StoryKind::none);
}

StoryElement TimeReader::read(ElementNumber element) const {
    StoryElement read;
    read.element = element;
    read.kind = kindOf(element);
    StartTag tag(index_.text(), index_.spanOf(element).offset);
    while (tag.next()) {
        const std::string_view name = tag.name();
        const TextSpan value = tag.value();
        if (name == "ref") {
            read.reference = value.of(index_.text());
        } else if (name == "lane") {
            read.lane = value;
        } else if (name == "format") {
            read.format = value.of(index_.text());
        } else if (name == "tcFormat") {
            read.tcFormat = value.of(index_.text());
        } else if (isTime(name) || (read.kind == StoryKind::timePoint && name == "value")) {
            const TimeAttribute time = readTime(element, name, value);
            TimeAttribute* const known = name == "offset"     ? &read.offset
                                         : name == "start"    ? &read.start
                                         : name == "duration" ? &read.duration
                                         : name == "tcStart"  ? &read.tcStart
                                         : name == "time"     ? &read.time
                                                              : nullptr;
            if (known != nullptr) {
                *known = time;
            }
        }
    }
    return read;
}

TimeAttribute TimeReader::readTime(ElementNumber element, std::string_view attribute,
                                   TextSpan place) const {
    const std::string_view raw = place.of(index_.text());
    const bool isPlain = raw.find('&') == std::string_view::npos;
    const ParsedTime parsed =
        fcpxml::parsedTime(isPlain ? raw : std::string_view(normalisedAttributeValue(raw, false)));
    if (parsed.fault != TimeFault::none) {
        addFault(parsed.fault, element, attribute, place);
    } else if (hasNoLength(kindOf(element), attribute, parsed.time)) {
        if (findings_ != nullptr) {
            findings_->add("timing-no-duration"_rule, place,
                           {{"attribute", attribute},
                            {"clip", calledBy(index_, element)},
                            {"value", parsed.time.text()}});
        }
        return {Time(), place};
    }
    return {parsed.time, place};
}

void TimeReader::addFault(TimeFault fault, ElementNumber element, std::string_view attribute,
                          TextSpan place) const {
    if (findings_ == nullptr) {
        return;
    }
    const std::string_view value = place.of(index_.text());
    Finding* const finding =
        findings_->add(fault == TimeFault::malformed ? "timing-malformed-time"_rule
                                                     : "timing-time-out-of-range"_rule,
                       place,
                       {{"attribute", attribute},
                        {"clip", calledBy(index_, element)},
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
