#ifndef VORNIC_DESKTOP_READABLE_TEXT_H
#define VORNIC_DESKTOP_READABLE_TEXT_H

#include <QPoint>
#include <QRect>
#include <QString>

namespace vornic {

/// What a view of text reports to screen readers. Offsets count UTF-16 units of `readableText`.
/// Main thread.
class ReadableText {
  public:
    virtual ~ReadableText() = default;

    /// A part of the text that is marked, or is not, as a whole.
    struct Run {
        int start = 0;
        int end = 0;
        /// Something is wrong there.
        bool isFault = false;
        bool isBold = false;
    };

    [[nodiscard]] virtual int readableLength() const = 0;
    [[nodiscard]] virtual QString readableText(int start, int end) const = 0;
    [[nodiscard]] virtual int readableCursor() const = 0;
    virtual void setReadableCursor(int offset) = 0;
    /// The selection; start and end are the same for none.
    [[nodiscard]] virtual Run readableSelection() const = 0;
    virtual void selectReadable(int start, int end) = 0;
    /// Around an offset.
    [[nodiscard]] virtual Run readableRunAt(int offset) const = 0;
    /// On the screen.
    [[nodiscard]] virtual QRect readableArea(int offset) const = 0;
    [[nodiscard]] virtual int readableOffsetAt(QPoint screen) const = 0;
};

/// Lets the widgets that are `ReadableText` tell screen readers so. Once in a program, before any
/// of them is made.
void installReadableTexts();

}  // namespace vornic

#endif
