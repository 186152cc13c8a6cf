#include "formats/xmeml/Timecodes.h"

#include <charconv>
#include <string_view>

namespace vornic::xmeml {

namespace {

// Deeper places than a user looks at have no timecode.
constexpr std::size_t kMostSteps = 100;

bool isItem(std::string_view name) {
    return name == "clipitem" || name == "generatoritem" || name == "transitionitem";
}

}  // namespace

std::optional<std::int64_t> Timecodes::numberIn(ElementNumber element,
                                                std::string_view child) const {
    if (element == kNoElement) {
        return std::nullopt;
    }
    const std::string_view text = index_.childTextOf(element, child);
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = !text.empty() && error == std::errc() && end == text.data() + text.size();
    return isNumber ? std::optional(number) : std::nullopt;
}

// In frames of the sequence.
std::optional<std::int64_t> Timecodes::startOf(ElementNumber item) {
    const auto [known, isNew] = starts_.try_emplace(item);
    if (isNew) {
        known->second = numberIn(item, index_.isNamed(item, "marker") ? "in" : "start");
        if (known->second && *known->second < 0) {
            known->second.reset();
        }
    }
    return known->second;
}

Timecodes::Count Timecodes::readCount(ElementNumber sequence) const {
    const ElementNumber timecode = index_.childOf(sequence, "timecode");
    ElementNumber rate = timecode == kNoElement ? kNoElement : index_.childOf(timecode, "rate");
    if (rate == kNoElement) {
        rate = index_.childOf(sequence, "rate");
    }
    Count count;
    constexpr std::int64_t kFastest = 1000;
    const std::int64_t base = numberIn(rate, "timebase").value_or(0);
    if (base < 1 || base > kFastest) {
        return count;
    }
    const bool isNTSC = index_.childTextOf(rate, "ntsc") == "TRUE";
    count.frame = isNTSC ? fcpxml::Time(1001, base * 1000) : fcpxml::Time(1, base);
    if (timecode != kNoElement) {
        count.first = numberIn(timecode, "frame").value_or(0);
        count.isDropFrame = index_.childTextOf(timecode, "displayformat") == "DF";
    }
    return count;
}

const Timecodes::Count& Timecodes::countOf(ElementNumber sequence) {
    const auto [known, isNew] = counts_.try_emplace(sequence);
    if (isNew) {
        known->second = readCount(sequence);
    }
    return known->second;
}

std::string Timecodes::at(std::size_t offset) {
    ElementNumber item = kNoElement;
    ElementNumber element = index_.elementAt(offset);
    for (std::size_t steps = 0; element != kNoElement && steps < kMostSteps; ++steps) {
        const std::string_view name = index_.nameOf(element);
        const ElementNumber parent = index_.parentOf(element);
        if (name == "sequence") {
            break;
        }
        const bool isMarker =
            name == "marker" && parent != kNoElement && index_.isNamed(parent, "sequence");
        // The clip in the track, not one that is nested in it.
        if (isItem(name) || isMarker) {
            item = element;
        }
        element = parent;
    }
    if (item == kNoElement || element == kNoElement || !index_.isNamed(element, "sequence")) {
        return "";
    }
    const std::optional<std::int64_t> start = startOf(item);
    const Count& count = countOf(element);
    if (!start || !count.frame.isKnown()) {
        return "";
    }
    constexpr std::int64_t kMostFrames = std::int64_t{1} << 40U;
    if (*start > kMostFrames || count.first < 0 || count.first > kMostFrames) {
        return "";
    }
    return fcpxml::timecodeText(fcpxml::Time::ofFrames(count.first + *start, count.frame),
                                count.frame, count.isDropFrame);
}

}  // namespace vornic::xmeml
