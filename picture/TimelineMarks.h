#ifndef VORNIC_PICTURE_TIMELINE_MARKS_H
#define VORNIC_PICTURE_TIMELINE_MARKS_H

#include <string>
#include <vector>

#include "formats/Timeline.h"
#include "report/Findings.h"
#include "xml/text/TextDecoding.h"

namespace vornic {

/// A finding on the clip, or the sequence, that it is about.
struct TimelineMark {
    Timeline::Item item;
    Severity severity = Severity::error;
    std::string message;
    /// Its number among those that the findings keep.
    std::size_t finding = 0;
};

/// The findings that lie in a sequence, in the order of the file. One pass over the text.
/// @param text that the timeline was made of.
/// @param decoding how the file's bytes became that text.
/// @param findings in the order of the file, with places in its bytes.
[[nodiscard]] std::vector<TimelineMark> marksOn(const Timeline& timeline, std::string_view text,
                                                const TextDecoding& decoding,
                                                const Findings& findings);

}  // namespace vornic

#endif
