#include "desktop/ShortcutKeyCapture.h"

#include <QApplication>
#include <QKeyEvent>
#include <utility>

namespace vornic {

namespace {

// Keys that switch levels and groups of the layout, for most of which the toolkit has no name: Alt
// and Shift together are such a key where they switch between two layouts.
bool switchesTheLayout(quint32 symbol) {
    constexpr quint32 kFirst = 0xFE01;  // ISO_Lock
    constexpr quint32 kLast = 0xFE13;   // ISO_Level5_Lock
    return symbol >= kFirst && symbol <= kLast;
}

bool isOnlyHeld(const QKeyEvent& event) {
    switch (event.key()) {
        case Qt::Key_Shift:
        case Qt::Key_Control:
        case Qt::Key_Alt:
        case Qt::Key_AltGr:
        case Qt::Key_Meta:
        case Qt::Key_Super_L:
        case Qt::Key_Super_R:
        case Qt::Key_Hyper_L:
        case Qt::Key_Hyper_R:
        case Qt::Key_Mode_switch:
        case Qt::Key_CapsLock:
        case Qt::Key_NumLock:
        case Qt::Key_ScrollLock:
            return true;
        default:
            return switchesTheLayout(event.nativeVirtualKey());
    }
}

Qt::KeyboardModifiers heldWith(const QKeyEvent& event) {
    return event.modifiers() &
           (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
}

bool leavesTheCell(const QKeyEvent& event) {
    const bool isAlone = heldWith(event) == Qt::NoModifier;
    return (isAlone && (event.key() == Qt::Key_Escape || event.key() == Qt::Key_Tab)) ||
           (event.key() == Qt::Key_Backtab && heldWith(event) == Qt::ShiftModifier);
}

bool clearsTheCell(const QKeyEvent& event) {
    return heldWith(event) == Qt::NoModifier &&
           (event.key() == Qt::Key_Delete || event.key() == Qt::Key_Backspace);
}

// On X11 and Wayland the toolkit's scan code is the key code that the display reports.
ShortcutKey keyOf(const QKeyEvent& event) {
    const auto has = [&event](Qt::KeyboardModifier modifier) {
        return event.modifiers().testFlag(modifier);
    };
    return {.keyCode = event.nativeScanCode(),
            .shift = has(Qt::ShiftModifier),
            .cmd = has(Qt::MetaModifier),
            .opt = has(Qt::AltModifier),
            .ctrl = has(Qt::ControlModifier)};
}

}  // namespace

ShortcutKeyCapture::ShortcutKeyCapture(QWidget* parent, DidEnd didEnd)
    : QLineEdit(parent), didEnd_(std::move(didEnd)) {
    setObjectName(QStringLiteral("shortcutKeyCapture"));
    setReadOnly(true);
    setContextMenuPolicy(Qt::NoContextMenu);
    setPlaceholderText(tr("Press the keys, or Escape"));
    setAccessibleName(tr("Press the keys of the shortcut"));
    setAccessibleDescription(tr("Escape leaves it as it is, Delete clears it."));
}

ShortcutKeyCapture::~ShortcutKeyCapture() {
    releaseKeys();
}

bool ShortcutKeyCapture::event(QEvent* event) {
    switch (event->type()) {
        case QEvent::ShortcutOverride:
        case QEvent::KeyRelease:
            event->accept();
            return true;
        case QEvent::KeyPress:
            take(*static_cast<QKeyEvent*>(event));
            event->accept();
            return true;
        default:
            return QLineEdit::event(event);
    }
}

void ShortcutKeyCapture::take(const QKeyEvent& event) {
    if (event.isAutoRepeat() || isOnlyHeld(event)) {
        return;
    }
    if (leavesTheCell(event) || clearsTheCell(event)) {
        end({.key = std::nullopt, .isCleared = clearsTheCell(event)});
    } else if (event.nativeScanCode() != 0) {
        end({.key = keyOf(event), .isCleared = false});
    }
}

void ShortcutKeyCapture::focusInEvent(QFocusEvent* event) {
    QLineEdit::focusInEvent(event);
    // Else the keys of window manager and shortcut key manager would never come here.
    if (!hasKeys_ && QApplication::platformName() == QStringLiteral("xcb")) {
        hasKeys_ = true;
        grabKeyboard();
    }
}

void ShortcutKeyCapture::focusOutEvent(QFocusEvent* event) {
    releaseKeys();
    QLineEdit::focusOutEvent(event);
}

void ShortcutKeyCapture::end(const Outcome& outcome) {
    releaseKeys();
    if (const auto didEnd = std::exchange(didEnd_, nullptr)) {
        didEnd(*this, outcome);
    }
}

void ShortcutKeyCapture::releaseKeys() {
    if (std::exchange(hasKeys_, false)) {
        releaseKeyboard();
    }
}

}  // namespace vornic
