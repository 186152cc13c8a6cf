#include "app/cli/TimelineDrawing.h"

#include <optional>
#include <utility>

#include "formats/ElementIndexBuilder.h"
#include "picture/TimelineSVG.h"
#include "xml/text/TextDecoding.h"

namespace vornic {

namespace {

// The report tells what is mended while the text is read.
class UnheardMends final : public XMLMendSink {
  public:
    void mend(const XMLMend& /*mend*/, std::string_view /*name*/) override {}
    void edit(const XMLEdit& /*edit*/) override {}
    void dropped(TextSpan /*characters*/) override {}
};

}  // namespace

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
    ElementIndexBuilder builder(*text);
    UnheardMends mends;
    static_cast<void>(readXML(*text, XMLMode::tolerant, &builder, &mends));
    const ElementIndex index = std::move(builder).finish();
    const Timeline timeline(index);
    return timelineSVG(timeline, marksOn(timeline, *text, how, report.findings), title);
}

}  // namespace vornic
