#ifndef VORNIC_PICTURE_TIMELINE_SHEET_H
#define VORNIC_PICTURE_TIMELINE_SHEET_H

#include <string>
#include <vector>

#include "picture/SequencePicture.h"

namespace vornic {

/// The sequences of a file below each other, each whole: its clips, the findings in words, and what
/// the colours and signs mean. Of files with more clips than anybody looks at the rest is counted.
class TimelineSheet {
  public:
    /// @param timeline and marks must outlive this.
    TimelineSheet(const Timeline& timeline, const std::vector<TimelineMark>& marks);

    /// In pixels.
    [[nodiscard]] double width() const { return width_; }
    [[nodiscard]] double height() const { return height_; }
    void draw(Canvas& canvas) const;

  private:
    struct Part {
        SequencePicture picture;
        double top = 0;
        double scale = 1;
    };

    [[nodiscard]] std::vector<const TimelineMark*> listedOf(const Part& part) const;
    [[nodiscard]] double heightOf(const Part& part) const;
    void drawPart(Canvas& canvas, const Part& part, std::uint32_t number, std::size_t& drawn) const;
    void drawFindings(Canvas& canvas, const Part& part, double top) const;
    void drawLegend(Canvas& canvas, double top) const;

    const std::vector<TimelineMark>* marks_;
    std::vector<Part> parts_;
    double width_ = 0;
    double height_ = 0;
    double legendTop_ = 0;
};

/// Draws what the colours of kinds and the signs of severities mean, in a line.
/// @param box of which the line takes what it needs, and wraps
/// @return the height that it has taken
double drawTimelineLegend(Canvas& canvas, const Box& box, const std::vector<TimelineKind>& kinds,
                          const std::vector<Severity>& severities, const TimelineColours& colours);

}  // namespace vornic

#endif
