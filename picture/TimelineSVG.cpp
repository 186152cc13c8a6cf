#include "picture/TimelineSVG.h"

#include "picture/SVGCanvas.h"
#include "picture/TimelineSheet.h"

namespace vornic {

std::string timelineSVG(const Timeline& timeline, const std::vector<TimelineMark>& marks,
                        std::string_view title) {
    const TimelineSheet sheet(timeline, marks);
    SVGCanvas canvas;
    sheet.draw(canvas);
    return canvas.document(title, sheet.width(), sheet.height());
}

}  // namespace vornic
