#ifndef VORNIC_UI_SHORTCUTS_SHORTCUT_KEY_PANE_H
#define VORNIC_UI_SHORTCUTS_SHORTCUT_KEY_PANE_H

#include <string>
#include <string_view>

#include "ui/shortcuts/QMShortcutKeyTableview.h"

namespace vornic {

/// The pane of the shortcut keys, as its interface file makes it. Drawn elsewhere; main thread
/// only.
class ShortcutKeyPane {
  public:
    virtual ~ShortcutKeyPane() = default;
    [[nodiscard]] virtual QMShortcutKeyTableview& tableView() = 0;
    /// The notice that the shortcut key manager is missing.
    virtual void setManagerNoticeHidden(bool hidden) = 0;
    /// Without it, no shortcut can be changed or cleared.
    virtual void setEditingEnabled(bool enabled) = 0;
    /// Shows which shortcuts are in conflict, in words; "" for none.
    virtual void showConflicts(std::string_view text) = 0;
    /// Shows why the shortcuts could not be read or changed; "" when they could.
    virtual void showFailure(std::string_view text) = 0;
};

/// Makes panes from interface files, for the view that they are to fill. Main thread only.
class ShortcutKeyInterface {
  public:
    virtual ~ShortcutKeyInterface() = default;
    /// @return null when there is no interface file of that name. The pane outlives the view.
    [[nodiscard]] virtual ShortcutKeyPane* loadInterface(const std::string& name) = 0;
    /// Adds the pane to the view, with the view's size.
    virtual void addFilling(ShortcutKeyPane& pane) = 0;
};

}  // namespace vornic

#endif
