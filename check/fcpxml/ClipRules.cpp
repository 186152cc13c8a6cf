#include "check/fcpxml/ClipRules.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "base/ASCII.h"
#include "check/fcpxml/Naming.h"
#include "xml/text/AttributeValue.h"

namespace vornic {

namespace {

using fcpxml::Resource;
using fcpxml::Time;

// What a clip may hold besides connected clips: itself.
bool holdsContent(StoryKind kind) {
    return kind == StoryKind::clip || kind == StoryKind::syncClip || kind == StoryKind::audition;
}

bool isWholeNumber(std::string_view text) {
    if (text.starts_with('-') || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    return !text.empty() && std::all_of(text.begin(), text.end(), isDigit);
}

}  // namespace

std::string ClipRules::laneOf(const StoryElement& clip) const {
    return normalisedAttributeValue(clip.lane.of(index_.text()), false);
}

bool ClipRules::hasLane(const StoryElement& clip) const {
    return clip.lane.offset != 0 && fcpxml::isLane(laneOf(clip));
}

bool ClipRules::isConnected(const StoryElement& clip, const StoryElement& parent) {
    const std::string lane = laneOf(clip);
    if (clip.lane.offset != 0 && !isWholeNumber(lane)) {
        findings_.add("values-lane"_rule, clip.lane,
                      {{"clip", calledBy(index_, clip.element)}, {"value", quotedValue(lane)}});
        return true;
    }
    if (hasLane(clip)) {
        return true;
    }
    if (holdsContent(parent.kind)) {
        return false;
    }
    findings_.add(
        "timing-connected-without-lane"_rule,
        clip.lane.offset != 0 ? clip.lane : index_.startTagOf(clip.element),
        {{"clip", calledBy(index_, clip.element)}, {"parent", calledBy(index_, parent.element)}});
    return true;
}

void ClipRules::judgeLaneInSpine(const StoryElement& item) {
    if (!hasLane(item)) {
        return;
    }
    Finding* const finding = findings_.add("timing-lane-in-spine"_rule, item.lane,
                                           {{"clip", calledBy(index_, item.element)},
                                            {"value", quotedValue(item.lane.of(index_.text()))}});
    if (finding != nullptr) {
        finding->mend = Mend{Confidence::ask, "take the attribute lane out",
                             removalOf(index_, item.element, "lane")};
    }
}

bool ClipRules::judgeAnchor(const StoryElement& clip, const StoryElement& parent, Time start,
                            Time duration) {
    const Time offset = clip.offset.time;
    const Time end = start + duration;
    if (offset < start || offset > end) {
        findings_.add("timing-connected-outside"_rule, clip.offset.place,
                      {{"clip", calledBy(index_, clip.element)},
                       {"parent", calledBy(index_, parent.element)},
                       {"value", offset.text()},
                       {"first", start.text()},
                       {"last", end.text()}});
        return false;
    }
    return true;
}

void ClipRules::judgeDuration(const StoryElement& clip) {
    if (clip.duration.time <= Time(0)) {
        findings_.add("timing-no-duration"_rule, clip.duration.place,
                      {{"attribute", "duration"},
                       {"clip", calledBy(index_, clip.element)},
                       {"value", clip.duration.time.text()}});
    }
}

void ClipRules::judgeRange(const StoryElement& clip, Time duration, Time frame) {
    const Resource* const asset = resources_.find(clip.reference, "asset");
    if (asset == nullptr || asset->isStill || !(asset->duration > Time(0))) {
        return;
    }
    const Time tolerance = frame.isKnown() ? frame : asset->frameDuration.valueOr(Time(1, 24));
    const Time first = clip.start.isThere() ? clip.start.time : asset->start;
    const Time last = first + duration;
    const Time end = asset->start + asset->duration;
    const bool isOutside = asset->start - first >= tolerance || last - end >= tolerance;
    if (!isOutside || !last.isKnown() || retiming_.isRetimed(clip.element)) {
        return;
    }
    const bool startsOutside = asset->start - first >= tolerance || first >= end;
    const TextSpan place = startsOutside && clip.start.isThere() ? clip.start.place
                           : clip.duration.isThere()             ? clip.duration.place
                                                                 : index_.startTagOf(clip.element);
    findings_.add("timing-clip-beyond-media"_rule, place,
                  {{"clip", calledBy(index_, clip.element)},
                   {"first", first.seconds()},
                   {"last", last.seconds()},
                   {"from", asset->start.seconds()},
                   {"to", end.seconds()}});
}

// A clip that begins inside of what it holds is trimmed.
void ClipRules::judgeSyncStart(const StoryElement& clip, Time start, Time first, Time end) {
    constexpr Time kShort(1, 24);
    if ((start - first).absolute() < kShort || !start.isKnown() || !first.isKnown()) {
        return;
    }
    const bool isBehind = start >= end;
    const bool isTrimmed = start > first && !isBehind;
    const TextSpan place =
        clip.start.isThere() ? clip.start.place : index_.startTagOf(clip.element);
    findings_.add("timing-sync-clip-start"_rule, isTrimmed ? Severity::info : Severity::warning,
                  place,
                  {{"clip", calledBy(index_, clip.element)},
                   {"value", start.text()},
                   {"content", (isBehind ? "ends at " + end.text() : "begins at " + first.text())},
                   {"offset", first.text()}});
}

void ClipRules::judgeRate(const StoryElement& asset) {
    if (!(asset.duration.time > Time(0)) ||
        index_.attributeTextOf(asset.element, "hasVideo") != "1") {
        return;
    }
    const Resource* const format = resources_.find(asset.format, "format");
    if (format == nullptr || index_.attributeOf(format->element, "frameDuration")) {
        return;
    }
    // Other names stand for formats that programs know.
    const std::string_view name = index_.attributeTextOf(format->element, "name");
    const bool isOfStills = name.empty() || name.find("RateUndefined") != std::string_view::npos;
    if (isOfStills) {
        findings_.add("timing-media-without-rate"_rule, asset.duration.place,
                      {{"clip", calledBy(index_, asset.element)},
                       {"duration", asset.duration.time.seconds()}});
    }
}

}  // namespace vornic
