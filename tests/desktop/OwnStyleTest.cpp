#include <QDialogButtonBox>
#include <QImage>
#include <QMessageBox>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStyleOptionButton>
#include <QTabWidget>

#include "desktop/ColorScheme.h"
#include "desktop/OwnStyle.h"
#include "tests/desktop/Contrast.h"
#include "tests/desktop/DesktopTest.h"

namespace vornic::test {
namespace {

class OwnStyleTest : public DesktopTest {
  protected:
    OwnStyle style;
};

TEST_F(OwnStyleTest, putsTheDefaultButtonRightmost) {
    QMessageBox box;
    box.setStyle(&style);
    auto* const buttons = box.findChild<QDialogButtonBox*>();
    ASSERT_NE(buttons, nullptr);
    buttons->setStyle(&style);
    QPushButton* const cancel = box.addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
    QPushButton* const agree = box.addButton(QStringLiteral("Go on"), QMessageBox::AcceptRole);
    box.show();
    EXPECT_GT(agree->x(), cancel->x());
}

TEST_F(OwnStyleTest, givesDialogButtonsNoIcons) {
    QDialogButtonBox buttons;
    buttons.setStyle(&style);
    EXPECT_TRUE(buttons.addButton(QDialogButtonBox::Ok)->icon().isNull());
}

TEST_F(OwnStyleTest, keepsTextsReadableOnThePagesOfTabs) {
    for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
        const QPalette palette = paletteOf(scheme);
        QTabWidget tabs;
        tabs.setStyle(&style);
        tabs.setPalette(palette);
        tabs.addTab(new QWidget(&tabs), QStringLiteral("Page"));
        tabs.resize(200, 150);
        tabs.show();
        const QImage picture = tabs.grab().toImage();
        const QColor ground = picture.pixelColor(picture.rect().center());
        for (const auto group : {QPalette::Active, QPalette::Disabled}) {
            EXPECT_GE(contrast(palette.color(group, QPalette::WindowText), ground), kReadable);
        }
    }
}

TEST_F(OwnStyleTest, edgesAnEmptyCheckBoxVisibly) {
    for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
        constexpr int kSide = 16;
        QStyleOptionButton option;
        option.rect = QRect(0, 0, kSide, kSide);
        option.palette = paletteOf(scheme);
        option.state = QStyle::State_Enabled | QStyle::State_Off;
        QImage picture(kSide, kSide, QImage::Format_ARGB32);
        const QColor ground = option.palette.color(QPalette::Window);
        picture.fill(ground);
        QPainter painter(&picture);
        style.drawPrimitive(QStyle::PE_IndicatorCheckBox, &option, &painter, nullptr);
        painter.end();
        EXPECT_GE(contrast(picture.pixelColor(0, kSide / 2), ground), kVisible);
        EXPECT_GE(contrast(picture.pixelColor(kSide / 2, 0), ground), kVisible);
    }
}

TEST_F(OwnStyleTest, framesTheListOrTextThatHasTheFocus) {
    QWidget window;
    QPlainTextEdit text(&window);
    QPushButton other(&window);
    text.setStyle(&style);
    text.setGeometry(0, 0, 100, 60);
    other.setGeometry(0, 70, 100, 30);
    window.resize(100, 100);
    window.show();
    const auto edge = [&text] { return text.grab().toImage().pixelColor(0, 30); };
    other.setFocus();
    ASSERT_TRUE(waitUntil([&other] { return other.hasFocus(); }));
    const QColor without = edge();
    text.setFocus();
    ASSERT_TRUE(waitUntil([&text] { return text.hasFocus(); }));
    EXPECT_EQ(edge(), text.palette().color(QPalette::Highlight));
    EXPECT_GE(contrast(edge(), without), 1.5);
}

}  // namespace
}  // namespace vornic::test
