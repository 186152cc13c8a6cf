#include <QDialog>
#include <QScreen>
#include <QVBoxLayout>

#include "desktop/Sheet.h"
#include "tests/desktop/DesktopTest.h"

namespace vornic::test {
namespace {

// What a frame may add on one side.
constexpr int kFrame = 4;

class SheetTest : public DesktopTest {
  protected:
    SheetTest() {
        window.setGeometry(100, 80, 600, 400);
        sheet.setMinimumSize(200, 100);
    }

    // Whether the sheet is in the middle of the window, below its head, and inside.
    void expectInPlace() const {
        EXPECT_NEAR(sheet.geometry().center().x(), window.geometry().center().x(), kFrame);
        EXPECT_GT(sheet.geometry().top(), window.geometry().top());
        EXPECT_TRUE(window.geometry().contains(sheet.geometry()));
    }

    QWidget window;
    QDialog sheet{&window};
};

TEST_F(SheetTest, isPlacedInTheMiddleOfItsWindow) {
    window.show();
    beginSheet(sheet);
    expectInPlace();
}

TEST_F(SheetTest, followsAWindowThatIsMovedAfterwards) {
    window.show();
    beginSheet(sheet);
    window.move(300, 200);
    ASSERT_TRUE(waitUntil([this] { return window.pos() == QPoint(300, 200); }));
    expectInPlace();
    window.resize(800, 500);
    QApplication::processEvents();
    expectInPlace();
}

TEST_F(SheetTest, takesTheKeyboardThatItsWindowIsGiven) {
    window.show();
    beginSheet(sheet);
    QDialog later(&window);
    beginSheet(later);
    ASSERT_TRUE(waitUntil([&later] { return later.isActiveWindow(); }));
    later.hide();
    QApplication::setActiveWindow(&window);
    EXPECT_TRUE(waitUntil([this] { return sheet.isActiveWindow(); }));
}

TEST_F(SheetTest, staysOnTheScreenWithItsButtons) {
    const QRect screen = window.screen()->availableGeometry();
    window.setGeometry(screen.left(), screen.bottom() - 200, 300, 180);
    window.show();
    sheet.setMinimumSize(280, 300);
    beginSheet(sheet);
    EXPECT_LE(sheet.geometry().bottom(), screen.bottom());
    EXPECT_GE(sheet.geometry().top(), screen.top());
}

TEST_F(SheetTest, aloneIsShownOverTheWindowInUse) {
    window.show();
    window.activateWindow();
    ASSERT_TRUE(waitUntil([this] { return window.isActiveWindow(); }));
    QDialog alone;
    alone.setMinimumSize(200, 100);
    beginAlone(alone);
    EXPECT_TRUE(alone.isVisible());
    EXPECT_EQ(alone.windowModality(), Qt::NonModal);
    EXPECT_NEAR(alone.geometry().center().x(), window.geometry().center().x(), kFrame);
    EXPECT_NEAR(alone.geometry().center().y(), window.geometry().center().y(), kFrame);
    EXPECT_FALSE(hasSheet(window));
}

TEST_F(SheetTest, aloneIsShownOverTheDocumentWhoseSheetIsInUse) {
    window.show();
    beginSheet(sheet);
    ASSERT_TRUE(waitUntil([this] { return sheet.isActiveWindow(); }));
    QDialog alone;
    alone.setMinimumSize(200, 100);
    beginAlone(alone);
    EXPECT_NEAR(alone.geometry().center().y(), window.geometry().center().y(), kFrame);
}

}  // namespace
}  // namespace vornic::test
