#ifndef VORNIC_UI_SHORTCUTS_QM_SHORTCUT_KEY_TABLEVIEW_H
#define VORNIC_UI_SHORTCUTS_QM_SHORTCUT_KEY_TABLEVIEW_H

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "ui/shortcuts/QMShortcutKeyTextCell.h"

namespace vornic {

/// The table of the commands and their shortcuts, with the columns "description" and "keyname".
/// Drawn elsewhere; its data are the `QMShortcutKeyTableDelegate`'s. Main thread only.
class QMShortcutKeyTableview {
  public:
    QMShortcutKeyTableview() = default;
    virtual ~QMShortcutKeyTableview() = default;
    QMShortcutKeyTableview(const QMShortcutKeyTableview&) = delete;
    QMShortcutKeyTableview& operator=(const QMShortcutKeyTableview&) = delete;

    /// Draws all rows anew.
    virtual void reloadData() = 0;
    [[nodiscard]] virtual std::optional<std::size_t> selectedRow() const = 0;

    /// The cell of a column, made on first use.
    [[nodiscard]] QMShortcutKeyTextCell& dataCell(const std::string& column) {
        return cells_[column];
    }
    /// Posts "QMShortcutKeyCleared" for the delete key, whichever of the two (Backspace, Delete).
    /// @param characters what the key produces
    /// @return false for every other key, which the table is to take as usual.
    bool keyDown(std::string_view characters);

  private:
    std::map<std::string, QMShortcutKeyTextCell> cells_;
};

}  // namespace vornic

#endif
