#ifndef VORNIC_UI_SHORTCUTS_QM_SHORTCUT_KEY_TEXT_CELL_H
#define VORNIC_UI_SHORTCUTS_QM_SHORTCUT_KEY_TEXT_CELL_H

#include <string>
#include <utility>

namespace vornic {

/// What the table draws in a place: one cell serves all rows of a column, filled before each is
/// drawn. Main thread only.
class QMShortcutKeyTextCell {
  public:
    [[nodiscard]] const std::string& stringValue() const { return stringValue_; }
    void setStringValue(std::string text) { stringValue_ = std::move(text); }
    /// A leaf shows its text alone and has no editor.
    [[nodiscard]] bool isLeaf() const { return isLeaf_; }
    void setLeaf(bool leaf) { isLeaf_ = leaf; }
    /// The shortcut of the row is that of another row, too.
    [[nodiscard]] bool isConflicting() const { return isConflicting_; }
    void setConflicting(bool conflicting) { isConflicting_ = conflicting; }

  private:
    std::string stringValue_;
    bool isLeaf_ = false;
    bool isConflicting_ = false;
};

}  // namespace vornic

#endif
