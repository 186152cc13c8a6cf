#include <QScrollBar>
#include <QTest>
#include <string>

#include "desktop/ColorScheme.h"
#include "desktop/SourceColors.h"
#include "desktop/SourceView.h"
#include "tests/desktop/Contrast.h"
#include "tests/desktop/DesktopTest.h"

namespace vornic::test {
namespace {

class SourceViewTest : public DesktopTest {
  protected:
    SourceViewTest() {
        view.resize(400, 200);
        view.show();
    }
    void show(const std::string& text) { view.setSource(SourceText::of(text)); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(&view, key, modifiers);
    }

    SourceView view{QStringLiteral("Source"), nullptr};
};

TEST_F(SourceViewTest, goesToALineAndSelectsIt) {
    std::string text;
    for (int line = 1; line <= 300; ++line) {
        text += "<line n=\"" + std::to_string(line) + "\"/>\n";
    }
    show(text);
    view.showLine(200);
    EXPECT_EQ(view.currentLine(), 200U);
    EXPECT_EQ(view.selectedText(), QStringLiteral("<line n=\"200\"/>"));
    EXPECT_GT(view.verticalScrollBar()->value(), 150);
    EXPECT_LT(view.verticalScrollBar()->value(), 200);
}

TEST_F(SourceViewTest, isReadWithTheKeyboard) {
    show("<a>\n<b/>\n</a>");
    press(Qt::Key_Down);
    EXPECT_EQ(view.currentLine(), 2U);
    press(Qt::Key_End, Qt::ShiftModifier);
    EXPECT_EQ(view.selectedText(), QStringLiteral("<b/>"));
    press(Qt::Key_Right);
    EXPECT_EQ(view.currentLine(), 3U);
    press(Qt::Key_Left, Qt::ShiftModifier);
    press(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(view.selectedText(), QStringLiteral(">\n"));
    press(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(view.currentLine(), 3U);
    press(Qt::Key_X);
    view.selectAll();
    EXPECT_EQ(view.selectedText(), QStringLiteral("<a>\n<b/>\n</a>")) << "it cannot be changed";
}

TEST_F(SourceViewTest, movesByWholeCharacters) {
    show("\xC3\xA9\xF0\x9F\x8E\xAC|");
    press(Qt::Key_Right, Qt::ShiftModifier);
    press(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(view.selectedText(), QString::fromUtf8("\xC3\xA9\xF0\x9F\x8E\xAC"));
}

TEST_F(SourceViewTest, findsTextFromTheSelectionOnAndThenFromTheOtherEnd) {
    show("<clip/>\n<Clip/>\n");
    EXPECT_TRUE(view.findText(QStringLiteral("clip"), FindStep::next));
    EXPECT_EQ(view.currentLine(), 1U);
    EXPECT_TRUE(view.findText(QStringLiteral("clip"), FindStep::next));
    EXPECT_EQ(view.currentLine(), 2U);
    EXPECT_TRUE(view.findText(QStringLiteral("clip"), FindStep::next));
    EXPECT_EQ(view.currentLine(), 1U);
    EXPECT_TRUE(view.findText(QStringLiteral("clip"), FindStep::previous));
    EXPECT_EQ(view.currentLine(), 2U);
    EXPECT_FALSE(view.findText(QStringLiteral("nothing"), FindStep::next));
}

TEST_F(SourceViewTest, drawsDamagedTextsAndGaps) {
    show("<a\x01 \xFF\n" + std::string(5000, 'x') + "\n");
    view.setMarks({{{3, 1}, Severity::error}, {{4, 4000}, Severity::warning}});
    EXPECT_FALSE(view.grab().isNull());
    view.setRows({0, static_cast<std::size_t>(-1), 1, 2, 3}, {true, true, false, false, false});
    view.showLine(2);
    EXPECT_FALSE(view.grab().isNull());
    view.setSource(nullptr);
    EXPECT_FALSE(view.grab().isNull());
}

TEST_F(SourceViewTest, marksFindingsInTheColourOfTheirSeverity) {
    show("<a>\n<b/>\n</a>");
    const QColor red = markColor(Severity::error, view.palette());
    const auto countRed = [&] {
        const QImage image = view.grab().toImage();
        int count = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                count += image.pixelColor(x, y) == red ? 1 : 0;
            }
        }
        return count;
    };
    const int without = countRed();
    view.setMarks({{{4, 4}, Severity::error}});
    EXPECT_GT(countRed(), without + 10);
    view.setMarks({});
    EXPECT_EQ(countRed(), without);
}

TEST_F(SourceViewTest, laysOutOfFiftyMegabytesWhatIsInView) {
    std::string text;
    while (text.size() < 50'000'000) {
        text += "<clipitem id=\"clip\"><name>A name</name>\n";
    }
    const auto source = SourceText::of(std::move(text));
    view.setSource(source);
    EXPECT_FALSE(view.grab().isNull());
    const qsizetype inView = view.viewport()->height() / view.fontMetrics().height() + 2;
    EXPECT_GT(view.laidOutRows(), inView / 2);
    EXPECT_LE(view.laidOutRows(), inView);
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum());
    EXPECT_FALSE(view.grab().isNull());
    EXPECT_LE(view.laidOutRows(), 2 * inView);
}

TEST_F(SourceViewTest, hasColoursThatCanBeReadOnTheirGround) {
    constexpr double kLeast = 4.5;
    for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
        const QPalette palette = paletteOf(scheme);
        for (int kind = 0; kind < 9; ++kind) {
            const QColor color = sourceColor(static_cast<SourceText::Kind>(kind), palette);
            EXPECT_GE(contrast(color, palette.color(QPalette::Base)), kLeast) << kind;
            EXPECT_GE(contrast(color, changedGround(palette)), kLeast) << kind;
        }
    }
}

}  // namespace
}  // namespace vornic::test
