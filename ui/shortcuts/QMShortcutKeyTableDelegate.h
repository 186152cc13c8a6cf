#ifndef VORNIC_UI_SHORTCUTS_QM_SHORTCUT_KEY_TABLE_DELEGATE_H
#define VORNIC_UI_SHORTCUTS_QM_SHORTCUT_KEY_TABLE_DELEGATE_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/settings/PropertyList.h"
#include "ui/shortcuts/QMShortcutKeyContainerView.h"
#include "ui/shortcuts/QMShortcutKeyFieldEditor.h"
#include "ui/shortcuts/ShortcutWatchList.h"

namespace vornic {

/// Owns the data of the table of shortcuts: the commands of "QMKeys.plist" and the keys that the
/// watch list has for them. What the user changes is written to the watch list at once, and the
/// shortcut key manager is told. Nothing raises to the caller; failures are reported on the console
/// and in the log, and in the pane. Main thread only.
class QMShortcutKeyTableDelegate {
  public:
    using Text = std::optional<std::string>;
    using Params = std::optional<platform::PropertyList::Array>;
    using UserInfo = NotificationCenter::UserInfo;

    /// Posted by the field editor, with `ShortcutKey::userInfo`.
    static constexpr const char* kChangedNotification = "QMShortcutKeyChanged";
    /// Posted by the table for the delete key.
    static constexpr const char* kClearedNotification = "QMShortcutKeyCleared";
    /// Posted when the watch list has been written, before the manager is run.
    static constexpr const char* kReloadNotification = "QMShortcutKeysReload";

    /// The one instance, made on first use and never destroyed.
    static QMShortcutKeyTableDelegate& sharedController();
    QMShortcutKeyTableDelegate(const QMShortcutKeyTableDelegate&) = delete;
    QMShortcutKeyTableDelegate& operator=(const QMShortcutKeyTableDelegate&) = delete;

    /// The view whose pane shows the data; null when there is none.
    [[nodiscard]] QMShortcutKeyContainerView* parentView() const { return parentView_; }
    void setParentView(QMShortcutKeyContainerView* view) { parentView_ = view; }

    /// Takes the pane of the parent view into use: makes the field editor, observes what field
    /// editor and table post, and fills the table.
    void awakeFromNib();
    /// Reads the commands and their shortcuts anew and shows them. Without the shortcut key manager
    /// nothing can be edited, and the pane says so.
    void populateKeyData();

    [[nodiscard]] std::size_t numberOfRowsInTableView() const { return rows_.size(); }
    /// The text of a row under "id", "description" or "keyname"; nothing when it has none.
    [[nodiscard]] Text tableViewObjectValueForTableColumn(std::string_view column,
                                                          std::size_t row) const;
    /// Fills the cell with what it is to show for the row.
    void tableViewWillDisplayCell(QMShortcutKeyTextCell& cell, std::string_view column,
                                  std::size_t row) const;
    /// The editor of the cells with shortcuts; null before `awakeFromNib`.
    [[nodiscard]] QMShortcutKeyFieldEditor* customFieldEditor() const { return editor_.get(); }

    /// What the command to clear does: `keyCleared`.
    void clearShortcutKey();
    /// Gives the selected row the key. A list that cannot be written leaves it the old one.
    void keyChanged(const UserInfo& userInfo);
    /// Takes the selected row's key away, likewise.
    void keyCleared(const UserInfo& userInfo);

    /// Writes one assignment to the watch list, in the place of the command's former ones, posts
    /// "QMShortcutKeysReload" and has the manager load the list. The command is named by its id, by
    /// its parameters or by both.
    /// @return false when the list could not be written or no command is named.
    bool setKeyboardShortcutWithID(const Text& commandId, const Params& params,
                                   std::uint32_t keycode, bool shift, bool cmd, bool opt,
                                   bool ctrl);

    /// A shortcut as it is shown, such as "Ctrl+Shift+F5", in the layout that is in use now.
    /// @param modifiers bits of `ShortcutKey`
    /// @return nothing when the key has no name.
    [[nodiscard]] static Text nameForKeyCode(std::uint32_t keyCode, std::uint16_t modifiers);
    /// What a key produces in the layout that is in use now, or its name when that is no text.
    [[nodiscard]] static Text stringForKeyCode(std::uint32_t keyCode,
                                               std::uint16_t withModifierFlags);

  private:
    /// A command of "QMKeys.plist", to which "keyname" and "shortcutkey" are added.
    using Row = platform::PropertyList::Dictionary;

    QMShortcutKeyTableDelegate() = default;

    [[nodiscard]] ShortcutKeyPane* pane() const;
    [[nodiscard]] Row* rowWithId(std::string_view id);
    [[nodiscard]] Row* selectedRow();
    [[nodiscard]] std::map<std::string, std::vector<std::size_t>> rowsByKey() const;
    std::string findConflicts();
    void readShortcuts();
    void show();
    bool finishChange(bool isWritten, const ErrorSlot& error);

    QMShortcutKeyContainerView* parentView_ = nullptr;
    std::unique_ptr<QMShortcutKeyFieldEditor> editor_;
    std::vector<std::unique_ptr<NotificationCenter::Observation>> observations_;
    std::vector<Row> rows_;
    /// The rows that share their shortcut with another.
    std::set<std::size_t> conflictingRows_;
};

}  // namespace vornic

#endif
