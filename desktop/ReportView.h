#ifndef VORNIC_DESKTOP_REPORT_VIEW_H
#define VORNIC_DESKTOP_REPORT_VIEW_H

#include <QPlainTextEdit>
#include <QTextBlock>
#include <QTimer>
#include <string>
#include <string_view>
#include <vector>

#include "desktop/FindStep.h"
#include "desktop/ReadableText.h"

namespace vornic {

/// The report of a document (`infoText`): entries set apart by an empty line, red when they report
/// an error. It is read, copied and searched like any text and stays quick with some hundred
/// thousand entries.
class ReportView : public QPlainTextEdit, public ReadableText {
  public:
    explicit ReportView(QWidget* parent);

    /// Puts text at the end, on the screen within a fiftieth of a second. While the end is in view
    /// it stays there.
    void append(std::string_view text, bool isError, bool isBold);
    /// Takes all text away.
    void clearReport();
    [[nodiscard]] bool isEmpty() const { return waiting_.empty() && document()->isEmpty(); }
    /// Puts what has been appended into the text now.
    void flush();

    /// Selects the next place of a text, upper and lower case alike, from the selection on, and
    /// from the other end when there is none. @return false when it is nowhere.
    bool findText(const QString& text, FindStep step);

    [[nodiscard]] int readableLength() const override;
    [[nodiscard]] QString readableText(int start, int end) const override;
    [[nodiscard]] int readableCursor() const override;
    void setReadableCursor(int offset) override;
    [[nodiscard]] Run readableSelection() const override;
    void selectReadable(int start, int end) override;
    [[nodiscard]] Run readableRunAt(int offset) const override;
    [[nodiscard]] QRect readableArea(int offset) const override;
    [[nodiscard]] int readableOffsetAt(QPoint screen) const override;

  protected:
    void changeEvent(QEvent* event) override;

  private:
    // An entry that has yet to be put into the text: a change of the text makes the view measure
    // what it shows, which is done once for many entries.
    struct Entry {
        std::string text;
        bool isError;
        bool isBold;
    };

    void insert(QTextCursor& cursor, const Entry& entry);
    void recolorErrors();
    void recolorSome();
    // @param block the first one; the ones after it up to the count follow.
    void recolor(QTextBlock block, int count);

    std::vector<Entry> waiting_;
    QTimer clock_;
    // After the palette has changed: the first block that may still have the old colour.
    int nextToRecolor_ = 0;
    QTimer recolorClock_;
};

}  // namespace vornic

#endif
