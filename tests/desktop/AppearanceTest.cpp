#include <QStyleFactory>
#include <QToolTip>

#include "desktop/Appearance.h"
#include "desktop/OwnStyle.h"
#include "tests/desktop/PortalTest.h"
#include "tests/support/machine/ScopedEnvironment.h"

namespace vornic::test {
namespace {

// Begins as the toolkit does on a desktop without colours of its own.
class AppearanceTest : public PortalTest {
  protected:
    AppearanceTest() { reset(); }
    ~AppearanceTest() override { reset(); }

    static void reset() {
        QApplication::setStyle(QStyleFactory::create(OwnStyle::baseName()));
        QApplication::setPalette(QApplication::style()->standardPalette());
    }
    static bool shows(ColorScheme scheme) {
        return QApplication::palette() == paletteOf(scheme) &&
               QToolTip::palette() == paletteOf(scheme);
    }

    const ScopedEnvironment noDemand{Appearance::kSchemeVariable, ""};
};

TEST_F(AppearanceTest, isLightWithoutADesktopThatSaysOtherwise) {
    const Appearance appearance(std::nullopt);
    EXPECT_TRUE(shows(ColorScheme::light));
    EXPECT_NE(dynamic_cast<OwnStyle*>(QApplication::style()), nullptr);
}

TEST_F(AppearanceTest, followsTheDesktopWhileItRuns) {
    FakePortal desktop(connection("desktop"), 1);
    const Appearance appearance(connection("program"));
    EXPECT_TRUE(waitUntil([] { return shows(ColorScheme::dark); }));
    desktop.choose(2);
    EXPECT_TRUE(waitUntil([] { return shows(ColorScheme::light); }));
    desktop.choose(1);
    EXPECT_TRUE(waitUntil([] { return shows(ColorScheme::dark); }));
    desktop.choose(0);
    EXPECT_TRUE(waitUntil([] { return shows(ColorScheme::light); }));
}

TEST_F(AppearanceTest, heedsItsVariableMoreThanTheDesktop) {
    const ScopedEnvironment demand(Appearance::kSchemeVariable, "dark");
    FakePortal desktop(connection("desktop"), 2);
    const Appearance appearance(connection("program"));
    desktop.choose(2);
    EXPECT_FALSE(
        waitUntil([] { return !shows(ColorScheme::dark); }, std::chrono::milliseconds(300)));
}

TEST_F(AppearanceTest, heedsNoOtherValueOfItsVariable) {
    const ScopedEnvironment demand(Appearance::kSchemeVariable, "Dark");
    const Appearance appearance(std::nullopt);
    EXPECT_TRUE(shows(ColorScheme::light));
}

TEST_F(AppearanceTest, leavesTheColorsOfADesktopAlone) {
    QPalette theirs = QApplication::palette();
    theirs.setColor(QPalette::Window, Qt::darkGreen);
    QApplication::setPalette(theirs);
    const FakePortal desktop(connection("desktop"), 1);
    const Appearance appearance(connection("program"));
    EXPECT_FALSE(waitUntil([&theirs] { return QApplication::palette() != theirs; },
                           std::chrono::milliseconds(300)));
    EXPECT_EQ(dynamic_cast<OwnStyle*>(QApplication::style()), nullptr);
}

TEST_F(AppearanceTest, leavesAnotherStyleAlone) {
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("windows")));
    QApplication::setPalette(QApplication::style()->standardPalette());
    const QPalette theirs = QApplication::palette();
    const Appearance appearance(std::nullopt);
    EXPECT_EQ(QApplication::palette(), theirs);
    EXPECT_EQ(QApplication::style()->name(), QStringLiteral("windows"));
}

}  // namespace
}  // namespace vornic::test
