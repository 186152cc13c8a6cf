#ifndef VORNIC_DESKTOP_SHORTCUT_KEYS_PANE_H
#define VORNIC_DESKTOP_SHORTCUT_KEYS_PANE_H

#include <QLabel>
#include <QPushButton>
#include <QWidget>

#include "desktop/ShortcutKeyTable.h"
#include "ui/shortcuts/ShortcutKeyPane.h"

namespace vornic {

/// The pane of the shortcut keys: the table, what can be done with it, and what there is to say.
class ShortcutKeysPane : public QWidget, public ShortcutKeyPane {
  public:
    explicit ShortcutKeysPane(QWidget* parent);

    [[nodiscard]] QMShortcutKeyTableview& tableView() override { return *table_; }
    void setManagerNoticeHidden(bool hidden) override;
    void setEditingEnabled(bool enabled) override;
    void showConflicts(std::string_view text) override;
    void showFailure(std::string_view text) override;

  private:
    void tellMissingManager();

    ShortcutKeyTable* table_;
    QLabel* notice_;
    QLabel* conflicts_;
    QLabel* failure_;
    QPushButton* change_;
    QPushButton* clear_;
    bool isEditingEnabled_ = true;
};

}  // namespace vornic

#endif
