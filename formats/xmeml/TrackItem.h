#ifndef VORNIC_FORMATS_XMEML_TRACK_ITEM_H
#define VORNIC_FORMATS_XMEML_TRACK_ITEM_H

#include <cstdint>
#include <optional>
#include <string>

#include "formats/xmeml/Rate.h"
#include "formats/xmeml/View.h"

namespace vornic::xmeml {

/// A sequence, or a clip with tracks of its own.
struct TimelineHead {
    ElementNumber element = kNoElement;
    bool isSequence = false;
    std::optional<Rate> rate;
    ElementNumber durationElement = kNoElement;
    std::optional<std::int64_t> duration;
    /// The frame number of its first frame, and how its timecode counts.
    std::int64_t startFrame = 0;
    bool isDropFrame = false;
    /// The last frame that something in its tracks reaches, and what.
    std::int64_t lastEnd = 0;
    ElementNumber lastItem = kNoElement;

    /// The timecode of a frame counted from its beginning; "" where its rate is not known.
    [[nodiscard]] std::string timecodeOf(std::int64_t frame) const;
};

[[nodiscard]] TimelineHead readTimelineHead(const View& view, ElementNumber element);

/// A clip item, a generator or a transition in its track. Times that are not set, and those that
/// are no whole numbers, are missing; −1 says that a transition decides.
struct TrackItem {
    ElementNumber element = kNoElement;
    Name name = Name::other;
    std::optional<std::int64_t> start;
    std::optional<std::int64_t> end;
    std::optional<std::int64_t> in;
    std::optional<std::int64_t> out;
    ElementNumber startElement = kNoElement;
    ElementNumber endElement = kNoElement;
    ElementNumber outElement = kNoElement;
    ElementNumber rate = kNoElement;
    ElementNumber file = kNoElement;

    [[nodiscard]] bool isTransition() const { return name == Name::transitionitem; }
    [[nodiscard]] bool isThere() const { return element != kNoElement; }
};

/// The next item of a track from a child of it on; one that is not there at the end.
[[nodiscard]] TrackItem nextItem(const View& view, ElementNumber child);

}  // namespace vornic::xmeml

#endif
