#include "formats/xmeml/TrackItem.h"

#include "formats/xmeml/Number.h"

namespace vornic::xmeml {

namespace {

std::optional<std::int64_t> numberOf(const View& view, ElementNumber element,
                                     std::string& storage) {
    return element == kNoElement ? std::nullopt : readNumber(view.textOf(element, storage)).whole();
}

void readStart(const View& view, ElementNumber element, TimelineHead& timeline) {
    if (element == kNoElement || !timeline.rate) {
        return;
    }
    const Parts parts(view, element);
    std::string storage;
    timeline.isDropFrame = isDropFrameFlag(view.textOf(parts[Name::displayformat], storage)) &&
                           timeline.rate->allowsDropFrame();
    const std::optional<std::int64_t> frame = numberOf(view, parts[Name::frame], storage);
    const std::optional<Timecode> timecode =
        readTimecode(view.textOf(parts[Name::string], storage));
    if (timecode && timecode->isIn(*timeline.rate, timeline.isDropFrame)) {
        timeline.startFrame = timecode->frameNumber(*timeline.rate, timeline.isDropFrame);
    } else if (frame && *frame >= 0) {
        timeline.startFrame = *frame;
    }
}

TrackItem readItem(const View& view, ElementNumber element, Name name) {
    const Parts parts(view, element);
    std::string storage;
    TrackItem item;
    item.element = element;
    item.name = name;
    item.start = numberOf(view, parts[Name::start], storage);
    item.end = numberOf(view, parts[Name::end], storage);
    item.in = numberOf(view, parts[Name::in], storage);
    item.out = numberOf(view, parts[Name::out], storage);
    item.startElement = parts[Name::start];
    item.endElement = parts[Name::end];
    item.outElement = parts[Name::out];
    item.rate = parts[Name::rate];
    item.file = parts[Name::file];
    return item;
}

}  // namespace

std::string TimelineHead::timecodeOf(std::int64_t frame) const {
    constexpr std::int64_t kMost = std::int64_t{1} << 40;
    return rate && frame >= 0 && frame < kMost && startFrame < kMost
               ? timecodeText(startFrame + frame, *rate, isDropFrame)
               : "";
}

TimelineHead readTimelineHead(const View& view, ElementNumber element) {
    const Parts parts(view, element);
    std::string storage;
    TimelineHead timeline;
    timeline.element = element;
    timeline.isSequence = view.is(element, Name::sequence);
    timeline.rate = rateOf(view, parts[Name::rate]);
    timeline.durationElement = parts[Name::duration];
    timeline.duration = numberOf(view, parts[Name::duration], storage);
    readStart(view, parts[Name::timecode], timeline);
    return timeline;
}

TrackItem nextItem(const View& view, ElementNumber child) {
    for (; child != kNoElement; child = view.index().nextSiblingOf(child)) {
        const Name name = view.nameOf(child);
        if (name == Name::clipitem || name == Name::generatoritem || name == Name::transitionitem) {
            return readItem(view, child, name);
        }
    }
    return {};
}

}  // namespace vornic::xmeml
