#include <QClipboard>
#include <QScrollBar>
#include <QTest>
#include <QTextBlock>
#include <string>

#include "desktop/ColorScheme.h"
#include "desktop/ReportView.h"
#include "tests/desktop/DesktopTest.h"

namespace vornic::test {
namespace {

class ReportViewTest : public DesktopTest {
  protected:
    ReportViewTest() : view(nullptr) {
        view.resize(400, 200);
        view.show();
    }

    // The format of the text at a place of the report.
    QTextCharFormat formatOf(const QString& text) {
        view.flush();
        return view.document()->find(text).charFormat();
    }

    ReportView view;
};

TEST_F(ReportViewTest, isEmptyAtFirstAndAfterItIsCleared) {
    EXPECT_TRUE(view.isEmpty());
    view.append("one", false, false);
    EXPECT_FALSE(view.isEmpty());
    view.clearReport();
    EXPECT_TRUE(view.isEmpty());
    EXPECT_TRUE(waitUntil([this] { return view.toPlainText().isEmpty(); }));
}

TEST_F(ReportViewTest, showsEntriesWithAnEmptyLineBetweenThem) {
    view.append("one", false, false);
    view.append("\n\ntwo\nlines", true, false);
    view.append("\n\nthree", false, true);
    EXPECT_TRUE(waitUntil([this] { return !view.toPlainText().isEmpty(); }));
    EXPECT_EQ(view.toPlainText(), QStringLiteral("one\n\ntwo\nlines\n\nthree"));
}

TEST_F(ReportViewTest, givesTheClipboardTheSameText) {
    view.append("one", false, false);
    view.append("\n\ntwo", true, false);
    view.flush();
    view.selectAll();
    view.copy();
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("one\n\ntwo"));
}

TEST_F(ReportViewTest, isRedForErrorsAndBoldWhereAsked) {
    view.append("plain", false, false);
    view.append("\n\nstrong", false, true);
    view.append("\n\nfault", true, false);
    view.append("\n\ndisaster", true, true);
    EXPECT_LT(formatOf(QStringLiteral("plain")).fontWeight(), QFont::Bold);
    EXPECT_EQ(formatOf(QStringLiteral("strong")).fontWeight(), QFont::Bold);
    EXPECT_LT(formatOf(QStringLiteral("fault")).fontWeight(), QFont::Bold);
    EXPECT_EQ(formatOf(QStringLiteral("disaster")).fontWeight(), QFont::Bold);
    EXPECT_EQ(formatOf(QStringLiteral("strong")).foreground().style(), Qt::NoBrush);
    for (const char* const text : {"fault", "disaster"}) {
        const QColor color = formatOf(QString::fromLatin1(text)).foreground().color();
        EXPECT_GT(color.red(), color.green() + 90);
        EXPECT_GT(color.red(), color.blue() + 90);
    }
    EXPECT_EQ(view.font().pointSize(), 12);
}

TEST_F(ReportViewTest, brightensItsRedOnADarkGround) {
    view.append("fault", true, false);
    const int before = formatOf(QStringLiteral("fault")).foreground().color().lightness();
    QPalette dark = view.palette();
    dark.setColor(QPalette::Base, Qt::black);
    dark.setColor(QPalette::Text, Qt::white);
    view.setPalette(dark);
    EXPECT_GT(formatOf(QStringLiteral("fault")).foreground().color().lightness(), before);
}

TEST_F(ReportViewTest, takesTheColorsOfAnotherPaletteThroughoutALongReport) {
    constexpr int kEntries = 3000;
    for (int entry = 0; entry < kEntries; ++entry) {
        view.append((entry == 0 ? "fault" : "\n\nfault") + std::to_string(entry), entry % 2 == 0,
                    false);
    }
    view.flush();
    const auto colorAt = [this](int entry) {
        return view.document()->findBlockByNumber(entry).begin().fragment().charFormat();
    };
    for (const ColorScheme scheme : {ColorScheme::dark, ColorScheme::light}) {
        const QPalette palette = paletteOf(scheme);
        view.setPalette(palette);
        ASSERT_TRUE(waitUntil([&] {
            return colorAt(0).foreground().color() == errorColorOn(palette) &&
                   colorAt(kEntries / 2).foreground().color() == errorColorOn(palette) &&
                   colorAt(kEntries - 2).foreground().color() == errorColorOn(palette);
        }));
        EXPECT_EQ(colorAt(1).foreground().style(), Qt::NoBrush);
    }
}

TEST_F(ReportViewTest, cannotBeTypedInto) {
    view.append("one", false, false);
    view.flush();
    QTest::keyClicks(&view, QStringLiteral("x"));
    EXPECT_EQ(view.toPlainText(), QStringLiteral("one"));
    EXPECT_TRUE(view.isReadOnly());
}

TEST_F(ReportViewTest, showsMarkupAsItIs) {
    view.append("<b>&amp;</b>", false, false);
    view.flush();
    EXPECT_EQ(view.toPlainText(), QStringLiteral("<b>&amp;</b>"));
}

TEST_F(ReportViewTest, findsForwardsAndBackwardsAndRoundTheEnds) {
    view.append("Alpha", false, false);
    view.append("\n\nbeta", false, false);
    view.append("\n\nALPHA", false, false);
    const QString text = QStringLiteral("alpha");
    EXPECT_TRUE(view.findText(text, FindStep::next));
    EXPECT_EQ(view.textCursor().selectedText(), QStringLiteral("Alpha"));
    EXPECT_TRUE(view.findText(text, FindStep::next));
    EXPECT_EQ(view.textCursor().selectedText(), QStringLiteral("ALPHA"));
    EXPECT_TRUE(view.findText(text, FindStep::next));
    EXPECT_EQ(view.textCursor().selectedText(), QStringLiteral("Alpha"));
    EXPECT_TRUE(view.findText(text, FindStep::previous));
    EXPECT_EQ(view.textCursor().selectedText(), QStringLiteral("ALPHA"));
    EXPECT_FALSE(view.findText(QStringLiteral("gamma"), FindStep::next));
    EXPECT_EQ(view.textCursor().selectedText(), QStringLiteral("ALPHA"));
}

TEST_F(ReportViewTest, staysAtTheEndOnlyWhileThatIsInView) {
    const auto fill = [this](int entries) {
        for (int entry = 0; entry < entries; ++entry) {
            view.append(entry == 0 && view.isEmpty() ? "entry" : "\n\nentry", false, false);
        }
        view.flush();
    };
    fill(100);
    EXPECT_EQ(view.verticalScrollBar()->value(), view.verticalScrollBar()->maximum());
    view.verticalScrollBar()->setValue(0);
    fill(100);
    EXPECT_EQ(view.verticalScrollBar()->value(), 0);
}

TEST_F(ReportViewTest, putsEntriesInInOrderHoweverMany) {
    constexpr int kEntries = 1234;
    for (int entry = 0; entry < kEntries; ++entry) {
        view.append((entry == 0 ? "" : "\n\n") + std::to_string(entry), false, false);
    }
    view.flush();
    EXPECT_EQ(view.document()->blockCount(), kEntries);
    EXPECT_TRUE(view.toPlainText().startsWith(QStringLiteral("0\n\n1\n\n2\n\n")));
    EXPECT_TRUE(view.toPlainText().endsWith(QStringLiteral("\n\n1232\n\n1233")));
}

}  // namespace
}  // namespace vornic::test
