#include "desktop/SourceColors.h"

#include <array>

#include "desktop/ColorScheme.h"
#include "desktop/OutcomeBadge.h"

namespace vornic {

namespace {

struct KindColors {
    QRgb light;
    QRgb dark;
};

// In the order of the kinds. Text has the palette's colour.
constexpr std::array<KindColors, 9> kColors = {{{0, 0},
                                                {0xff0b4f9e, 0xff7ab7ff},
                                                {0xff6b4500, 0xffe0b878},
                                                {0xff1a6b2f, 0xff8fd19e},
                                                {0xff8a1f6a, 0xffe59ad0},
                                                {0xff5a5f66, 0xffa9b0b8},
                                                {0xff5c3d99, 0xffc4a3ff},
                                                {0xff5a5f66, 0xffa9b0b8},
                                                {0xff7a3b00, 0xffe6a876}}};

}  // namespace

QColor sourceColor(SourceText::Kind kind, const QPalette& palette) {
    if (kind == SourceText::Kind::text) {
        return palette.color(QPalette::Text);
    }
    const KindColors& colors = kColors.at(static_cast<std::size_t>(kind));
    return QColor::fromRgb(schemeOf(palette) == ColorScheme::dark ? colors.dark : colors.light);
}

QColor markColor(Severity severity, const QPalette& palette) {
    switch (severity) {
        case Severity::error:
            return errorColorOn(palette);
        case Severity::warning:
            return OutcomeBadge::discColor(OutcomeBadge::Kind::warning, palette);
        default:
            return OutcomeBadge::discColor(OutcomeBadge::Kind::neutral, palette);
    }
}

QColor changedGround(const QPalette& palette) {
    return QColor::fromRgb(schemeOf(palette) == ColorScheme::dark ? 0xff33321f : 0xfffff6cf);
}

}  // namespace vornic
