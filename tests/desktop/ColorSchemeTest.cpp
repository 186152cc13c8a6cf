#include <QMetaEnum>
#include <initializer_list>
#include <utility>

#include <gtest/gtest.h>

#include "desktop/ColorScheme.h"
#include "tests/desktop/Contrast.h"

namespace vornic::test {
namespace {

const char* nameOf(QPalette::ColorRole role) {
    return QMetaEnum::fromType<QPalette::ColorRole>().valueToKey(role);
}

class ColorSchemeTest : public ::testing::TestWithParam<ColorScheme> {
  protected:
    const QPalette palette = paletteOf(GetParam());

    void expectReadable(QPalette::ColorRole text,
                        std::initializer_list<QPalette::ColorRole> grounds) const {
        for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
            for (const QPalette::ColorRole ground : grounds) {
                EXPECT_GE(contrast(palette.color(group, text), palette.color(group, ground)),
                          kReadable)
                    << nameOf(text) << " on " << nameOf(ground) << " in group " << group;
            }
        }
    }
};

TEST_P(ColorSchemeTest, givesEveryRoleAColorWithoutTransparency) {
    for (int role = 0; role < QPalette::NColorRoles; ++role) {
        if (role == QPalette::NoRole) {
            continue;
        }
        for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
            const auto each = static_cast<QPalette::ColorRole>(role);
            EXPECT_TRUE(palette.isBrushSet(group, each)) << nameOf(each);
            EXPECT_EQ(palette.color(group, each).alpha(), 255) << nameOf(each);
        }
    }
}

TEST_P(ColorSchemeTest, hasReadableTextsEnabledAndDisabled) {
    expectReadable(QPalette::WindowText, {QPalette::Window, QPalette::Button, QPalette::Base});
    expectReadable(QPalette::Text, {QPalette::Base, QPalette::AlternateBase, QPalette::Window});
    expectReadable(QPalette::ButtonText, {QPalette::Button, QPalette::Window});
    expectReadable(QPalette::BrightText, {QPalette::Dark});
    expectReadable(QPalette::PlaceholderText, {QPalette::Base, QPalette::Window});
    expectReadable(QPalette::HighlightedText, {QPalette::Highlight});
    expectReadable(QPalette::Link, {QPalette::Base, QPalette::AlternateBase, QPalette::Window});
    expectReadable(QPalette::LinkVisited,
                   {QPalette::Base, QPalette::AlternateBase, QPalette::Window});
    expectReadable(QPalette::ToolTipText, {QPalette::ToolTipBase});
}

TEST_P(ColorSchemeTest, distinguishesDisabledTexts) {
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        EXPECT_GE(contrast(palette.color(QPalette::Active, role),
                           palette.color(QPalette::Disabled, role)),
                  1.5)
            << nameOf(role);
    }
}

TEST_P(ColorSchemeTest, marksSelectionsVisibly) {
    for (const auto ground : {QPalette::Base, QPalette::AlternateBase, QPalette::Window}) {
        EXPECT_GE(contrast(palette.color(QPalette::Highlight), palette.color(ground)), kVisible)
            << nameOf(ground);
    }
}

TEST_P(ColorSchemeTest, hasAReadableRedForErrors) {
    const QColor red = errorColorOn(palette);
    EXPECT_GE(contrast(red, palette.color(QPalette::Base)), kReadable);
    EXPECT_GE(contrast(red, palette.color(QPalette::AlternateBase)), kReadable);
    EXPECT_EQ(red.hue() / 10, 0);
    EXPECT_GT(red.hsvSaturation(), 128);
}

TEST_P(ColorSchemeTest, isKnownByItsPalette) {
    EXPECT_EQ(schemeOf(palette), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Both, ColorSchemeTest,
                         ::testing::Values(ColorScheme::light, ColorScheme::dark),
                         [](const auto& scheme) {
                             return scheme.param == ColorScheme::dark ? "Dark" : "Light";
                         });

}  // namespace
}  // namespace vornic::test
