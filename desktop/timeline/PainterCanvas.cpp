#include "desktop/timeline/PainterCanvas.h"

#include <QFontMetricsF>
#include <QHash>
#include <QPolygonF>
#include <algorithm>
#include <cmath>

#include "desktop/QtText.h"

namespace vornic {

QColor toQColor(Colour colour) {
    return {colour.red, colour.green, colour.blue};
}

std::size_t qHash(const LaidOutTexts::Key& key, std::size_t seed) {
    return qHashMulti(seed, key.text, key.width, key.size, key.isBold);
}

const QStaticText& LaidOutTexts::find(const Key& key, const QFont& font) {
    if (const QStaticText* const known = texts_.object(key)) {
        return *known;
    }
    const QFontMetricsF metrics(font);
    QString shown = oneLine(key.text);
    if (key.width >= 0) {
        shown = metrics.elidedText(shown, Qt::ElideRight, key.width);
        // The mark alone says nothing.
        shown = shown == QStringLiteral("…") ? QString() : shown;
    }
    auto* const text = new QStaticText(shown);  // which the cache owns
    text->setTextFormat(Qt::PlainText);
    text->prepare({}, font);
    texts_.insert(key, text);
    return *text;
}

PainterCanvas::PainterCanvas(QPainter& painter, const QFont& family, LaidOutTexts* texts)
    : painter_(painter), font_(family), texts_(texts != nullptr ? texts : &own_) {
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
    if (texts_ != &own_) {
        return drawSharply(rect, style);
    }
    setStyle(style);
    constexpr double kSeen = 4;
    if (radius > 0 && box.width > kSeen) {
        painter_.drawRoundedRect(rect, radius, radius);
    } else {
        painter_.drawRect(rect);
    }
}

// Strokes of a painter take a hundred times as long.
void PainterCanvas::drawSharply(const QRectF& rect, const ShapeStyle& style) {
    const double left = std::round(rect.left());
    const double right = std::max(std::round(rect.right()), left + 1);
    const double top = std::round(rect.top());
    const double bottom = std::round(rect.bottom());
    const bool isThin = right - left < 2;
    if (style.fill && !(isThin && style.stroke)) {
        QColor fill = toQColor(*style.fill);
        fill.setAlphaF(static_cast<float>(style.fillOpacity));
        painter_.fillRect(QRectF(left, top, right - left, bottom - top), fill);
    }
    if (!style.stroke) {
        return;
    }
    const QColor color = toQColor(*style.stroke);
    const double width = std::max(1.0, std::floor(style.strokeWidth));
    constexpr double kRoomForDashes = 8;
    const bool isDashed = style.isDashed && right - left >= kRoomForDashes;
    drawEdge({left, top, width, bottom - top}, color, isDashed);
    if (isThin) {
        return;
    }
    drawEdge({right - width, top, width, bottom - top}, color, isDashed);
    drawEdge({left, top, right - left, width}, color, isDashed);
    drawEdge({left, bottom - width, right - left, width}, color, isDashed);
}

void PainterCanvas::drawEdge(const QRectF& edge, const QColor& color, bool isDashed) {
    constexpr double kDash = 3;
    constexpr double kStep = 5;
    if (!isDashed) {
        return painter_.fillRect(edge, color);
    }
    const bool goesDown = edge.height() > edge.width();
    const double length = goesDown ? edge.height() : edge.width();
    for (double at = 0; at < length; at += kStep) {
        const double dash = std::min(kDash, length - at);
        painter_.fillRect(goesDown ? QRectF(edge.left(), edge.top() + at, edge.width(), dash)
                                   : QRectF(edge.left() + at, edge.top(), dash, edge.height()),
                          color);
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
    constexpr double kWidest = 100000;
    font_.setPixelSize(style.size);
    font_.setBold(style.isBold);
    // Whole pixels, so that a text that is seen again is known again.
    const int width =
        std::isinf(style.width) ? -1 : static_cast<int>(std::min(style.width, kWidest));
    const QStaticText& laidOut =
        texts_->find({toQString(text), width, style.size, style.isBold}, font_);
    painter_.setFont(font_);
    painter_.setPen(toQColor(style.colour));
    const double ascent = QFontMetricsF(font_).ascent();
    const double left = style.isCentred ? at.x - laidOut.size().width() / 2 : at.x;
    painter_.drawStaticText(QPointF(left, at.y - ascent), laidOut);
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
