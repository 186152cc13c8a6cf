#include <QAccessible>
#include <QScrollBar>
#include <algorithm>

#include "app/window/AlignedRows.h"
#include "desktop/QtText.h"
#include "desktop/SourceView.h"

// What a view of source tells screen readers: only what is in view, since a file may be long.

namespace vornic {

SourceView::InView SourceView::inView() const {
    InView view;
    const auto first = static_cast<std::size_t>(verticalScrollBar()->value());
    const std::size_t end = std::min(first + static_cast<std::size_t>(rowsInView()), rowCount());
    for (std::size_t height = first; source_ && height < end; ++height) {
        const std::size_t row = rowAtHeight(height);
        if (row != AlignedRows::kGap) {
            view.rows.emplace_back(static_cast<int>(view.text.size()), row);
            view.text += toQString(source_->row(row)) + u'\n';
        }
    }
    return view;
}

// The byte of the text that an offset of what is in view stands for.
std::size_t SourceView::byteAt(int offset) const {
    const InView view = inView();
    if (view.rows.empty()) {
        return 0;
    }
    const auto next = std::upper_bound(
        view.rows.begin(), view.rows.end(), offset,
        [](int wanted, const std::pair<int, std::size_t>& row) { return wanted < row.first; });
    const auto& [start, row] = *(next == view.rows.begin() ? next : next - 1);
    const QString text = toQString(source_->row(row));
    return source_->offsetOf(row) +
           static_cast<std::size_t>(text.left(offset - start).toUtf8().size());
}

int SourceView::readableOffsetOf(std::size_t byte) const {
    const InView view = inView();
    for (const auto& [start, row] : view.rows) {
        const std::size_t begin = source_->offsetOf(row);
        const std::string_view bytes = source_->row(row);
        if (byte <= begin + bytes.size()) {
            const std::size_t inRow = byte > begin ? byte - begin : 0;
            return start + static_cast<int>(toQString(bytes.substr(0, inRow)).size());
        }
    }
    return static_cast<int>(view.text.size());
}

int SourceView::readableLength() const {
    return static_cast<int>(inView().text.size());
}

QString SourceView::readableText(int start, int end) const {
    return inView().text.mid(start, end - start);
}

int SourceView::readableCursor() const {
    return readableOffsetOf(caret_.position);
}

void SourceView::setReadableCursor(int offset) {
    if (source_) {
        moveTo(byteAt(offset), false);
    }
}

ReadableText::Run SourceView::readableSelection() const {
    const TextSpan selected = selection();
    return {.start = readableOffsetOf(selected.offset),
            .end = readableOffsetOf(selected.offset + selected.length)};
}

void SourceView::selectReadable(int start, int end) {
    if (source_) {
        const std::size_t last = byteAt(end);
        moveTo(byteAt(start), false);
        moveTo(last, true);
    }
}

// A finding, or what lies between two of them.
ReadableText::Run SourceView::readableRunAt(int offset) const {
    const std::size_t byte = byteAt(offset);
    Run run{.start = 0, .end = readableLength()};
    for (const SourceMark& mark : marks_) {
        const std::size_t end = mark.span.offset + mark.span.length;
        if (byte < mark.span.offset) {
            run.end = std::min(run.end, readableOffsetOf(mark.span.offset));
            break;
        }
        if (byte < end) {
            return {.start = readableOffsetOf(mark.span.offset),
                    .end = readableOffsetOf(end),
                    .isFault = mark.severity != Severity::info};
        }
        run.start = std::max(run.start, readableOffsetOf(end));
    }
    return run;
}

QRect SourceView::readableArea(int offset) const {
    const InView view = inView();
    const int row = static_cast<int>(view.text.left(offset).count(u'\n'));
    const QPoint place(gutterWidth(), row * rowHeight());
    return {viewport()->mapToGlobal(place), QSize(fontMetrics().averageCharWidth(), rowHeight())};
}

int SourceView::readableOffsetAt(QPoint screen) const {
    const InView view = inView();
    const int down = std::max(0, viewport()->mapFromGlobal(screen).y()) / rowHeight();
    const auto row =
        std::min(static_cast<std::size_t>(down), view.rows.empty() ? 0 : view.rows.size() - 1);
    return view.rows.empty() ? 0 : view.rows[row].first;
}

void SourceView::tellReaders() {
    if (QAccessible::isActive()) {
        QAccessibleTextCursorEvent event(this, readableCursor());
        QAccessible::updateAccessibility(&event);
    }
}

}  // namespace vornic
