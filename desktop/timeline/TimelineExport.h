#ifndef VORNIC_DESKTOP_TIMELINE_TIMELINE_EXPORT_H
#define VORNIC_DESKTOP_TIMELINE_TIMELINE_EXPORT_H

#include <string>

#include "app/window/InspectedTimeline.h"

namespace vornic {

/// Writes a picture of all sequences, as `vornic-check --timeline` does: PNG or PDF by the ending,
/// else SVG. A PDF is one page as large as the picture; a large picture is made smaller where the
/// format, or the memory, has no room. Any thread. @return why it could not be written; "" when it
/// was.
[[nodiscard]] std::string writeTimelinePicture(const InspectedTimeline& timeline,
                                               const std::string& path);

}  // namespace vornic

#endif
