#ifndef VORNIC_APP_WINDOW_INSPECTED_TIMELINE_H
#define VORNIC_APP_WINDOW_INSPECTED_TIMELINE_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "app/window/Inspection.h"
#include "picture/SequencePicture.h"

namespace vornic {

/// The timeline of an inspected file with its findings, ready to be drawn. It never changes, so
/// that any thread may read it.
class InspectedTimeline {
  public:
    /// Costs what the reading of the file costs. Any thread.
    /// @param inspection kept as long as this
    explicit InspectedTimeline(std::shared_ptr<const Inspection> inspection);
    InspectedTimeline(const InspectedTimeline&) = delete;
    InspectedTimeline& operator=(const InspectedTimeline&) = delete;

    [[nodiscard]] const Inspection& inspection() const { return *inspection_; }
    [[nodiscard]] const Timeline& timeline() const { return timeline_; }
    [[nodiscard]] const std::vector<TimelineMark>& marks() const { return marks_; }
    /// By the numbers of the sequences.
    [[nodiscard]] const std::vector<SequencePicture>& pictures() const { return pictures_; }
    [[nodiscard]] const Finding& findingOf(const TimelineMark& mark) const {
        return inspection_->file.report.findings.kept()[mark.finding];
    }

    /// The sequence that a window shows first: the last one that no clip opens, which is the
    /// project where others are parts of it; 0 where there is none.
    [[nodiscard]] std::uint32_t mainSequence() const;
    /// The line of the file in which a clip, or for `kNoTimelineItem` its sequence, begins.
    [[nodiscard]] std::size_t lineOf(Timeline::Item item) const;
    /// That line and those around it, each with its number and shortened; the own begins with >.
    [[nodiscard]] std::string linesAround(Timeline::Item item) const;

  private:
    [[nodiscard]] std::size_t offsetOf(Timeline::Item item) const;

    std::shared_ptr<const Inspection> inspection_;
    Timeline timeline_;
    std::vector<TimelineMark> marks_;
    std::vector<SequencePicture> pictures_;
};

}  // namespace vornic

#endif
