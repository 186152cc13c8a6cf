#ifndef VORNIC_DESKTOP_SHORTCUT_KEY_MODEL_H
#define VORNIC_DESKTOP_SHORTCUT_KEY_MODEL_H

#include <QAbstractTableModel>

#include "ui/shortcuts/QMShortcutKeyTableview.h"

namespace vornic {

/// The rows of the shared `QMShortcutKeyTableDelegate` as the toolkit's tables take them.
class ShortcutKeyModel : public QAbstractTableModel {
  public:
    enum Column { descriptionColumn, keyColumn, columnCountOfAll };

    /// @param table whose cells are filled; must outlive the model.
    explicit ShortcutKeyModel(QMShortcutKeyTableview& table) : table_(table) {}

    /// Takes over what the controller has now.
    void reload();
    void setEditingEnabled(bool enabled) { isEditingEnabled_ = enabled; }
    [[nodiscard]] bool isEditingEnabled() const { return isEditingEnabled_; }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

  private:
    [[nodiscard]] QMShortcutKeyTextCell& cellAt(const QModelIndex& index) const;

    QMShortcutKeyTableview& table_;
    int rows_ = 0;
    bool isEditingEnabled_ = false;
};

}  // namespace vornic

#endif
