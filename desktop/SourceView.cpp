#include "desktop/SourceView.h"

#include <QApplication>
#include <QClipboard>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOptionFocusRect>
#include <algorithm>
#include <cmath>
#include <utility>

#include "app/window/AlignedRows.h"
#include "desktop/ContextMenu.h"
#include "desktop/QtText.h"
#include "desktop/SourceColors.h"

namespace vornic {

namespace {

constexpr int kMargin = 6;
constexpr int kLayoutsKept = 400;
constexpr int kTabCharacters = 4;
constexpr int kMarkWidth = 4;

QString shownRow(std::string_view bytes) {
    QString text = toQString(bytes);
    for (QChar& character : text) {
        constexpr char16_t kFirstPicture = 0x2400;
        if (character.unicode() < u' ' && character != u'\t') {
            character = QChar(static_cast<char16_t>(kFirstPicture + character.unicode()));
        } else if (turnsDirection(character)) {
            character = QChar::ReplacementCharacter;
        }
    }
    return text;
}

// How many UTF-16 units the first bytes of a row are.
int unitsOf(std::string_view row, std::size_t bytes) {
    return static_cast<int>(toQString(row.substr(0, bytes)).size());
}

std::size_t bytesOf(std::string_view row, int units) {
    return static_cast<std::size_t>(toQString(row).left(units).toUtf8().size());
}

}  // namespace

SourceView::SourceView(const QString& accessibleName, QWidget* parent)
    : QAbstractScrollArea(parent), layouts_(kLayoutsKept) {
    setAccessibleName(accessibleName);
    setFocusPolicy(Qt::StrongFocus);
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    viewport()->setCursor(Qt::IBeamCursor);
    viewport()->setBackgroundRole(QPalette::Base);
    setAttribute(Qt::WA_InputMethodEnabled, false);
    addContextMenu(
        *this, "sourceMenu",
        {{tr("&Copy"), [this] { copy(); }, [this] { return caret_.anchor != caret_.position; }},
         {tr("Select &All"), [this] { selectAll(); }}});
}

void SourceView::setSource(std::shared_ptr<const SourceText> source) {
    source_ = std::move(source);
    marks_.clear();
    rows_.clear();
    isChanged_.clear();
    hasRows_ = false;
    caret_ = {};
    toldLine_ = 0;
    longest_ = 0;
    for (std::size_t row = 0; source_ && row < source_->rowCount(); ++row) {
        longest_ = std::max(longest_, source_->lengthOf(row));
    }
    dropLayouts();
    updateBars();
    verticalScrollBar()->setValue(0);
    horizontalScrollBar()->setValue(0);
    viewport()->update();
}

void SourceView::setMarks(std::vector<SourceMark> marks) {
    marks_ = std::move(marks);
    dropLayouts();
    viewport()->update();
}

void SourceView::setRows(std::vector<std::size_t> rows, std::vector<bool> isChanged) {
    rows_ = std::move(rows);
    isChanged_ = std::move(isChanged);
    hasRows_ = true;
    updateBars();
    viewport()->update();
}

std::size_t SourceView::rowCount() const {
    return hasRows_ ? rows_.size() : source_ ? source_->rowCount() : 0;
}

std::size_t SourceView::rowAtHeight(std::size_t height) const {
    if (height >= rowCount()) {
        return AlignedRows::kGap;
    }
    return hasRows_ ? rows_[height] : height;
}

// Rows ascend but for the gaps.
std::size_t SourceView::heightOfRow(std::size_t row) const {
    if (!hasRows_) {
        return row;
    }
    std::size_t low = 0;
    std::size_t high = rows_.size();
    while (low < high) {
        const std::size_t middle = low + (high - low) / 2;
        std::size_t at = middle;
        while (at < high && rows_[at] == AlignedRows::kGap) {
            ++at;
        }
        if (at == high || rows_[at] >= row) {
            high = middle;
        } else {
            low = at + 1;
        }
    }
    while (low < rows_.size() && rows_[low] == AlignedRows::kGap) {
        ++low;
    }
    return low;
}

int SourceView::rowHeight() const {
    return fontMetrics().height();
}

int SourceView::gutterWidth() const {
    const std::size_t lines = source_ ? source_->lineCount() : 1;
    const auto digits = static_cast<int>(std::to_string(lines).size());
    return digits * fontMetrics().horizontalAdvance(u'0') + 3 * kMargin + kMarkWidth;
}

int SourceView::rowsInView() const {
    return std::max(1, viewport()->height() / rowHeight());
}

void SourceView::updateBars() {
    const auto rows = static_cast<int>(rowCount());
    verticalScrollBar()->setRange(0, std::max(0, rows - rowsInView()));
    verticalScrollBar()->setPageStep(rowsInView());
    const int width = static_cast<int>(longest_ + 2) * fontMetrics().averageCharWidth();
    const int room = std::max(1, viewport()->width() - gutterWidth());
    horizontalScrollBar()->setRange(0, std::max(0, width - room));
    horizontalScrollBar()->setPageStep(room);
    horizontalScrollBar()->setSingleStep(fontMetrics().averageCharWidth() * kTabCharacters);
}

void SourceView::dropLayouts() {
    layouts_.clear();
}

QTextLayout* SourceView::layoutOf(std::size_t row) {
    if (QTextLayout* const known = layouts_.object(row)) {
        return known;
    }
    const std::string_view bytes = source_->row(row);
    auto* const layout = new QTextLayout(shownRow(bytes), font());
    QTextOption option;
    option.setWrapMode(QTextOption::NoWrap);
    option.setTextDirection(Qt::LeftToRight);
    option.setTabStopDistance(kTabCharacters * fontMetrics().horizontalAdvance(u' '));
    layout->setTextOption(option);
    QList<QTextLayout::FormatRange> formats;
    const auto add = [&](std::size_t offset, std::size_t length, const QTextCharFormat& format) {
        QTextLayout::FormatRange range;
        range.start = unitsOf(bytes, offset);
        range.length = unitsOf(bytes, offset + length) - range.start;
        range.format = format;
        formats.push_back(range);
    };
    int start = 0;
    for (const SourceText::Piece& piece : source_->piecesOf(row)) {
        QTextLayout::FormatRange range;
        range.start = start;
        range.length = static_cast<int>(toQString(bytes.substr(piece.offset, piece.length)).size());
        range.format.setForeground(sourceColor(piece.kind, palette()));
        start += range.length;
        formats.push_back(range);
    }
    const std::size_t begin = source_->offsetOf(row);
    const std::size_t end = begin + bytes.size();
    auto mark = std::lower_bound(
        marks_.begin(), marks_.end(), begin,
        [](const SourceMark& each, std::size_t offset) { return each.span.offset < offset; });
    for (; mark != marks_.end() && mark->span.offset <= end; ++mark) {
        QTextCharFormat format;
        format.setUnderlineStyle(QTextCharFormat::WaveUnderline);
        format.setUnderlineColor(markColor(mark->severity, palette()));
        const std::size_t offset = mark->span.offset - begin;
        const std::size_t length = std::max<std::size_t>(mark->span.length, 1);
        add(offset, std::min(length, bytes.size() - std::min(offset, bytes.size())), format);
    }
    layout->setFormats(formats);
    layout->beginLayout();
    QTextLine line = layout->createLine();
    if (line.isValid()) {
        line.setLineWidth(QWIDGETSIZE_MAX);
        line.setPosition(QPointF(0, 0));
    }
    layout->endLayout();
    layouts_.insert(row, layout);
    return layout;
}

TextSpan SourceView::selection() const {
    const std::size_t begin = std::min(caret_.anchor, caret_.position);
    return {begin, std::max(caret_.anchor, caret_.position) - begin};
}

void SourceView::paintGutter(QPainter& painter, std::size_t row, int top) {
    const int width = gutterWidth();
    painter.setPen(palette().color(QPalette::PlaceholderText));
    if (source_->beginsLine(row)) {
        painter.drawText(QRect(0, top, width - 2 * kMargin, rowHeight()),
                         Qt::AlignRight | Qt::AlignVCenter, QString::number(source_->lineOf(row)));
    }
    const std::size_t begin = source_->offsetOf(row);
    const std::size_t end = begin + source_->row(row).size();
    auto mark = std::lower_bound(
        marks_.begin(), marks_.end(), begin,
        [](const SourceMark& each, std::size_t offset) { return each.span.offset < offset; });
    if (mark == marks_.end() || mark->span.offset > end) {
        return;
    }
    Severity worst = mark->severity;
    for (; mark != marks_.end() && mark->span.offset <= end; ++mark) {
        worst = std::max(worst, mark->severity);
    }
    painter.fillRect(QRect(0, top, kMarkWidth, rowHeight()), markColor(worst, palette()));
}

void SourceView::paintRow(QPainter& painter, std::size_t height, int top) {
    const int gutter = gutterWidth();
    const QRect ground(gutter - kMargin, top, viewport()->width(), rowHeight());
    if (hasRows_ && isChanged_[height]) {
        painter.fillRect(ground, changedGround(palette()));
    }
    const std::size_t row = rowAtHeight(height);
    if (row == AlignedRows::kGap) {
        painter.fillRect(ground, QBrush(palette().color(QPalette::Midlight), Qt::BDiagPattern));
        return;
    }
    const std::string_view bytes = source_->row(row);
    const std::size_t begin = source_->offsetOf(row);
    const TextSpan selected = selection();
    QList<QTextLayout::FormatRange> selections;
    if (selected.length != 0 && selected.offset <= begin + bytes.size() &&
        selected.offset + selected.length > begin) {
        QTextLayout::FormatRange range;
        range.start = unitsOf(bytes, selected.offset > begin ? selected.offset - begin : 0);
        range.length =
            unitsOf(bytes, std::min(selected.offset + selected.length - begin, bytes.size())) -
            range.start;
        range.format.setBackground(palette().brush(QPalette::Highlight));
        range.format.setForeground(palette().brush(QPalette::HighlightedText));
        selections.push_back(range);
    }
    QTextLayout* const layout = layoutOf(row);
    painter.save();
    painter.setClipRect(QRect(gutter, 0, viewport()->width() - gutter, viewport()->height()));
    const QPointF origin(gutter - horizontalScrollBar()->value(), top);
    layout->draw(&painter, origin, selections);
    const bool hasCaret = caret_.position >= begin && caret_.position <= begin + bytes.size() &&
                          source_->rowAt(caret_.position) == row;
    if (hasCaret && hasFocus()) {
        layout->drawCursor(&painter, origin, unitsOf(bytes, caret_.position - begin), 2);
    }
    painter.restore();
    paintGutter(painter, row, top);
}

void SourceView::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    painter.fillRect(event->rect(), palette().color(QPalette::Base));
    painter.fillRect(QRect(0, 0, gutterWidth() - kMargin, viewport()->height()),
                     palette().color(QPalette::AlternateBase));
    if (!source_) {
        return;
    }
    const auto first = static_cast<std::size_t>(verticalScrollBar()->value());
    int top = 0;
    for (std::size_t height = first; height < rowCount() && top < viewport()->height(); ++height) {
        if (event->rect().intersects(QRect(0, top, viewport()->width(), rowHeight()))) {
            paintRow(painter, height, top);
        }
        top += rowHeight();
    }
}

