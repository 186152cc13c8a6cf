#include "desktop/timeline/PainterCanvas.h"

#include <QFontMetricsF>
#include <QPolygonF>
#include <QStaticText>
#include <cmath>

#include "desktop/QtText.h"

namespace vornic {

QColor toQColor(Colour colour) {
    return {colour.red, colour.green, colour.blue};
}

PainterCanvas::PainterCanvas(QPainter& painter, const QFont& family)
    : painter_(painter), font_(family) {
    painter_.setRenderHint(QPainter::Antialiasing);
    painter_.setRenderHint(QPainter::TextAntialiasing);
}

void PainterCanvas::setStyle(const ShapeStyle& style) {
    if (style.fill) {
        QColor fill = toQColor(*style.fill);
        fill.setAlphaF(static_cast<float>(style.fillOpacity));
        painter_.setBrush(fill);
    } else {
        painter_.setBrush(Qt::NoBrush);
    }
    if (style.stroke) {
        painter_.setPen(QPen(toQColor(*style.stroke), style.strokeWidth,
                             style.isDashed ? Qt::DashLine : Qt::SolidLine));
    } else {
        painter_.setPen(Qt::NoPen);
    }
}

void PainterCanvas::rectangle(const Box& box, double radius, const ShapeStyle& style) {
    const QRectF rect(box.x, box.y, box.width, box.height);
    setStyle(style);
    constexpr double kSeen = 4;
    if (radius > 0 && box.width > kSeen) {
        painter_.drawRoundedRect(rect, radius, radius);
    } else {
        painter_.drawRect(rect);
    }
}

void PainterCanvas::polygon(const std::vector<Point>& corners, const ShapeStyle& style) {
    setStyle(style);
    QPolygonF polygon;
    for (const Point& corner : corners) {
        polygon.push_back({corner.x, corner.y});
    }
    painter_.drawPolygon(polygon);
}

void PainterCanvas::line(Point from, Point to, Colour colour, double width) {
    painter_.setPen(QPen(toQColor(colour), width));
    painter_.drawLine(QPointF(from.x, from.y), QPointF(to.x, to.y));
}

void PainterCanvas::text(Point at, std::string_view text, const TextStyle& style) {
    font_.setPixelSize(style.size);
    font_.setBold(style.isBold);
    const QFontMetricsF metrics(font_);
    QString shown = oneLine(toQString(text));
    if (!std::isinf(style.width)) {
        shown = metrics.elidedText(shown, Qt::ElideRight, style.width);
        // The mark alone says nothing.
        shown = shown == QStringLiteral("…") ? QString() : shown;
    }
    QStaticText laidOut(shown);
    laidOut.setTextFormat(Qt::PlainText);
    laidOut.prepare({}, font_);
    painter_.setFont(font_);
    painter_.setPen(toQColor(style.colour));
    const double left = style.isCentred ? at.x - laidOut.size().width() / 2 : at.x;
    painter_.drawStaticText(QPointF(left, at.y - metrics.ascent()), laidOut);
}

void PainterCanvas::begin(const ShapeGroup& group) {
    opacities_.push_back(group.opacity < 1 ? painter_.opacity() : -1);
    if (group.opacity < 1) {
        painter_.setOpacity(painter_.opacity() * group.opacity);
    }
}

void PainterCanvas::end() {
    if (opacities_.back() >= 0) {
        painter_.setOpacity(opacities_.back());
    }
    opacities_.pop_back();
}

}  // namespace vornic
