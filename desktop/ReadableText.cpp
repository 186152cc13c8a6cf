#include "desktop/ReadableText.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QWidget>
#include <algorithm>

namespace vornic {

namespace {

class ReadableWidget : public QAccessibleWidget, public QAccessibleTextInterface {
  public:
    ReadableWidget(QWidget* widget, ReadableText& text)
        : QAccessibleWidget(widget, QAccessible::EditableText), text_(text) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::TextInterface ? static_cast<QAccessibleTextInterface*>(this)
                                                  : QAccessibleWidget::interface_cast(type);
    }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.readOnly = true;
        state.multiLine = true;
        state.selectableText = true;
        return state;
    }

    void selection(int index, int* start, int* end) const override {
        const ReadableText::Run selected = text_.readableSelection();
        *start = index == 0 ? selected.start : 0;
        *end = index == 0 ? selected.end : 0;
    }
    [[nodiscard]] int selectionCount() const override {
        const ReadableText::Run selected = text_.readableSelection();
        return selected.start != selected.end ? 1 : 0;
    }
    void addSelection(int start, int end) override { setSelection(0, start, end); }
    void removeSelection(int /*index*/) override { setCursorPosition(cursorPosition()); }
    void setSelection(int index, int start, int end) override {
        if (index == 0) {
            text_.selectReadable(inside(start), inside(end));
        }
    }
    [[nodiscard]] int cursorPosition() const override { return text_.readableCursor(); }
    void setCursorPosition(int position) override { text_.setReadableCursor(inside(position)); }
    [[nodiscard]] QString text(int start, int end) const override {
        return start < end ? text_.readableText(inside(start), inside(end)) : QString();
    }
    using QAccessibleWidget::text;
    [[nodiscard]] int characterCount() const override { return text_.readableLength(); }
    [[nodiscard]] QRect characterRect(int offset) const override {
        return text_.readableArea(inside(offset));
    }
    [[nodiscard]] int offsetAtPoint(const QPoint& point) const override {
        return text_.readableOffsetAt(point);
    }
    void scrollToSubstring(int start, int /*end*/) override { setCursorPosition(start); }
    QString attributes(int offset, int* start, int* end) const override {
        const ReadableText::Run run = text_.readableRunAt(inside(offset));
        *start = run.start;
        *end = run.end;
        QString attributes;
        if (run.isFault) {
            attributes += QStringLiteral("invalid:true;");
        }
        if (run.isBold) {
            attributes += QStringLiteral("font-weight:bold;");
        }
        return attributes;
    }

  private:
    [[nodiscard]] int inside(int offset) const {
        return std::clamp(offset, 0, text_.readableLength());
    }

    ReadableText& text_;
};

QAccessibleInterface* makeReadable(const QString& /*className*/, QObject* object) {
    auto* const widget = qobject_cast<QWidget*>(object);
    auto* const text = dynamic_cast<ReadableText*>(object);
    return widget != nullptr && text != nullptr
               ? new ReadableWidget(widget, *text)  // which the toolkit owns
               : nullptr;
}

}  // namespace

void installReadableTexts() {
    QAccessible::installFactory(makeReadable);
}

}  // namespace vornic