void SourceView::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    updateBars();
}

void SourceView::scrollContentsBy(int /*dx*/, int /*dy*/) {
    viewport()->update();
}

std::size_t SourceView::offsetAt(QPoint point) {
    if (!source_ || rowCount() == 0) {
        return 0;
    }
    const int down = std::max(0, point.y()) / rowHeight();
    std::size_t height = static_cast<std::size_t>(verticalScrollBar()->value() + down);
    height = std::min(height, rowCount() - 1);
    while (height > 0 && rowAtHeight(height) == AlignedRows::kGap) {
        --height;
    }
    const std::size_t row = rowAtHeight(height);
    if (row == AlignedRows::kGap) {
        return 0;
    }
    const qreal x = point.x() - gutterWidth() + horizontalScrollBar()->value();
    const int units = layoutOf(row)->lineAt(0).xToCursor(x);
    return source_->offsetOf(row) + bytesOf(source_->row(row), units);
}

void SourceView::moveTo(std::size_t offset, bool selects) {
    caret_.position = std::min(offset, source_->text().size());
    if (!selects) {
        caret_.anchor = caret_.position;
    }
    ensureVisible(false);
    viewport()->update();
    tellReaders();
    if (lineChanged_ && toldLine_ != currentLine()) {
        toldLine_ = currentLine();
        lineChanged_();
    }
}

