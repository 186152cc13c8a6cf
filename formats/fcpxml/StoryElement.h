#ifndef VORNIC_FORMATS_FCPXML_STORY_ELEMENT_H
#define VORNIC_FORMATS_FCPXML_STORY_ELEMENT_H

#include <cstdint>
#include <string_view>
#include <vector>

#include "formats/ElementIndex.h"
#include "formats/fcpxml/Resources.h"
#include "formats/fcpxml/Time.h"

namespace vornic::fcpxml {

/// What an element is on a timeline.
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
    Time time;
    TextSpan place;
    [[nodiscard]] bool isThere() const { return place.offset != 0; }
};

/// What an element says about its place in time. Texts are raw and "" when missing.
struct StoryElement {
    ElementNumber element = vornic::kNoElement;
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

/// Whether a raw lane is one that connects: another number than 0, or none at all.
[[nodiscard]] bool isLane(std::string_view lane);

/// Where a clip's own time begins: an asset clip without a start begins where its media do.
[[nodiscard]] Time startOf(const StoryElement& story, Resources& resources);

/// How long it is; of asset clips alone that may be left out.
[[nodiscard]] Time durationOf(const StoryElement& story, Resources& resources);

/// Reads what elements say about their place in time. One thread.
class StoryReader {
  public:
    /// @param index must outlive this.
    explicit StoryReader(const ElementIndex& index);
    virtual ~StoryReader() = default;
    StoryReader(const StoryReader&) = delete;
    StoryReader& operator=(const StoryReader&) = delete;

    [[nodiscard]] StoryKind kindOf(ElementNumber element) const {
        return kinds_[index_.nameNumberOf(element)];
    }
    [[nodiscard]] StoryElement read(ElementNumber element) const;

    /// An audition as it is seen: with the times of the clip that it shows, which is its first.
    [[nodiscard]] StoryElement withAuditionsPick(const StoryElement& audition) const;

  protected:
    [[nodiscard]] const ElementIndex& index() const { return index_; }

  private:
    /// What to take a time for that is read, faulty or not.
    [[nodiscard]] virtual Time judgedTime(ElementNumber /*element*/, std::string_view /*attribute*/,
                                          const ParsedTime& parsed, TextSpan /*place*/) const {
        return parsed.time;
    }
    [[nodiscard]] TimeAttribute readTime(ElementNumber element, std::string_view attribute,
                                         TextSpan place) const;

    const ElementIndex& index_;
    // By the index's numbers of names; the last is for all other names.
    std::vector<StoryKind> kinds_;
};

}  // namespace vornic::fcpxml

#endif
