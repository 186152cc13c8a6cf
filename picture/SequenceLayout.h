#ifndef VORNIC_PICTURE_SEQUENCE_LAYOUT_H
#define VORNIC_PICTURE_SEQUENCE_LAYOUT_H

#include <cstdint>
#include <optional>
#include <vector>

#include "formats/Timeline.h"
#include "picture/Canvas.h"

namespace vornic {

/// The part of a sequence that is drawn, and where.
struct TimelineView {
    /// Where on the canvas it is.
    Box area;
    /// The time at the left edge, in seconds from the beginning of the sequence.
    double from = 0;
    /// Pixels a second.
    double scale = 1;
    /// How far the tracks are scrolled up.
    double scrolled = 0;

    [[nodiscard]] double xOf(double seconds) const { return area.x + (seconds - from) * scale; }
    [[nodiscard]] double secondsAt(double x) const { return from + (x - area.x) / scale; }
    [[nodiscard]] double to() const { return secondsAt(area.right()); }
    [[nodiscard]] double top() const { return area.y - scrolled; }
};

/// Where the clips of a sequence stand, at any scale. Clips whose time the file leaves open stand
/// nowhere. Finding those of a view costs what is in it, and the logarithm of the rest.
class SequenceLayout {
  public:
    static constexpr double kRowHeight = 30;
    static constexpr double kTrackGap = 6;

    /// @param sequence must outlive this.
    explicit SequenceLayout(const TimelineSequence& sequence);

    [[nodiscard]] const TimelineSequence& sequence() const { return *sequence_; }
    /// From the first to the last clip in seconds; at least a frame. The beginning is at most 0.
    [[nodiscard]] double begin() const { return begin_; }
    [[nodiscard]] double end() const { return end_; }
    [[nodiscard]] double beginOf(std::uint32_t clip) const { return spans_[clip].begin; }
    [[nodiscard]] double endOf(std::uint32_t clip) const { return spans_[clip].end; }
    /// Where no transition lies over the clip's beginning any more.
    [[nodiscard]] double clearBeginOf(std::uint32_t clip) const { return spans_[clip].clear; }
    [[nodiscard]] bool isPlaced(std::uint32_t clip) const;
    /// How many clips stand nowhere.
    [[nodiscard]] std::size_t unplaced() const { return unplaced_; }
    /// The most clips that a track has.
    [[nodiscard]] std::size_t fullest() const;

    /// Of all tracks.
    [[nodiscard]] double height() const { return height_; }
    /// A track's upper edge, from the first one's.
    [[nodiscard]] double topOf(std::uint32_t track) const { return tops_[track]; }
    [[nodiscard]] double heightOf(std::uint32_t track) const;
    /// Nothing of it is drawn further than a little beyond the view.
    [[nodiscard]] Box boxOf(std::uint32_t clip, const TimelineView& view) const;

    /// The clips in a view in the order in which they are drawn. Of those that share a pixel one.
    [[nodiscard]] std::vector<std::uint32_t> clipsIn(const TimelineView& view) const;
    /// The topmost clip at a place, or one that is too thin to be hit a little beside it.
    [[nodiscard]] std::optional<std::uint32_t> clipAt(Point point, const TimelineView& view) const;

    // The walk by keys. Each gives the clip itself where there is no other.

    [[nodiscard]] std::uint32_t nextInTrack(std::uint32_t clip, std::ptrdiff_t steps) const;
    [[nodiscard]] std::uint32_t endOfTrack(std::uint32_t clip, bool last) const;
    /// In the next track with clips the one at the same time, or the nearest.
    [[nodiscard]] std::uint32_t inTrackBeside(std::uint32_t clip, bool below) const;
    /// The first clip of the topmost track; nothing when there is none.
    [[nodiscard]] std::optional<std::uint32_t> first() const;

  private:
    struct Span {
        double begin = 0;
        double end = 0;
        double clear = 0;
    };
    // Clips that are drawn at one height, by their beginnings.
    struct Lane {
        std::vector<std::uint32_t> clips;
        // The last end of the clips so far.
        std::vector<double> ends;
    };

    void place();
    void makeLanes();
    [[nodiscard]] std::size_t placeInTrack(std::uint32_t clip) const;
    template <typename Visit>
    void visit(const Lane& lane, double from, double to, Visit visit) const;

    const TimelineSequence* sequence_;
    std::vector<Span> spans_;
    std::vector<double> tops_;
    double height_ = 0;
    double begin_ = 0;
    double end_ = 1;
    std::size_t unplaced_ = 0;
    // In the order in which they are drawn.
    std::vector<Lane> lanes_;
    // The clips of each track from left to right.
    std::vector<std::vector<std::uint32_t>> tracks_;
};

}  // namespace vornic

#endif