void SourceView::ensureVisible(bool inTheMiddle) {
    const std::size_t row = source_->rowAt(caret_.position);
    const auto height = static_cast<int>(heightOfRow(row));
    QScrollBar* const bar = verticalScrollBar();
    if (inTheMiddle) {
        bar->setValue(height - rowsInView() / 2);
    } else if (height < bar->value()) {
        bar->setValue(height);
    } else if (height >= bar->value() + rowsInView()) {
        bar->setValue(height - rowsInView() + 1);
    }
    const int units = unitsOf(source_->row(row), caret_.position - source_->offsetOf(row));
    const auto x = static_cast<int>(layoutOf(row)->lineAt(0).cursorToX(units));
    const int room = viewport()->width() - gutterWidth() - 2 * kMargin;
    QScrollBar* const across = horizontalScrollBar();
    if (x < across->value() || x > across->value() + room) {
        across->setValue(std::max(0, x - room / 2));
    }
}

void SourceView::showLine(std::size_t line) {
    if (!source_) {
        return;
    }
    const std::string_view bytes = source_->line(line);
    const std::size_t start = source_->offsetOf(source_->rowOfLine(line));
    caret_ = {start + bytes.size(), start};
    moveTo(start, true);
    ensureVisible(true);
}

void SourceView::showSpan(TextSpan span) {
    if (!source_) {
        return;
    }
    const std::size_t size = source_->text().size();
    const std::size_t begin = std::min(span.offset, size);
    caret_.anchor = std::min(begin + span.length, size);
    moveTo(begin, true);
    ensureVisible(true);
}

