#ifndef VORNIC_UI_SHORTCUTS_QM_SHORTCUT_KEY_CONTAINER_VIEW_H
#define VORNIC_UI_SHORTCUTS_QM_SHORTCUT_KEY_CONTAINER_VIEW_H

#include "ui/shortcuts/ShortcutKeyPane.h"

namespace vornic {

/// The place in a window that the pane of the shortcut keys fills. There is one at a time. Main
/// thread only.
class QMShortcutKeyContainerView {
  public:
    /// Loads the interface file "QMShortcutKeyConfig", adds its pane and has the
    /// `QMShortcutKeyTableDelegate` fill it. A failure is logged.
    explicit QMShortcutKeyContainerView(ShortcutKeyInterface& interface);
    ~QMShortcutKeyContainerView();
    QMShortcutKeyContainerView(const QMShortcutKeyContainerView&) = delete;
    QMShortcutKeyContainerView& operator=(const QMShortcutKeyContainerView&) = delete;

    /// Null when it could not be loaded.
    [[nodiscard]] ShortcutKeyPane* pane() const { return pane_; }

  private:
    ShortcutKeyPane* pane_;
};

}  // namespace vornic

#endif
