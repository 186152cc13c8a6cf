#ifndef VORNIC_DESKTOP_SHORTCUT_KEYS_VIEW_H
#define VORNIC_DESKTOP_SHORTCUT_KEYS_VIEW_H

#include <QWidget>

#include "ui/shortcuts/QMShortcutKeyContainerView.h"

namespace vornic {

/// The place of the pane of the shortcut keys in a window.
class ShortcutKeysView : public QWidget, public ShortcutKeyInterface {
  public:
    explicit ShortcutKeysView(QWidget* parent);

    [[nodiscard]] ShortcutKeyPane* loadInterface(const std::string& name) override;
    void addFilling(ShortcutKeyPane& pane) override;

  private:
    QMShortcutKeyContainerView container_;
};

}  // namespace vornic

#endif
