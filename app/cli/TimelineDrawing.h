#ifndef VORNIC_APP_CLI_TIMELINE_DRAWING_H
#define VORNIC_APP_CLI_TIMELINE_DRAWING_H

#include <string>
#include <string_view>

#include "report/Report.h"

namespace vornic {

/// Draws the sequences of a project file as an SVG, with what was found in it. Any thread.
/// @param bytes of the file. @param report on them. @param title what the picture is called.
/// @return "" for bytes that are no text.
[[nodiscard]] std::string drawTimeline(std::string_view bytes, const Report& report,
                                       std::string_view title);

}  // namespace vornic

#endif
