#include "desktop/OwnStyle.h"

#include <QAbstractScrollArea>
#include <QDialogButtonBox>
#include <QPainter>
#include <QStyleOption>

namespace vornic {

namespace {

void drawEdge(const QStyleOption& option, QPalette::ColorRole role, qreal radius,
              QPainter& painter) {
    constexpr qreal kHalfLine = 0.5;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(option.palette.color(role));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(
        QRectF(option.rect).adjusted(kHalfLine, kHalfLine, -kHalfLine, -kHalfLine), radius, radius);
    painter.restore();
}

}  // namespace

int OwnStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                        QStyleHintReturn* data) const {
    switch (hint) {
        case SH_DialogButtonBox_ButtonsHaveIcons:
            return 0;
        case SH_DialogButtonLayout:
            return QDialogButtonBox::GnomeLayout;
        default:
            return QProxyStyle::styleHint(hint, option, widget, data);
    }
}

int OwnStyle::pixelMetric(PixelMetric metric, const QStyleOption* option,
                          const QWidget* widget) const {
    // Else there is no room for the edge.
    return metric == PM_MenuPanelWidth ? 1 : QProxyStyle::pixelMetric(metric, option, widget);
}

void OwnStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                           const QWidget* widget) const {
    QProxyStyle::drawControl(element, option, painter, widget);
    if (element == CE_ShapedFrame && option->state.testFlag(State_HasFocus) &&
        qobject_cast<const QAbstractScrollArea*>(widget) != nullptr) {
        drawEdge(*option, QPalette::Highlight, 2, *painter);
    }
}

void OwnStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                             QPainter* painter, const QWidget* widget) const {
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    const bool showsFocus =
        option->state.testFlag(State_HasFocus) && option->state.testFlag(State_KeyboardFocusChange);
    if (element == PE_IndicatorCheckBox && !showsFocus) {
        drawEdge(*option, QPalette::PlaceholderText, 2, *painter);
    } else if (element == PE_FrameMenu) {
        drawEdge(*option, QPalette::Mid, 0, *painter);
    }
}

}  // namespace vornic
