#ifndef VORNIC_PICTURE_TIMELINE_SVG_H
#define VORNIC_PICTURE_TIMELINE_SVG_H

#include <string>
#include <string_view>
#include <vector>

#include "picture/TimelineMarks.h"

namespace vornic {

/// Draws the sequences below each other as an SVG 1.1 document: tracks with their clips in place,
/// coloured by kind, the findings marked on their clips. Each clip has a title with name, in, out,
/// media and timecode, which browsers show as a tooltip and screen readers read. A clip that shows
/// another sequence of the file links to it. Well-formed whatever the names hold. Of files with
/// more clips than anybody looks at the rest is only counted. Any thread.
/// @param title what is drawn, such as the file's name; any bytes.
[[nodiscard]] std::string timelineSVG(const Timeline& timeline,
                                      const std::vector<TimelineMark>& marks,
                                      std::string_view title);

/// A text as it stands in markup, between tags or quotes: what XML forbids becomes U+FFFD, line
/// breaks and tabs blanks. @param text any bytes.
[[nodiscard]] std::string svgText(std::string_view text);

/// The text, or its beginning with "…", where it would take more than the width. An estimate by
/// the shapes of characters, on the wide side. @param width in pixels at a size of 11.
[[nodiscard]] std::string elidedText(std::string_view text, double width);

}  // namespace vornic

#endif
