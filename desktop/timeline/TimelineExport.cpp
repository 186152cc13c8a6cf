#include "desktop/timeline/TimelineExport.h"

#include <QApplication>
#include <QBuffer>
#include <QImage>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <algorithm>
#include <cmath>

#include "base/PathText.h"
#include "base/Text.h"
#include "desktop/QtText.h"
#include "desktop/timeline/PainterCanvas.h"
#include "picture/TimelineSVG.h"
#include "picture/TimelineSheet.h"
#include "platform/files/AtomicFile.h"

namespace vornic {

namespace {

// The family that the SVG names first is not on every machine.
QFont fontOfPictures() {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setStyleHint(QFont::SansSerif);
    return font;
}

void paint(QPainter& painter, const TimelineSheet& sheet, double scale) {
    painter.scale(scale, scale);
    PainterCanvas canvas(painter, fontOfPictures());
    sheet.draw(canvas);
}

std::string asPNG(const TimelineSheet& sheet) {
    // Two dots a pixel are sharp in print; a quarter of a gigabyte is enough.
    constexpr double kSharp = 2;
    constexpr double kLongest = 30000;
    constexpr double kMostDots = 64e6;
    const double scale = std::min({kSharp, kLongest / sheet.width(), kLongest / sheet.height(),
                                   std::sqrt(kMostDots / (sheet.width() * sheet.height()))});
    QImage image(std::max(1, static_cast<int>(std::ceil(sheet.width() * scale))),
                 std::max(1, static_cast<int>(std::ceil(sheet.height() * scale))),
                 QImage::Format_RGB32);
    if (image.isNull()) {
        return "";
    }
    image.fill(Qt::white);
    {
        QPainter painter(&image);
        paint(painter, sheet, scale);
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    return image.save(&buffer, "PNG") ? bytes.toStdString() : "";
}

std::string asPDF(const TimelineSheet& sheet, const std::string& title) {
    // PDF has no larger page (ISO 32000-1, annex C).
    constexpr double kLongest = 14400;
    constexpr double kPointsAPixel = 0.75;
    constexpr int kResolution = 288;
    constexpr double kPointsAnInch = 72;
    const double points =
        std::min({kPointsAPixel, kLongest / sheet.width(), kLongest / sheet.height()});
    QByteArray bytes;
    {
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        QPdfWriter writer(&buffer);
        writer.setTitle(toQString(title));
        writer.setResolution(kResolution);
        writer.setPageSize(QPageSize(QSizeF(sheet.width() * points, sheet.height() * points),
                                     QPageSize::Point, QString(), QPageSize::ExactMatch));
        writer.setPageMargins(QMarginsF());
        QPainter painter(&writer);
        if (!painter.isActive()) {
            return "";
        }
        paint(painter, sheet, points * kResolution / kPointsAnInch);
    }
    return bytes.toStdString();
}

}  // namespace

std::string writeTimelinePicture(const InspectedTimeline& timeline, const std::string& path) {
    const std::string title = lastComponent(timeline.inspection().file.path);
    const std::string extension = lowercased(pathExtension(path));
    const TimelineSheet sheet(timeline.timeline(), timeline.marks());
    const std::string bytes = extension == "png" ? asPNG(sheet)
                              : extension == "pdf"
                                  ? asPDF(sheet, title)
                                  : timelineSVG(timeline.timeline(), timeline.marks(), title);
    if (bytes.empty()) {
        return "There is not enough memory for the picture.";
    }
    ErrorSlot error;
    if (platform::writeFileAtomically(path, bytes, platform::Durability::synced, error)) {
        return "";
    }
    return error ? error->localizedDescription() : "There is no reason known.";
}

}  // namespace vornic
