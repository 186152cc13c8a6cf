#ifndef VORNIC_FORMATS_TIMELINE_H
#define VORNIC_FORMATS_TIMELINE_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "formats/ElementIndex.h"
#include "formats/fcpxml/Time.h"
#include "xml/text/TextSpan.h"

namespace vornic {

/// No clip, no sequence.
inline constexpr std::uint32_t kNoTimelineItem = std::numeric_limits<std::uint32_t>::max();

enum class TimelineKind : std::uint8_t {
    video,
    audio,
    title,
    generator,
    /// A clip that shows another sequence.
    compound,
    multicam,
    /// A clip of pictures and sound that were brought together.
    synchronized,
    audition,
    caption,
    gap,
    /// Lies over the cut of two clips.
    transition,
    /// A connected storyline, which lies behind its clips.
    storyline,
};

/// "video", "audio", "compound clip"…: what people call it.
[[nodiscard]] std::string_view nameOf(TimelineKind kind);

/// How a timecode counts.
struct TimecodeCount {
    /// The length of a frame; unknown where the file does not say.
    fcpxml::Time frame;
    /// The timecode of the time 0.
    fcpxml::Time start = fcpxml::Time(0);
    bool isDropFrame = false;

    /// "01:00:04;12"; "" where it is not known.
    [[nodiscard]] std::string at(fcpxml::Time time) const;
};

/// Something that takes a while on a timeline. Times that the file leaves open are unknown.
struct TimelineClip {
    TimelineKind kind = TimelineKind::video;
    bool isEnabled = true;
    /// The number of its track.
    std::uint32_t track = 0;
    /// From 0: clips of one track that overlap stand in rows below each other.
    std::uint32_t row = 0;
    /// The number of the clip of this sequence in whose markup this one stands, or
    /// `kNoTimelineItem`.
    std::uint32_t outer = kNoTimelineItem;
    /// The number of the sequence that it shows, or `kNoTimelineItem`.
    std::uint32_t opens = kNoTimelineItem;
    /// Its element in the text.
    TextSpan place;
    /// As people read it, long ones cut; "" for none.
    std::string name;
    /// What its media are called, in the same way.
    std::string media;
    /// From the beginning of the sequence.
    fcpxml::Time position;
    fcpxml::Time duration;
    /// What it shows of its media, in their own time.
    fcpxml::Time in;
    fcpxml::Time out;
    /// The timecode of its media.
    TimecodeCount source;
};

struct TimelineMarker {
    TextSpan place;
    std::string name;
    /// From the beginning of the sequence.
    fcpxml::Time position;
    /// The clip that it is on, or `kNoTimelineItem` for one of the sequence.
    std::uint32_t clip = kNoTimelineItem;
};

struct TimelineTrack {
    /// "V2", "Lane 1", the name of an angle.
    std::string name;
    bool isAudio = false;
    /// How many rows its clips take; at least 1.
    std::uint32_t rows = 1;
};

/// A sequence, or the angles of a multicam clip.
struct TimelineSequence {
    TextSpan place;
    /// The number of the sequence in whose markup it stands, or `kNoTimelineItem`.
    std::uint32_t outer = kNoTimelineItem;
    std::string name;
    /// The length of a frame; unknown where the file does not say.
    fcpxml::Time frame;
    /// The time of day of its beginning, as its timecode counts.
    fcpxml::Time start = fcpxml::Time(0);
    bool isDropFrame = false;
    /// To the end of its last clip.
    fcpxml::Time duration = fcpxml::Time(0);
    /// From the top to the bottom, as editing programs show them.
    std::vector<TimelineTrack> tracks;
    /// In the order of the file.
    std::vector<TimelineClip> clips;
    std::vector<TimelineMarker> markers;

    /// "01:00:04;12"; "" where it is not known. @param position from the sequence's beginning.
    [[nodiscard]] std::string timecodeAt(fcpxml::Time position) const;
};

/// What the sequences of a project file look like. A value that needs neither text nor index once
/// it is made. Clips, tracks and sequences are known by their numbers. Reading is safe from any
/// thread.
class Timeline {
  public:
    struct Item {
        std::uint32_t sequence = kNoTimelineItem;
        /// `kNoTimelineItem` for a place of the sequence that is in no clip.
        std::uint32_t clip = kNoTimelineItem;
        friend bool operator==(const Item&, const Item&) = default;
    };

    Timeline() = default;
    /// Of FCPXML or XMEML; empty for anything else. Takes a time that is linear in the number of
    /// elements. Any thread.
    explicit Timeline(const ElementIndex& index);
    /// @param sequences in the order of the file; what they hold as well.
    explicit Timeline(std::vector<TimelineSequence> sequences);

    /// In the order of the file.
    [[nodiscard]] const std::vector<TimelineSequence>& sequences() const { return sequences_; }

    /// The innermost clip, or else the sequence, around a place of the text; nothing outside of
    /// all sequences. Costs the depth of the place.
    [[nodiscard]] std::optional<Item> itemAt(std::size_t offset) const;

    /// Of a project file's text, read in tolerant mode up to what cannot be mended. Any thread.
    [[nodiscard]] static Timeline ofText(std::string_view text);

  private:
    std::vector<TimelineSequence> sequences_;
};

/// The beginning of a raw text that is no longer than a name that anybody reads, references
/// replaced.
[[nodiscard]] std::string shownName(std::string_view raw);

}  // namespace vornic

#endif
