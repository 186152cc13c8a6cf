#ifndef VORNIC_DESKTOP_SOURCE_VIEW_H
#define VORNIC_DESKTOP_SOURCE_VIEW_H

#include <QAbstractScrollArea>
#include <QCache>
#include <QTextLayout>
#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "app/window/FindingsTable.h"
#include "app/window/SourceText.h"
#include "desktop/FindStep.h"
#include "desktop/ReadableText.h"

namespace vornic {

/// A text to be read: numbered, coloured, with the findings marked. Only what is in view is laid
/// out, so that a text of any length is shown at once. It can be selected and copied. Main thread.
class SourceView : public QAbstractScrollArea, public ReadableText {
  public:
    SourceView(const QString& accessibleName, QWidget* parent);

    /// Shows a text from its beginning (null: nothing).
    void setSource(std::shared_ptr<const SourceText> source);
    [[nodiscard]] const std::shared_ptr<const SourceText>& source() const { return source_; }
    /// Marks findings. @param marks of the text, in its order
    void setMarks(std::vector<SourceMark> marks);
    /// Shows these rows of the text instead of all, `AlignedRows::kGap` for an empty one.
    /// @param isChanged which of them have a ground of their own
    void setRows(std::vector<std::size_t> rows, std::vector<bool> isChanged);

    /// Goes to a line, in the middle of the view, and selects it. @param line from 1
    void showLine(std::size_t line);
    /// Selects a part of the text and shows it.
    void showSpan(TextSpan span);
    /// The line of the cursor, from 1.
    [[nodiscard]] std::size_t currentLine() const;
    [[nodiscard]] QString selectedText() const;
    void copy();
    void selectAll();
    /// Selects the next place of a text, from the selection on and then from the other end.
    /// @return false when it is nowhere.
    bool findText(const QString& text, FindStep step);

    // Screen readers read the rows in view.
    [[nodiscard]] int readableLength() const override;
    [[nodiscard]] QString readableText(int start, int end) const override;
    [[nodiscard]] int readableCursor() const override;
    void setReadableCursor(int offset) override;
    [[nodiscard]] Run readableSelection() const override;
    void selectReadable(int start, int end) override;
    [[nodiscard]] Run readableRunAt(int offset) const override;
    [[nodiscard]] QRect readableArea(int offset) const override;
    [[nodiscard]] int readableOffsetAt(QPoint screen) const override;

    /// How many rows are kept as they were laid out.
    [[nodiscard]] qsizetype laidOutRows() const { return layouts_.size(); }

    /// Called when the cursor has come to another line.
    void setLineChanged(std::function<void()> changed) { lineChanged_ = std::move(changed); }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

  private:
    // A place in the text: a byte.
    struct Caret {
        std::size_t anchor = 0;
        std::size_t position = 0;
    };

    [[nodiscard]] std::size_t rowCount() const;
    // The row of the text at a height, or `AlignedRows::kGap`.
    [[nodiscard]] std::size_t rowAtHeight(std::size_t height) const;
    [[nodiscard]] std::size_t heightOfRow(std::size_t row) const;
    [[nodiscard]] QTextLayout* layoutOf(std::size_t row);
    [[nodiscard]] int rowHeight() const;
    [[nodiscard]] int gutterWidth() const;
    [[nodiscard]] int rowsInView() const;
    [[nodiscard]] std::size_t offsetAt(QPoint point);
    [[nodiscard]] TextSpan selection() const;
    void paintRow(QPainter& painter, std::size_t height, int top);
    void paintGutter(QPainter& painter, std::size_t row, int top);
    void updateBars();
    void moveTo(std::size_t offset, bool selects);
    void tellReaders();
    // The rows in view as one text.
    struct InView {
        QString text;
        // Where in it each row begins, and which one that is.
        std::vector<std::pair<int, std::size_t>> rows;
    };
    [[nodiscard]] InView inView() const;
    [[nodiscard]] std::size_t byteAt(int offset) const;
    [[nodiscard]] int readableOffsetOf(std::size_t byte) const;
    void moveByRows(std::ptrdiff_t rows, bool selects);
    void ensureVisible(bool inTheMiddle);
    void dropLayouts();

    std::shared_ptr<const SourceText> source_;
    std::vector<SourceMark> marks_;
    bool hasRows_ = false;
    std::vector<std::size_t> rows_;
    std::vector<bool> isChanged_;
    // The longest row, in bytes.
    std::size_t longest_ = 0;
    QCache<std::size_t, QTextLayout> layouts_;
    Caret caret_;
    // Where the cursor stays when it moves by lines.
    qreal wantedX_ = -1;
    std::size_t toldLine_ = 0;
    std::function<void()> lineChanged_;
};

}  // namespace vornic

#endif
