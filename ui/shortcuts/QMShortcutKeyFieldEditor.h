#ifndef VORNIC_UI_SHORTCUTS_QM_SHORTCUT_KEY_FIELD_EDITOR_H
#define VORNIC_UI_SHORTCUTS_QM_SHORTCUT_KEY_FIELD_EDITOR_H

#include "ui/shortcuts/ShortcutKey.h"

namespace vornic {

class QMShortcutKeyTableDelegate;

/// The editor of a cell that holds a shortcut: it takes a press of a key in place of text. Main
/// thread only.
class QMShortcutKeyFieldEditor {
  public:
    /// @param delegate must outlive the editor.
    explicit QMShortcutKeyFieldEditor(QMShortcutKeyTableDelegate& delegate) : delegate_(delegate) {}

    [[nodiscard]] QMShortcutKeyTableDelegate& delegate() const { return delegate_; }
    /// Posts "QMShortcutKeyChanged" with the key. Keys that are only held with others, such as
    /// Shift, are none.
    void keyDown(const ShortcutKey& key);

  private:
    QMShortcutKeyTableDelegate& delegate_;
};

}  // namespace vornic

#endif
