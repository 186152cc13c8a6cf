#ifndef VORNIC_DESKTOP_OWN_STYLE_H
#define VORNIC_DESKTOP_OWN_STYLE_H

#include <QProxyStyle>

namespace vornic {

/// How controls are drawn where the desktop has no style of its own: as the toolkit's Fusion does,
/// with dialog buttons that hold words alone, the default button rightmost, and with edges around
/// check boxes and menus that can be seen on a dark ground, too, and around the list or text that
/// has the focus.
class OwnStyle : public QProxyStyle {
  public:
    /// The name of the style that this one builds on.
    static QString baseName() { return QStringLiteral("fusion"); }

    OwnStyle() : QProxyStyle(baseName()) {}
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option,
                    const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
};

}  // namespace vornic

#endif
