#include "desktop/ColorScheme.h"

#include <array>

namespace vornic {

namespace {

constexpr int kMiddleGray = 128;

struct RoleColors {
    QPalette::ColorRole role;
    QRgb light;
    QRgb dark;
};

constexpr std::array kColors{
    RoleColors{QPalette::Window, 0xffefefef, 0xff2b2c2e},
    RoleColors{QPalette::WindowText, 0xff1c1c1c, 0xffe8e8e8},
    RoleColors{QPalette::Base, 0xffffffff, 0xff1d1e20},
    RoleColors{QPalette::AlternateBase, 0xfff6f6f6, 0xff252628},
    RoleColors{QPalette::Text, 0xff1c1c1c, 0xffe8e8e8},
    RoleColors{QPalette::PlaceholderText, 0xff6b6b6b, 0xff9a9b9e},
    RoleColors{QPalette::Button, 0xfff4f4f4, 0xff2f3033},
    RoleColors{QPalette::ButtonText, 0xff1c1c1c, 0xffe8e8e8},
    RoleColors{QPalette::BrightText, 0xffffffff, 0xffffffff},
    RoleColors{QPalette::Light, 0xffffffff, 0xff57585c},
    RoleColors{QPalette::Midlight, 0xffe4e4e4, 0xff48494c},
    RoleColors{QPalette::Mid, 0xffb4b4b4, 0xff5a5b5f},
    RoleColors{QPalette::Dark, 0xff6b6b6b, 0xff161718},
    RoleColors{QPalette::Shadow, 0xff4a4a4a, 0xff0c0c0d},
    RoleColors{QPalette::Highlight, 0xff2a6db5, 0xff4a94dc},
    RoleColors{QPalette::HighlightedText, 0xffffffff, 0xff0d0d0d},
    RoleColors{QPalette::Link, 0xff0b57a8, 0xff7ab7ff},
    RoleColors{QPalette::LinkVisited, 0xff6a3fa0, 0xffc4a3ff},
    RoleColors{QPalette::ToolTipBase, 0xfffffbe8, 0xff3f4043},
    RoleColors{QPalette::ToolTipText, 0xff1c1c1c, 0xffe8e8e8},
};

// What is different where a control is disabled.
constexpr std::array kDisabledColors{
    RoleColors{QPalette::WindowText, 0xff696969, 0xffa8a9ac},
    RoleColors{QPalette::Text, 0xff696969, 0xffa8a9ac},
    RoleColors{QPalette::ButtonText, 0xff696969, 0xffa8a9ac},
    RoleColors{QPalette::Highlight, 0xff6b6b6b, 0xff9a9b9e},
};

}  // namespace

QPalette paletteOf(ColorScheme scheme) {
    const auto colorOf = [scheme](const RoleColors& colors) {
        return QColor::fromRgb(scheme == ColorScheme::dark ? colors.dark : colors.light);
    };
    QPalette palette;
    for (const RoleColors& colors : kColors) {
        palette.setColor(colors.role, colorOf(colors));
    }
    for (const RoleColors& colors : kDisabledColors) {
        palette.setColor(QPalette::Disabled, colors.role, colorOf(colors));
    }
    return palette;
}

ColorScheme schemeOf(const QPalette& palette) {
    return palette.color(QPalette::Base).lightness() < kMiddleGray ? ColorScheme::dark
                                                                   : ColorScheme::light;
}

QColor errorColorOn(const QPalette& palette) {
    return schemeOf(palette) == ColorScheme::dark ? QColor(255, 105, 97) : QColor(196, 0, 0);
}

}  // namespace vornic
