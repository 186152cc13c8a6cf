#include "desktop/Appearance.h"

#include <QApplication>
#include <QStyle>
#include <QToolTip>

#include "desktop/OwnStyle.h"

namespace vornic {

namespace {

std::optional<ColorScheme> demandedScheme() {
    const QString name = qEnvironmentVariable(Appearance::kSchemeVariable);
    if (name == QLatin1String("dark")) {
        return ColorScheme::dark;
    }
    return name == QLatin1String("light") ? std::optional(ColorScheme::light) : std::nullopt;
}

// Without a desktop's own colours the toolkit shows those of its style.
bool desktopGivesColors() {
    const QStyle& style = *QApplication::style();
    return style.name() != OwnStyle::baseName() ||
           QApplication::palette() != style.standardPalette();
}

void show(ColorScheme scheme) {
    const QPalette palette = paletteOf(scheme);
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
}

}  // namespace

Appearance::Appearance(const std::optional<QDBusConnection>& bus) {
    const std::optional<ColorScheme> demanded = demandedScheme();
    if (!demanded && desktopGivesColors()) {
        return;
    }
    QApplication::setStyle(new OwnStyle);  // which the application owns
    show(demanded.value_or(ColorScheme::light));
    if (!demanded && bus) {
        portal_ = std::make_unique<SettingsPortal>(*bus, [](std::optional<ColorScheme> chosen) {
            show(chosen.value_or(ColorScheme::light));
        });
    }
}

}  // namespace vornic
