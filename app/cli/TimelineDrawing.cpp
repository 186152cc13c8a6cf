#include "app/cli/TimelineDrawing.h"

#include <optional>

#include "picture/TimelineSVG.h"
#include "xml/text/TextDecoding.h"

namespace vornic {

std::string drawTimeline(std::string_view bytes, const Report& report, std::string_view title) {
    TextDecoding how;
    ErrorSlot error;
    std::optional<std::string> decoded;
    std::optional<std::string_view> text = textWithin(bytes, how);
    if (!text) {
        decoded = decodeXMLText(std::string(bytes), how, error);
        text = decoded;
    }
    if (!text) {
        return "";
    }
    const Timeline timeline = Timeline::ofText(*text);
    return timelineSVG(timeline, marksOn(timeline, *text, how, report.findings), title);
}

}  // namespace vornic
