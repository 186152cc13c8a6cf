#ifndef VORNIC_UI_SHORTCUTS_SHORTCUT_WATCH_LIST_H
#define VORNIC_UI_SHORTCUTS_SHORTCUT_WATCH_LIST_H

#include <optional>
#include <string>

#include "base/Error.h"
#include "platform/settings/PropertyList.h"
#include "ui/shortcuts/ShortcutKey.h"

namespace vornic {

/// The list of the keys that the shortcut key manager waits for, which all applications of the
/// family share: "com.quillmark.shortcutkeys.plist" in the user's Preferences folder. It is read
/// anew on every use and written atomically; writers exclude each other through a lock file beside
/// it, so that none loses another's entry. Whatever else stands in it is kept; a list with values
/// that could not be kept is not written. Any thread.
class ShortcutWatchList {
  public:
    using Array = platform::PropertyList::Array;

    /// What an entry is for: a command of an application, by its id or by its parameters or both.
    struct Command {
        std::string bundleId;
        std::optional<std::string> id;
        std::optional<Array> params;
    };

    /// The file, which need not exist; nothing when the user has no Preferences folder.
    [[nodiscard]] static std::optional<std::string> path();
    /// All entries; none when the list is missing.
    /// @return nothing, with the slot filled, when it cannot be read or is damaged.
    [[nodiscard]] static std::optional<Array> entries(ErrorSlot& error);

    /// Puts an entry for the command at the end of the list, in the place of all that it had. An
    /// entry is the command's when the ids are equal or, for a command without an id, the
    /// parameters. A damaged list is kept under a name of its own, reported in the log, before a
    /// new one is begun.
    /// @return false, with the slot filled, when the list could not be written; it is then as it
    ///     was.
    [[nodiscard]] static bool assign(const Command& command, const ShortcutKey& key,
                                     ErrorSlot& error);
    /// Takes the entries of the command away, likewise.
    [[nodiscard]] static bool remove(const Command& command, ErrorSlot& error);
};

}  // namespace vornic

#endif