std::size_t SourceView::currentLine() const {
    return source_ ? source_->lineOf(source_->rowAt(caret_.position)) : 1;
}

QString SourceView::selectedText() const {
    if (!source_) {
        return {};
    }
    const TextSpan selected = selection();
    return toQString(source_->text().substr(selected.offset, selected.length));
}

void SourceView::copy() {
    if (selection().length != 0) {
        QApplication::clipboard()->setText(selectedText());
    }
}

void SourceView::selectAll() {
    if (source_) {
        caret_ = {0, source_->text().size()};
        viewport()->update();
    }
}

bool SourceView::findText(const QString& text, FindStep step) {
    if (!source_ || text.isEmpty()) {
        return text.isEmpty();
    }
    const std::string wanted = text.toStdString();
    const TextSpan selected = selection();
    const bool backwards = step == FindStep::previous;
    const std::size_t past = step == FindStep::here ? 0 : std::min<std::size_t>(1, selected.length);
    std::size_t found = backwards ? source_->findBefore(wanted, selected.offset)
                                  : source_->find(wanted, selected.offset + past);
    if (found == std::string_view::npos) {
        found = backwards ? source_->findBefore(wanted, source_->text().size())
                          : source_->find(wanted, 0);
    }
    if (found == std::string_view::npos) {
        return false;
    }
    showSpan({found, wanted.size()});
    return true;
}

