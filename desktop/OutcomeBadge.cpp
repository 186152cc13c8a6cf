#include "desktop/OutcomeBadge.h"

#include <QPainter>
#include <QPainterPath>

#include "desktop/ColorScheme.h"

namespace vornic {

namespace {

// The marks are drawn in a square of this size and scaled.
constexpr qreal kSide = 20;

QPainterPath markOf(OutcomeBadge::Kind kind) {
    QPainterPath path;
    switch (kind) {
        case OutcomeBadge::Kind::good:
            path.moveTo(5.6, 10.4);
            path.lineTo(8.8, 13.6);
            path.lineTo(14.4, 6.8);
            break;
        case OutcomeBadge::Kind::warning:
            path.moveTo(10, 5);
            path.lineTo(10, 11);
            path.moveTo(10, 14.6);
            path.lineTo(10, 14.8);
            break;
        case OutcomeBadge::Kind::bad:
            path.moveTo(6.8, 6.8);
            path.lineTo(13.2, 13.2);
            path.moveTo(13.2, 6.8);
            path.lineTo(6.8, 13.2);
            break;
        case OutcomeBadge::Kind::neutral:
            path.moveTo(6, 10);
            path.lineTo(14, 10);
            break;
        case OutcomeBadge::Kind::none:
            break;
    }
    return path;
}

}  // namespace

OutcomeBadge::OutcomeBadge(QWidget* parent) : QWidget(parent) {
    constexpr double kSizeOfLine = 1.1;
    const int side = qRound(fontMetrics().height() * kSizeOfLine);
    setFixedSize(side, side);
}

void OutcomeBadge::setKind(Kind kind) {
    kind_ = kind;
    update();
}

QColor OutcomeBadge::discColor(Kind kind, const QPalette& palette) {
    const bool isDark = schemeOf(palette) == ColorScheme::dark;
    switch (kind) {
        case Kind::good:
            return QColor::fromRgb(isDark ? 0xff4cc07c : 0xff1a7a43);
        case Kind::warning:
            return QColor::fromRgb(isDark ? 0xffe8b04a : 0xff955f00);
        case Kind::bad:
            return errorColorOn(palette);
        case Kind::neutral:
            return QColor::fromRgb(isDark ? 0xffa8a9ac : 0xff696969);
        case Kind::none:
            break;
    }
    return Qt::transparent;
}

QColor OutcomeBadge::markColor(const QPalette& palette) {
    return palette.color(QPalette::Base);
}

void OutcomeBadge::paintEvent(QPaintEvent* /*event*/) {
    if (kind_ == Kind::none) {
        return;
    }
    constexpr qreal kPen = 2.2;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(width() / kSide, height() / kSide);
    painter.setPen(Qt::NoPen);
    painter.setBrush(discColor(kind_, palette()));
    painter.drawEllipse(QRectF(0, 0, kSide, kSide));
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(markColor(palette()), kPen, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(markOf(kind_));
}

}  // namespace vornic
