#include "formats/fcpxml/StoryElement.h"

#include <algorithm>
#include <array>
#include <utility>

#include "formats/StartTag.h"
#include "formats/fcpxml/Catalogue.h"
#include "xml/text/AttributeValue.h"

namespace vornic::fcpxml {

namespace {

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
    const ElementId id = catalogue.idOf(name);
    if (id == fcpxml::kNoElement) {
        return StoryKind::none;
    }
    const auto& attributes = catalogue.element(id).attributes;
    return std::any_of(attributes.begin(), attributes.end(),
                       [](const auto& attribute) { return isTime(attribute.name); })
               ? StoryKind::timed
               : StoryKind::none;
}

}  // namespace

bool isLane(std::string_view lane) {
    return lane.find_first_not_of("+-0") != std::string_view::npos;
}

Time startOf(const StoryElement& story, Resources& resources) {
    if (story.start.isThere()) {
        return story.start.time;
    }
    const Resource* const asset = resources.find(story.reference, "asset");
    return story.kind == StoryKind::assetClip && asset != nullptr ? asset->start : Time(0);
}

Time durationOf(const StoryElement& story, Resources& resources) {
    if (story.duration.isThere() || story.kind != StoryKind::assetClip) {
        return story.duration.time;
    }
    const Resource* const asset = resources.find(story.reference, "asset");
    return asset == nullptr ? Time() : asset->duration;
}

StoryReader::StoryReader(const ElementIndex& index) : index_(index) {
    kinds_.reserve(index.nameCount() + 1);
    for (std::size_t number = 0; number < index.nameCount(); ++number) {
        kinds_.push_back(kindOfName(index.nameNumbered(number)));
    }
    kinds_.push_back(StoryKind::none);
}

StoryElement StoryReader::read(ElementNumber element) const {
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

StoryElement StoryReader::withAuditionsPick(const StoryElement& audition) const {
    StoryElement story = audition;
    const ElementNumber pick = index_.firstChildOf(audition.element);
    if (pick != vornic::kNoElement && isStoryItem(kindOf(pick))) {
        const StoryElement shown = read(pick);
        story = shown;
        story.element = audition.element;
        story.kind = audition.kind;
        story.offset = audition.offset.isThere() ? audition.offset : shown.offset;
        story.lane = audition.lane;
        // Judged where they stand.
        story.reference = story.format = story.tcFormat = {};
    }
    return story;
}

TimeAttribute StoryReader::readTime(ElementNumber element, std::string_view attribute,
                                    TextSpan place) const {
    const std::string_view raw = place.of(index_.text());
    const bool isPlain = raw.find('&') == std::string_view::npos;
    const ParsedTime parsed =
        parsedTime(isPlain ? raw : std::string_view(normalisedAttributeValue(raw, false)));
    return {judgedTime(element, attribute, parsed, place), place};
}

}  // namespace vornic::fcpxml
