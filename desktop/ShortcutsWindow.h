#ifndef VORNIC_DESKTOP_SHORTCUTS_WINDOW_H
#define VORNIC_DESKTOP_SHORTCUTS_WINDOW_H

#include <QDialog>
#include <QMainWindow>

namespace vornic {

/// Lists the keys of a window: those of its menus, and those that every window has.
class ShortcutsWindow : public QDialog {
  public:
    /// @param window whose menus are listed; the dialog belongs to it
    explicit ShortcutsWindow(QMainWindow& window);
};

}  // namespace vornic

#endif
