#include "desktop/DropArea.h"

#include <QPainter>

namespace vornic {

void DropArea::setTakesDrop(bool takesDrop) {
    if (takesDrop != takesDrop_) {
        takesDrop_ = takesDrop;
        update();
    }
}

void DropArea::paintEvent(QPaintEvent* /*event*/) {
    constexpr qreal kHalfLine = 0.5;
    constexpr qreal kRadius = 8;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (takesDrop_) {
        constexpr int kFaint = 40;
        QColor inside = palette().color(QPalette::Highlight);
        painter.setPen(QPen(inside, 2));
        inside.setAlpha(kFaint);
        painter.setBrush(inside);
    } else {
        painter.setPen(QPen(palette().color(QPalette::PlaceholderText), 1, Qt::DashLine));
    }
    painter.drawRoundedRect(QRectF(rect()).adjusted(kHalfLine, kHalfLine, -kHalfLine, -kHalfLine),
                            kRadius, kRadius);
}

}  // namespace vornic
