#include "desktop/SeverityIcon.h"

#include <QCoreApplication>
#include <QPainter>
#include <QPolygonF>
#include <array>

#include "desktop/OutcomeBadge.h"

namespace vornic {

namespace {

constexpr int kSide = 16;
constexpr qreal kScale = 4;

OutcomeBadge::Kind kindOf(Severity severity) {
    switch (severity) {
        case Severity::error:
            return OutcomeBadge::Kind::bad;
        case Severity::warning:
            return OutcomeBadge::Kind::warning;
        default:
            return OutcomeBadge::Kind::neutral;
    }
}

// An octagon, a triangle, a disc.
void drawShape(Severity severity, QPainter& painter) {
    switch (severity) {
        case Severity::error:
            painter.drawPolygon(QPolygonF(
                {{5, 1}, {11, 1}, {15, 5}, {15, 11}, {11, 15}, {5, 15}, {1, 11}, {1, 5}}));
            break;
        case Severity::warning:
            painter.drawPolygon(QPolygonF({{8, 1}, {15.5, 15}, {0.5, 15}}));
            break;
        default:
            painter.drawEllipse(QRectF(1.5, 1.5, 13, 13));
            break;
    }
}

void drawMark(Severity severity, QPainter& painter) {
    switch (severity) {
        case Severity::error:
            painter.drawLine(QPointF(5.5, 5.5), QPointF(10.5, 10.5));
            painter.drawLine(QPointF(10.5, 5.5), QPointF(5.5, 10.5));
            break;
        case Severity::warning:
            painter.drawLine(QPointF(8, 6), QPointF(8, 10));
            painter.drawPoint(QPointF(8, 12.8));
            break;
        default:
            painter.drawPoint(QPointF(8, 4.8));
            painter.drawLine(QPointF(8, 7.6), QPointF(8, 11.4));
            break;
    }
}

}  // namespace

QIcon severityIcon(Severity severity, const QPalette& palette) {
    constexpr qreal kPen = 1.8;
    QPixmap pixmap(qRound(kSide * kScale), qRound(kSide * kScale));
    pixmap.setDevicePixelRatio(kScale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(OutcomeBadge::discColor(kindOf(severity), palette));
    drawShape(severity, painter);
    painter.setPen(
        QPen(OutcomeBadge::markColor(palette), kPen, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    drawMark(severity, painter);
    return QIcon(pixmap);
}

QString wordOf(Severity severity) {
    constexpr std::array kWords = {"Note", "Warning", "Error"};
    return QCoreApplication::translate("FindingsView",
                                       kWords.at(static_cast<std::size_t>(severity)));
}

}  // namespace vornic
