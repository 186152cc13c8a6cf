#include "formats/fcpxml/Timecodes.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace vornic::fcpxml {

namespace {

// Deeper places than a user looks at have no timecode.
constexpr std::size_t kMostSteps = 100;

bool isMarker(std::string_view name) {
    return name.ends_with("marker");
}

bool isClip(std::string_view name) {
    constexpr std::array<std::string_view, 13> kNames = {
        "asset-clip", "audio", "audition", "caption",   "clip",       "gap",  "live-drawing",
        "mc-clip",    "title", "ref-clip", "sync-clip", "transition", "video"};
    return std::find(kNames.begin(), kNames.end(), name) != kNames.end();
}

}  // namespace

Time Timecodes::timeOf(ElementNumber element, std::string_view attribute, Time otherwise) const {
    const auto value = index_.attributeOf(element, attribute);
    return value ? parsedTime(value->of(index_.text())).time : otherwise;
}

bool Timecodes::hasLane(ElementNumber element) const {
    return index_.attributeTextOf(element, "lane").find_first_not_of("+-0") !=
           std::string_view::npos;
}

// An asset clip without a start begins where its media do.
Time Timecodes::startOf(ElementNumber clip) {
    const Resource* const asset =
        index_.isNamed(clip, "asset-clip")
            ? resources_.find(index_.attributeTextOf(clip, "ref"), "asset")
            : nullptr;
    return timeOf(clip, "start", asset == nullptr ? Time(0) : asset->start);
}

// From the nearest sequence around it, which comes first; empty when there is none.
std::vector<ElementNumber> Timecodes::wayTo(ElementNumber element) const {
    std::vector<ElementNumber> way;
    while (element != vornic::kNoElement && way.size() < kMostSteps) {
        way.push_back(element);
        if (index_.isNamed(element, "sequence")) {
            std::reverse(way.begin(), way.end());
            return way;
        }
        element = index_.parentOf(element);
    }
    return {};
}

bool Timecodes::step(ElementNumber element, ElementNumber parent, Point& point) {
    const std::string_view name = index_.nameOf(element);
    const std::string_view parentName = index_.nameOf(parent);
    if (name == "spine") {
        if (parentName == "sequence") {
            point = {Time(0), Time(0)};
            return true;
        }
        point.position = point.position + timeOf(element, "offset", Time(0)) - point.start;
        point.start = Time(0);
        return hasLane(element);
    }
    if (isMarker(name)) {
        point.position = point.position + timeOf(element, "start", point.start) - point.start;
        return false;
    }
    if (!isClip(name) || (parentName != "spine" && !hasLane(element))) {
        return false;
    }
    // In a storyline every item has its place, elsewhere it may be left out.
    const Time otherwise = parentName == "spine" ? Time() : Time(0);
    point.position = point.position + timeOf(element, "offset", otherwise) - point.start;
    point.start = startOf(element);
    return true;
}

std::string Timecodes::at(std::size_t offset) {
    const std::vector<ElementNumber> way = wayTo(index_.elementAt(offset));
    if (way.size() < 3) {
        return "";
    }
    const ElementNumber sequence = way.front();
    Point point;
    for (std::size_t index = 1; index < way.size(); ++index) {
        Point next = point;
        const bool goesOn = step(way[index], way[index - 1], next);
        if (goesOn || isMarker(index_.nameOf(way[index]))) {
            point = next;
        }
        if (!goesOn) {
            break;
        }
    }
    return timecodeText(point.position,
                        resources_.frameDurationOf(index_.attributeTextOf(sequence, "format")),
                        index_.attributeTextOf(sequence, "tcFormat") == "DF");
}

}  // namespace vornic::fcpxml