void SourceView::moveByRows(std::ptrdiff_t rows, bool selects) {
    const std::size_t row = source_->rowAt(caret_.position);
    const int units = unitsOf(source_->row(row), caret_.position - source_->offsetOf(row));
    if (wantedX_ < 0) {
        wantedX_ = layoutOf(row)->lineAt(0).cursorToX(units);
    }
    const auto wanted =
        std::clamp<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(row) + rows, 0,
                                   static_cast<std::ptrdiff_t>(source_->rowCount()) - 1);
    const auto target = static_cast<std::size_t>(wanted);
    const int column = layoutOf(target)->lineAt(0).xToCursor(wantedX_);
    const qreal x = wantedX_;
    moveTo(source_->offsetOf(target) + bytesOf(source_->row(target), column), selects);
    wantedX_ = x;
}

void SourceView::keyPressEvent(QKeyEvent* event) {
    if (!source_) {
        QAbstractScrollArea::keyPressEvent(event);
        return;
    }
    const bool selects = event->modifiers().testFlag(Qt::ShiftModifier);
    const bool isControl = event->modifiers().testFlag(Qt::ControlModifier);
    const std::size_t row = source_->rowAt(caret_.position);
    const std::size_t begin = source_->offsetOf(row);
    const std::string_view bytes = source_->row(row);
    const int units = unitsOf(bytes, caret_.position - begin);
    switch (event->key()) {
        case Qt::Key_Up:
            return moveByRows(-1, selects);
        case Qt::Key_Down:
            return moveByRows(1, selects);
        case Qt::Key_PageUp:
            return moveByRows(-rowsInView(), selects);
        case Qt::Key_PageDown:
            return moveByRows(rowsInView(), selects);
        default:
            break;
    }
    wantedX_ = -1;
    switch (event->key()) {
        case Qt::Key_Home:
            return moveTo(isControl ? 0 : begin, selects);
        case Qt::Key_End:
            return moveTo(isControl ? source_->text().size() : begin + bytes.size(), selects);
        case Qt::Key_Left:
            if (units > 0) {
                return moveTo(begin + bytesOf(bytes, layoutOf(row)->previousCursorPosition(units)),
                              selects);
            }
            return row > 0
                       ? moveTo(source_->offsetOf(row - 1) + source_->row(row - 1).size(), selects)
                       : void();
        case Qt::Key_Right:
            if (caret_.position < begin + bytes.size()) {
                return moveTo(begin + bytesOf(bytes, layoutOf(row)->nextCursorPosition(units)),
                              selects);
            }
            return row + 1 < source_->rowCount() ? moveTo(source_->offsetOf(row + 1), selects)
                                                 : void();
        default:
            QAbstractScrollArea::keyPressEvent(event);
    }
}

void SourceView::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && source_) {
        wantedX_ = -1;
        moveTo(offsetAt(event->pos()), event->modifiers().testFlag(Qt::ShiftModifier));
    }
}

void SourceView::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons().testFlag(Qt::LeftButton) && source_) {
        moveTo(offsetAt(event->pos()), true);
    }
}

void SourceView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (!source_) {
        return;
    }
    const std::size_t row = source_->rowAt(offsetAt(event->pos()));
    const std::string_view bytes = source_->row(row);
    const std::size_t begin = source_->offsetOf(row);
    const auto isPart = [](char c) {
        return (static_cast<unsigned char>(c) & 0x80U) != 0 || c == '_' || c == '-' ||
               std::isalnum(static_cast<unsigned char>(c)) != 0;
    };
    std::size_t first = std::min(caret_.position - begin, bytes.size());
    std::size_t last = first;
    while (first > 0 && isPart(bytes[first - 1])) {
        --first;
    }
    while (last < bytes.size() && isPart(bytes[last])) {
        ++last;
    }
    caret_ = {begin + first, begin + last};
    viewport()->update();
}

void SourceView::changeEvent(QEvent* event) {
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) {
        dropLayouts();
        updateBars();
        viewport()->update();
    }
}

void SourceView::focusInEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusInEvent(event);
    viewport()->update();
}

void SourceView::focusOutEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusOutEvent(event);
    viewport()->update();
}

}  // namespace vornic
