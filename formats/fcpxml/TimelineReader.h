#ifndef VORNIC_FORMATS_FCPXML_TIMELINE_READER_H
#define VORNIC_FORMATS_FCPXML_TIMELINE_READER_H

#include <vector>

#include "formats/Timeline.h"

namespace vornic::fcpxml {

/// The sequences of the file with their tracks, clips and markers, as `Timeline` takes them: rows,
/// and what stands in what, are left open. Any thread.
[[nodiscard]] std::vector<TimelineSequence> readTimeline(const ElementIndex& index);

}  // namespace vornic::fcpxml

#endif
