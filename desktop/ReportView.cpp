#include "desktop/ReportView.h"

#include <QEvent>
#include <QScrollBar>
#include <QTextBlock>
#include <algorithm>
#include <chrono>
#include <utility>

#include "desktop/ColorScheme.h"
#include "desktop/QtText.h"

namespace vornic {

namespace {

constexpr int kFontSize = 12;
constexpr int kMargin = 8;
// Marks the text of an error, whose colour follows the palette.
constexpr int kIsError = QTextFormat::UserProperty + 1;
// Enough to be worth it, few enough for no pause to be felt.
constexpr std::size_t kMostWaiting = 500;
constexpr std::chrono::milliseconds kLongestWait{20};
constexpr int kBlocksAtOnce = 500;
constexpr int kBlocksInView = 100;

}  // namespace

ReportView::ReportView(QWidget* parent) : QPlainTextEdit(parent) {
    setObjectName(QStringLiteral("infoText"));
    setAccessibleName(tr("Report"));
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setTabChangesFocus(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    QFont plain = font();
    plain.setPointSize(kFontSize);
    setFont(plain);
    document()->setDocumentMargin(kMargin);
    clock_.setSingleShot(true);
    connect(&clock_, &QTimer::timeout, this, [this] { flush(); });
    connect(&recolorClock_, &QTimer::timeout, this, [this] { recolorSome(); });
}

void ReportView::append(std::string_view text, bool isError, bool isBold) {
    waiting_.push_back({std::string(text), isError, isBold});
    if (waiting_.size() >= kMostWaiting) {
        flush();
    } else if (!clock_.isActive()) {
        clock_.start(kLongestWait);
    }
}

void ReportView::clearReport() {
    waiting_.clear();
    clear();
}

void ReportView::flush() {
    clock_.stop();
    if (waiting_.empty()) {
        return;
    }
    QScrollBar* const bar = verticalScrollBar();
    const bool wasAtEnd = bar->value() == bar->maximum();
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    cursor.beginEditBlock();
    for (const Entry& entry : std::exchange(waiting_, {})) {
        insert(cursor, entry);
    }
    cursor.endEditBlock();
    if (wasAtEnd) {
        bar->setValue(bar->maximum());
    }
}

// An entry is one block of the text: the line end that sets it apart from the one before is a break
// inside the block, since a block costs far more memory than a line.
void ReportView::insert(QTextCursor& cursor, const Entry& entry) {
    QTextCharFormat format;
    format.setFontWeight(entry.isBold ? QFont::Bold : QFont::Normal);
    if (entry.isError) {
        format.setForeground(errorColorOn(palette()));
        format.setProperty(kIsError, true);
    }
    std::string_view text = entry.text;
    if (text.starts_with("\n")) {
        text.remove_prefix(1);
        cursor.insertBlock();
    }
    cursor.insertText(toQString(text).replace(QLatin1Char('\n'), QChar::LineSeparator), format);
}

bool ReportView::findText(const QString& text, FindStep step) {
    flush();
    const bool backwards = step == FindStep::previous;
    const QTextCursor before = textCursor();
    if (step == FindStep::here) {
        QTextCursor here = before;
        here.setPosition(before.selectionStart());
        setTextCursor(here);
    }
    const QTextDocument::FindFlags flags =
        backwards ? QTextDocument::FindBackward : QTextDocument::FindFlags();
    if (text.isEmpty() || find(text, flags)) {
        return true;
    }
    QTextCursor start(document());
    start.movePosition(backwards ? QTextCursor::End : QTextCursor::Start);
    setTextCursor(start);
    if (find(text, flags)) {
        return true;
    }
    setTextCursor(before);
    return false;
}

void ReportView::changeEvent(QEvent* event) {
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        recolorErrors();
    }
}

// What is in view comes first, the rest by and by: a long report would hold the window up.
void ReportView::recolorErrors() {
    nextToRecolor_ = 0;
    recolorSome();
    recolorClock_.start();
}

void ReportView::recolorSome() {
    recolor(firstVisibleBlock(), kBlocksInView);
    recolor(document()->findBlockByNumber(nextToRecolor_), kBlocksAtOnce);
    nextToRecolor_ += kBlocksAtOnce;
    if (nextToRecolor_ >= document()->blockCount()) {
        recolorClock_.stop();
    }
}

void ReportView::recolor(QTextBlock block, int count) {
    QTextCharFormat change;
    change.setForeground(errorColorOn(palette()));
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    for (; block.isValid() && count > 0; block = block.next(), --count) {
        // A block is one entry, which has one format.
        cursor.setPosition(block.position());
        cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        if (cursor.charFormat().boolProperty(kIsError)) {
            cursor.mergeCharFormat(change);
        }
    }
    cursor.endEditBlock();
}

int ReportView::readableLength() const {
    return document()->characterCount() - 1;
}

QString ReportView::readableText(int start, int end) const {
    QTextCursor cursor(document());
    cursor.setPosition(start);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    return cursor.selectedText()
        .replace(QChar::ParagraphSeparator, u'\n')
        .replace(QChar::LineSeparator, u'\n');
}

int ReportView::readableCursor() const {
    return textCursor().position();
}

void ReportView::setReadableCursor(int offset) {
    selectReadable(offset, offset);
}

ReadableText::Run ReportView::readableSelection() const {
    const QTextCursor cursor = textCursor();
    return {.start = cursor.selectionStart(), .end = cursor.selectionEnd()};
}

void ReportView::selectReadable(int start, int end) {
    QTextCursor cursor(document());
    cursor.setPosition(start);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    setTextCursor(cursor);
}

// A block is one entry, which has one format.
ReadableText::Run ReportView::readableRunAt(int offset) const {
    const QTextBlock block = document()->findBlock(offset);
    QTextCursor cursor(block);
    cursor.movePosition(QTextCursor::EndOfBlock);
    const QTextCharFormat format = cursor.charFormat();
    return {.start = block.position(),
            .end = std::min(block.position() + block.length(), readableLength()),
            .isFault = format.boolProperty(kIsError),
            .isBold = format.fontWeight() == QFont::Bold};
}

QRect ReportView::readableArea(int offset) const {
    QTextCursor cursor(document());
    cursor.setPosition(offset);
    const QRect area = cursorRect(cursor);
    return {viewport()->mapToGlobal(area.topLeft()), area.size()};
}

int ReportView::readableOffsetAt(QPoint screen) const {
    return cursorForPosition(viewport()->mapFromGlobal(screen)).position();
}

}  // namespace vornic
