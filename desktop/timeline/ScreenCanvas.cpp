#include "desktop/timeline/ScreenCanvas.h"

#include <QFontMetricsF>
#include <QPolygonF>
#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

#include "desktop/QtText.h"
#include "desktop/timeline/PainterCanvas.h"

namespace vornic {

void KeptShapes::begin(const QFont& family, double scale) {
    newTexts_ = 0;
    isIncomplete_ = false;
    if (scale == scale_ && family == family_) {
        return;
    }
    family_ = family;
    scale_ = scale;
    recent_.clear();
    older_.clear();
    fonts_.clear();
    stamps_.clear();
}

const KeptShapes::FontOfSize& KeptShapes::font(int size, bool isBold) {
    const int key = isBold ? -size : size;
    auto found = fonts_.find(key);
    if (found == fonts_.end()) {
        QFont font = family_;
        font.setPixelSize(std::max(1, static_cast<int>(std::lround(size * scale_))));
        font.setBold(isBold);
        found = fonts_.insert(key, {font, QFontMetricsF(font).ascent()});
    }
    return *found;
}

std::size_t KeptShapes::Hash::operator()(const Wanted& key) const {
    constexpr std::size_t kPrime = 1000003;
    std::size_t hash = std::hash<std::string_view>()(key.text);
    hash = hash * kPrime + static_cast<std::size_t>(key.width);
    hash = hash * kPrime + static_cast<std::size_t>(key.size);
    return hash * 2 + (key.isBold ? 1 : 0);
}

QStaticText KeptShapes::layOut(const Wanted& wanted) {
    // More is on no screen.
    constexpr std::size_t kLongest = 4000;
    const QFont& font = this->font(wanted.size, wanted.isBold).font;
    QString shown = oneLine(toQString(wanted.text.substr(0, kLongest)));
    if (wanted.width != kAnyWidth) {
        shown = QFontMetricsF(font).elidedText(shown, Qt::ElideRight, wanted.width);
        // The mark alone says nothing.
        shown = shown == QStringLiteral("…") ? QString() : shown;
    }
    QStaticText text(shown);
    text.setTextFormat(Qt::PlainText);
    text.setPerformanceHint(QStaticText::AggressiveCaching);
    text.prepare({}, font);
    return text;
}

const QStaticText* KeptShapes::text(std::string_view text, int width, int size, bool isBold) {
    constexpr std::size_t kMostRecent = 6000;
    const Wanted wanted{text, width, size, isBold};
    if (const auto found = recent_.find(wanted); found != recent_.end()) {
        return &found->second;
    }
    if (recent_.size() >= kMostRecent) {
        older_ = std::exchange(recent_, {});
    }
    if (const auto found = older_.find(wanted); found != older_.end()) {
        return &recent_.insert(older_.extract(found)).position->second;
    }
    if (newTexts_ >= kMostNewTexts) {
        isIncomplete_ = true;
        return nullptr;
    }
    ++newTexts_;
    return &recent_.emplace(Key{std::string(text), width, size, isBold}, layOut(wanted))
                .first->second;
}

QImage& KeptShapes::image(QSize size) {
    if (image_.size() != size) {
        image_ = QImage(size, QImage::Format_RGB32);
    }
    return image_;
}

ScreenCanvas::ScreenCanvas(QSize size, const QFont& family, double scale, KeptShapes& kept)
    : image_(kept.image(size)),
      pixels_(reinterpret_cast<QRgb*>(image_.bits())),
      pixelsALine_(image_.bytesPerLine() / static_cast<qsizetype>(sizeof(QRgb))),
      painter_(&image_),
      clip_(image_.rect()),
      scale_(scale),
      kept_(kept) {
    painter_.setRenderHint(QPainter::Antialiasing);
    painter_.setRenderHint(QPainter::TextAntialiasing);
    kept_.begin(family, scale_);
}

int ScreenCanvas::pixel(double length) const {
    return static_cast<int>(std::lround(length * scale_));
}

void ScreenCanvas::clipTo(const Box& box) {
    const QRect wanted(QPoint(pixel(box.x), pixel(box.y)),
                       QPoint(pixel(box.right()) - 1, pixel(box.bottom()) - 1));
    clip_ = wanted.intersected(image_.rect());
    painter_.setClipRect(clip_);
}

void ScreenCanvas::clipToAll() {
    clip_ = image_.rect();
    painter_.setClipping(false);
}

void ScreenCanvas::fill(Colour colour) {
    fillRect(clip_, colour, 1);
}

void ScreenCanvas::fillRect(const QRect& rect, Colour colour, double opacity) {
    const QRect shown = rect.intersected(clip_);
    if (shown.isEmpty()) {
        return;
    }
    const int alpha = static_cast<int>(std::lround(255 * opacity * opacity_));
    const auto blended = [alpha](int over, int under) {
        return (over * alpha + under * (255 - alpha) + 127) / 255;
    };
    const QRgb color = qRgb(colour.red, colour.green, colour.blue);
    for (int y = shown.top(); y <= shown.bottom(); ++y) {
        QRgb* const first = pixels_ + y * pixelsALine_ + shown.left();
        if (alpha == 255) {
            std::fill_n(first, shown.width(), color);
            continue;
        }
        std::transform(first, first + shown.width(), first, [&](QRgb under) {
            return qRgb(blended(colour.red, qRed(under)), blended(colour.green, qGreen(under)),
                        blended(colour.blue, qBlue(under)));
        });
    }
}

void ScreenCanvas::rectangle(const Box& box, double /*radius*/, const ShapeStyle& style) {
    const int left = pixel(box.x);
    const int top = pixel(box.y);
    const int width = std::max(pixel(box.right()) - left, 1);
    const int height = pixel(box.bottom()) - top;
    const QRect rect(left, top, width, height);
    const int edge = std::max(1, static_cast<int>(style.strokeWidth * scale_));
    const bool isThin = width < 2 * edge;
    if (isThin && style.stroke) {
        fillRect(QRect(left, top, std::min(width, edge), height), *style.stroke, 1);
        return;
    }
    if (style.fill) {
        fillRect(rect, *style.fill, style.fillOpacity);
    }
    if (style.stroke) {
        drawEdges(rect, edge, *style.stroke, style.isDashed);
    }
}

void ScreenCanvas::drawEdges(const QRect& rect, int width, Colour colour, bool isDashed) {
    constexpr int kRoomForDashes = 8;
    const QRect left(rect.left(), rect.top(), width, rect.height());
    const QRect right(rect.right() + 1 - width, rect.top(), width, rect.height());
    const QRect above(rect.left() + width, rect.top(), rect.width() - 2 * width, width);
    const QRect below = above.translated(0, rect.height() - width);
    for (const QRect& edge : {left, right, above, below}) {
        if (isDashed && rect.width() >= kRoomForDashes) {
            drawDashes(edge, colour);
        } else {
            fillRect(edge, colour, 1);
        }
    }
}

void ScreenCanvas::drawDashes(const QRect& edge, Colour colour) {
    const int dash = std::max(2, pixel(3));
    const int step = std::max(dash + 1, pixel(5));
    const bool goesDown = edge.height() > edge.width();
    const int length = goesDown ? edge.height() : edge.width();
    for (int at = 0; at < length; at += step) {
        const int drawn = std::min(dash, length - at);
        fillRect(goesDown ? QRect(edge.left(), edge.top() + at, edge.width(), drawn)
                          : QRect(edge.left() + at, edge.top(), drawn, edge.height()),
                 colour, 1);
    }
}

void ScreenCanvas::polygon(const std::vector<Point>& corners, const ShapeStyle& style) {
    painter_.setBrush(style.fill ? QBrush(toQColor(*style.fill)) : QBrush(Qt::NoBrush));
    painter_.setPen(style.stroke ? QPen(toQColor(*style.stroke), style.strokeWidth * scale_)
                                 : QPen(Qt::NoPen));
    QPolygonF polygon;
    for (const Point& corner : corners) {
        polygon.push_back({corner.x * scale_, corner.y * scale_});
    }
    painter_.drawPolygon(polygon);
}

void ScreenCanvas::line(Point from, Point to, Colour colour, double width) {
    const int thickness = std::max(1, static_cast<int>(width * scale_));
    if (from.x == to.x || from.y == to.y) {
        const QPoint begin(pixel(std::min(from.x, to.x)), pixel(std::min(from.y, to.y)));
        const QSize size(std::max(pixel(std::max(from.x, to.x)) - begin.x(), thickness),
                         std::max(pixel(std::max(from.y, to.y)) - begin.y(), thickness));
        fillRect(QRect(begin, size), colour, 1);
        return;
    }
    painter_.setPen(QPen(toQColor(colour), width * scale_));
    painter_.drawLine(QPointF(from.x * scale_, from.y * scale_),
                      QPointF(to.x * scale_, to.y * scale_));
}

void ScreenCanvas::text(Point at, std::string_view text, const TextStyle& style) {
    constexpr double kWidest = 100000;
    // Whole pixels, so that a text that is seen again is known again.
    const int width = std::isinf(style.width)
                          ? KeptShapes::kAnyWidth
                          : static_cast<int>(std::min(style.width * scale_, kWidest));
    const QStaticText* const laidOut = kept_.text(text, width, style.size, style.isBold);
    if (laidOut == nullptr) {
        return;
    }
    const KeptShapes::FontOfSize& font = kept_.font(style.size, style.isBold);
    painter_.setFont(font.font);
    painter_.setPen(toQColor(style.colour));
    const double left =
        style.isCentred ? at.x * scale_ - laidOut->size().width() / 2 : at.x * scale_;
    painter_.drawStaticText(QPointF(std::round(left), std::round(at.y * scale_ - font.ascent)),
                            *laidOut);
}

void ScreenCanvas::stamp(Point centre, std::uint64_t kind, const Drawing& draw) {
    constexpr int kReach = 12;
    QHash<std::uint64_t, QPixmap>& stamps = kept_.stamps();
    const int reach = pixel(kReach);
    auto found = stamps.find(kind);
    if (found == stamps.end()) {
        QPixmap pixmap(2 * reach, 2 * reach);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        PainterCanvas canvas(painter, kept_.font(1, false).font);
        painter.scale(scale_, scale_);
        draw(canvas, {reach / scale_, reach / scale_});
        painter.end();
        found = stamps.insert(kind, pixmap);
    }
    painter_.drawPixmap(QPoint(pixel(centre.x) - reach, pixel(centre.y) - reach), *found);
}

void ScreenCanvas::begin(const ShapeGroup& group) {
    opacities_.push_back(opacity_);
    if (group.opacity < 1) {
        opacity_ *= group.opacity;
        painter_.setOpacity(opacity_);
    }
}

void ScreenCanvas::end() {
    if (opacity_ != opacities_.back()) {
        opacity_ = opacities_.back();
        painter_.setOpacity(opacity_);
    }
    opacities_.pop_back();
}

}  // namespace vornic
