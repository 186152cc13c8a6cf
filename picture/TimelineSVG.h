#ifndef VORNIC_PICTURE_TIMELINE_SVG_H
#define VORNIC_PICTURE_TIMELINE_SVG_H

#include <string>
#include <string_view>
#include <vector>

#include "picture/TimelineMarks.h"

namespace vornic {

/// The picture of `TimelineSheet` as an SVG 1.1 document. Each clip has a title with name, in, out,
/// media and timecode. A clip that shows another sequence of the file links to it. Any thread.
/// @param title what is drawn, such as the file's name; any bytes.
[[nodiscard]] std::string timelineSVG(const Timeline& timeline,
                                      const std::vector<TimelineMark>& marks,
                                      std::string_view title);

}  // namespace vornic

#endif
