#include <QImage>
#include <set>

#include "desktop/ColorScheme.h"
#include "desktop/OutcomeBadge.h"
#include "tests/desktop/Contrast.h"
#include "tests/desktop/DesktopTest.h"

namespace vornic::test {
namespace {

using Kind = OutcomeBadge::Kind;
constexpr Kind kKinds[] = {Kind::good, Kind::warning, Kind::bad, Kind::neutral};

QImage pictureOf(OutcomeBadge& badge) {
    return badge.grab().toImage();
}

TEST(OutcomeBadgeTest, canBeMadeOutInBothSchemes) {
    for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
        const QPalette palette = paletteOf(scheme);
        for (const Kind kind : kKinds) {
            const QColor disc = OutcomeBadge::discColor(kind, palette);
            EXPECT_GE(contrast(disc, palette.color(QPalette::Window)), kReadable);
            EXPECT_GE(contrast(disc, OutcomeBadge::markColor(palette)), kReadable);
        }
    }
}

TEST(OutcomeBadgeTest, isDrawnDifferentlyForEachKind) {
    OutcomeBadge badge(nullptr);
    badge.setPalette(paletteOf(ColorScheme::light));
    const QImage empty = pictureOf(badge);
    std::set<QByteArray> pictures;
    for (const Kind kind : kKinds) {
        badge.setKind(kind);
        const QImage picture = pictureOf(badge);
        EXPECT_NE(picture, empty);
        pictures.insert(
            QByteArray(reinterpret_cast<const char*>(picture.constBits()), picture.sizeInBytes()));
    }
    EXPECT_EQ(pictures.size(), std::size(kKinds));
    badge.setKind(Kind::none);
    EXPECT_EQ(pictureOf(badge), empty);
}

TEST(OutcomeBadgeTest, takesTheColorsOfAnotherPalette) {
    OutcomeBadge badge(nullptr);
    badge.setKind(Kind::good);
    for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
        badge.setPalette(paletteOf(scheme));
        const QImage picture = pictureOf(badge);
        // Left of the mark.
        EXPECT_EQ(picture.pixelColor(picture.width() / 8, picture.height() / 2),
                  OutcomeBadge::discColor(Kind::good, paletteOf(scheme)));
    }
}

}  // namespace
}  // namespace vornic::test
