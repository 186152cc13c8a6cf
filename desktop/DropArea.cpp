#include "desktop/DropArea.h"

#include <QPainter>

namespace vornic {

void DropArea::paintEvent(QPaintEvent* /*event*/) {
    constexpr qreal kHalfLine = 0.5;
    constexpr qreal kRadius = 8;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette().color(QPalette::PlaceholderText), 1, Qt::DashLine));
    painter.drawRoundedRect(QRectF(rect()).adjusted(kHalfLine, kHalfLine, -kHalfLine, -kHalfLine),
                            kRadius, kRadius);
}

}  // namespace vornic
