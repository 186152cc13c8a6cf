#ifndef VORNIC_DESKTOP_COLOR_SCHEME_H
#define VORNIC_DESKTOP_COLOR_SCHEME_H

#include <QColor>
#include <QPalette>

namespace vornic {

/// Dark text on a light ground, or the other way round.
enum class ColorScheme { light, dark };

/// Every colour of a scheme, for enabled and disabled controls. Texts have a contrast of at least
/// 4.5 to 1 on each ground that they are drawn on.
[[nodiscard]] QPalette paletteOf(ColorScheme scheme);

/// Which scheme a palette is of, whoever chose it, by the ground of its texts.
[[nodiscard]] ColorScheme schemeOf(const QPalette& palette);

/// The red of error lines on the ground of a palette's texts.
[[nodiscard]] QColor errorColorOn(const QPalette& palette);

}  // namespace vornic

#endif
