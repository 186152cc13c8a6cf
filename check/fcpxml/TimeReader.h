#ifndef VORNIC_CHECK_FCPXML_TIME_READER_H
#define VORNIC_CHECK_FCPXML_TIME_READER_H

#include <cstdint>
#include <string_view>
#include <vector>

#include "formats/ElementIndex.h"
#include "formats/fcpxml/Time.h"
#include "report/Findings.h"

namespace vornic {

/// What an element is to the rules of time.
enum class StoryKind : std::uint8_t {
    /// Has no times at all.
    none,
    /// Has times, and no place in a timeline.
    timed,
    sequence,
    multicam,
    spine,
    /// What stands in a spine or hangs on another of its kind.
    clip,
    assetClip,
    video,
    audio,
    title,
    refClip,
    mcClip,
    syncClip,
    gap,
    caption,
    liveDrawing,
    audition,
    transition,
    timeMap,
    timePoint,
    asset,
};

/// True for clips of all kinds, gaps, titles, captions and auditions.
[[nodiscard]] constexpr bool isStoryItem(StoryKind kind) {
    return kind >= StoryKind::clip && kind <= StoryKind::audition;
}

/// An attribute with a time.
struct TimeAttribute {
    /// Unknown when it is missing or faulty.
    fcpxml::Time time;
    TextSpan place;
    [[nodiscard]] bool isThere() const { return place.offset != 0; }
};

/// What an element says about its place in time. Texts are raw and "" when missing.
struct StoryElement {
    ElementNumber element = kNoElement;
    StoryKind kind = StoryKind::none;
    TimeAttribute offset;
    TimeAttribute start;
    TimeAttribute duration;
    TimeAttribute tcStart;
    TimeAttribute time;
    TextSpan lane;
    std::string_view reference;
    std::string_view format;
    std::string_view tcFormat;
};

/// Reads the times of elements and tells those that are malformed. One thread.
class TimeReader {
  public:
    /// @param findings null to tell nothing.
    TimeReader(const ElementIndex& index, Findings* findings);

    [[nodiscard]] StoryKind kindOf(ElementNumber element) const {
        return kinds_[index_.nameNumberOf(element)];
    }
    [[nodiscard]] StoryElement read(ElementNumber element) const;

  private:
    [[nodiscard]] TimeAttribute readTime(ElementNumber element, std::string_view attribute,
                                         TextSpan place) const;
    void addFault(fcpxml::TimeFault fault, ElementNumber element, std::string_view attribute,
                  TextSpan place) const;

    const ElementIndex& index_;
    Findings* findings_;
    // By the index's numbers of names; the last is for all other names.
    std::vector<StoryKind> kinds_;
};

}  // namespace vornic

#endif
