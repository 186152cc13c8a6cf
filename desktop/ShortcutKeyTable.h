#ifndef VORNIC_DESKTOP_SHORTCUT_KEY_TABLE_H
#define VORNIC_DESKTOP_SHORTCUT_KEY_TABLE_H

#include <QTableView>
#include <functional>
#include <utility>

#include "desktop/ShortcutKeyCapture.h"
#include "desktop/ShortcutKeyModel.h"
#include "ui/shortcuts/QMShortcutKeyTableview.h"

namespace vornic {

/// The table of the commands and their shortcuts. A double click, Return, Space or F2 begins to
/// take the keys of a new shortcut for the row; the delete keys clear it.
class ShortcutKeyTable : public QTableView, public QMShortcutKeyTableview {
  public:
    explicit ShortcutKeyTable(QWidget* parent);
    ~ShortcutKeyTable() override;
    ShortcutKeyTable(const ShortcutKeyTable&) = delete;
    ShortcutKeyTable& operator=(const ShortcutKeyTable&) = delete;

    void reloadData() override;
    [[nodiscard]] std::optional<std::size_t> selectedRow() const override;
    void setEditingEnabled(bool enabled);
    /// Who is told when a shortcut is to be changed and none can be.
    void setRefusal(std::function<void()> refuse) { refuse_ = std::move(refuse); }
    /// Waits for the keys of the selected row's new shortcut.
    void beginCapture();
    /// Takes the capture out of its cell and hands on what has come of it.
    void endCapture(ShortcutKeyCapture& capture, const ShortcutKeyCapture::Outcome& outcome);

    [[nodiscard]] QSize sizeHint() const override;

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    [[nodiscard]] int heightOfRows(int rows) const;

    ShortcutKeyModel model_;
    std::function<void()> refuse_;
};

}  // namespace vornic

#endif
