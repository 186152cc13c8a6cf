#ifndef VORNIC_PICTURE_SEQUENCE_PICTURE_H
#define VORNIC_PICTURE_SEQUENCE_PICTURE_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "picture/SequenceLayout.h"
#include "picture/TimelineColours.h"
#include "picture/TimelineMarks.h"

namespace vornic {

/// Draws one sequence: tracks with their clips in place, coloured by kind, and the findings marked
/// on their clips. Costs what is in the view.
class SequencePicture {
  public:
    static constexpr double kRulerHeight = 26;

    using Marks = std::vector<const TimelineMark*>;

    /// @param timeline and marks must outlive this.
    SequencePicture(const Timeline& timeline, std::uint32_t number,
                    const std::vector<TimelineMark>& marks);

    [[nodiscard]] const SequenceLayout& layout() const { return layout_; }
    [[nodiscard]] const TimelineSequence& sequence() const { return layout_.sequence(); }
    /// The findings on a clip, or on the sequence beside its clips (`kNoTimelineItem`).
    [[nodiscard]] const Marks& marksOf(std::uint32_t clip) const;

    /// Timecodes, far enough from each other to be read. Only the edges of the area count.
    void drawRuler(Canvas& canvas, const TimelineView& view, const TimelineColours& colours) const;
    /// The grounds of the tracks, over the whole width.
    void drawTracks(Canvas& canvas, const TimelineView& view, const TimelineColours& colours) const;
    /// Their names. @param heads left of the view
    void drawHeads(Canvas& canvas, const Box& heads, double scrolled,
                   const TimelineColours& colours) const;
    /// @param cursor the clip that is looked at, or `kNoTimelineItem`
    /// @param most clips are drawn. @return how many were.
    std::size_t drawClips(Canvas& canvas, const TimelineView& view, const TimelineColours& colours,
                          std::uint32_t cursor, std::size_t most) const;

    /// Whether the sign of the findings on a clip is at a place.
    [[nodiscard]] bool signContains(std::uint32_t clip, Point point,
                                    const TimelineView& view) const;

    /// A marker at a place, or null.
    [[nodiscard]] const TimelineMarker* markerAt(Point point, const TimelineView& view) const;
    /// "marker", its name and its timecode, a line each.
    [[nodiscard]] std::string describe(const TimelineMarker& marker) const;

    /// What a clip is called: its name, else its kind.
    [[nodiscard]] std::string titleOf(std::uint32_t clip) const;
    /// Kind, name, timecode, in, out, media, markers and findings of a clip, a line each.
    [[nodiscard]] std::string describe(std::uint32_t clip) const;
    /// "12 items, 8.5 s, from 01:00:00:00".
    [[nodiscard]] std::string summary() const;

  private:
    void drawClip(Canvas& canvas, const TimelineView& view, const TimelineColours& colours,
                  std::uint32_t clip) const;
    void drawName(Canvas& canvas, const TimelineView& view, const TimelineColours& colours,
                  std::uint32_t clip, const Box& box) const;
    // Clips at one height that have findings, by their beginnings.
    struct MarkedRow {
        std::vector<std::uint32_t> clips;
        // The last end of the clips so far.
        std::vector<double> ends;
    };

    void addMarkedClips();
    [[nodiscard]] bool isMarked(std::uint32_t clip) const { return worst_[clip] != kNoSeverity; }
    [[nodiscard]] Severity worstOf(std::uint32_t clip) const {
        return static_cast<Severity>(worst_[clip]);
    }
    void drawMarks(Canvas& canvas, const TimelineView& view, const TimelineColours& colours) const;
    void drawMarksOf(const MarkedRow& row, Canvas& canvas, const TimelineView& view,
                     const TimelineColours& colours, std::vector<std::uint32_t>& shown) const;
    void drawMark(Canvas& canvas, const TimelineView& view, const TimelineColours& colours,
                  std::uint32_t clip) const;
    [[nodiscard]] Point placeOf(const TimelineMarker& marker, const TimelineView& view) const;
    [[nodiscard]] Point signOf(std::uint32_t clip, const TimelineView& view) const;
    void drawMarkers(Canvas& canvas, const TimelineView& view,
                     const TimelineColours& colours) const;

    std::uint32_t number_;
    SequenceLayout layout_;
    std::map<std::uint32_t, Marks> marks_;
    // Of each clip's findings.
    static constexpr std::uint8_t kNoSeverity = 255;
    std::vector<std::uint8_t> worst_;
    std::vector<MarkedRow> markedRows_;
    // By their times.
    std::vector<std::uint32_t> markers_;
    // Those of each clip, in the order of the file.
    std::map<std::uint32_t, std::vector<std::uint32_t>> markersOf_;
};

/// The sign of a severity, as large as a small letter is high: an octagon with a cross, a triangle
/// with an exclamation mark, a disc with an i.
void drawSign(Canvas& canvas, Point centre, Severity severity, const TimelineColours& colours);
inline constexpr double kSignRadius = 7;

/// "note", "warning", "error".
[[nodiscard]] std::string_view severityWord(Severity severity);

/// "and 3 more findings".
[[nodiscard]] std::string moreFindings(std::size_t count);

/// The id that a sequence has in a picture of all.
[[nodiscard]] std::string idOfSequence(std::uint32_t number);
/// Its name, or "Sequence 2" where it has none.
[[nodiscard]] std::string shownNameOf(const TimelineSequence& sequence, std::uint32_t number);

}  // namespace vornic

#endif
