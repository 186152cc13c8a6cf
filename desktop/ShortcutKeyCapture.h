#ifndef VORNIC_DESKTOP_SHORTCUT_KEY_CAPTURE_H
#define VORNIC_DESKTOP_SHORTCUT_KEY_CAPTURE_H

#include <QLineEdit>
#include <functional>
#include <optional>

#include "ui/shortcuts/ShortcutKey.h"

namespace vornic {

/// The editor in a cell: takes the next key that is pressed, with what is held. Escape, Tab and the
/// delete keys alone are no shortcuts here: they leave the cell and clear it. While it has the
/// focus no key does anything else, as far as the display allows that.
class ShortcutKeyCapture : public QLineEdit {
  public:
    /// What the user has done, told once.
    struct Outcome {
        std::optional<ShortcutKey> key;
        bool isCleared = false;
    };

    using DidEnd = std::function<void(ShortcutKeyCapture& capture, const Outcome& outcome)>;

    /// @param didEnd told the outcome; one without a key that is not cleared changes nothing.
    ShortcutKeyCapture(QWidget* parent, DidEnd didEnd);
    ~ShortcutKeyCapture() override;
    ShortcutKeyCapture(const ShortcutKeyCapture&) = delete;
    ShortcutKeyCapture& operator=(const ShortcutKeyCapture&) = delete;

  protected:
    bool event(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    void take(const QKeyEvent& event);
    void end(const Outcome& outcome);
    void releaseKeys();

    DidEnd didEnd_;
    bool hasKeys_ = false;
};

}  // namespace vornic

#endif
