#ifndef VORNIC_PLATFORM_VOLUMES_TRASH_H
#define VORNIC_PLATFORM_VOLUMES_TRASH_H

#include <optional>
#include <string>

#include "base/Error.h"
#include "platform/files/FileDescriptor.h"
#include "platform/rights/HeldPath.h"

namespace vornic::platform {

/// Where an item lies in the Trash.
struct TrashedItem {
    /// The folder that holds it, links resolved.
    std::string folder;
    std::string name;

    [[nodiscard]] std::string path() const;
};

/// The user's Trash, found once and held open: whatever is put in its place later, this object goes
/// on with the folder that it has looked at.
///
/// Where nothing stands at the place of the Trash in the user's own home folder, it is made as a
/// link to the desktop's (`$XDG_DATA_HOME/Trash/files`), so that file managers show and restore
/// what is in it. Elsewhere, in a sandbox, in another user's home, and where the desktop's Trash is
/// not the user's alone, it is made as a plain folder of mode 0700. A folder that is there is used
/// as it is. A link counts when link and target belong to the caller and the target has mode 0700;
/// any other is a Trash that cannot be used.
///
/// An item in the desktop's Trash has a file with its former place and the date, as the Trash
/// standard 1.0 of freedesktop.org wants it.
///
/// Any thread; one object may be used by several.
class Trash {
  public:
    /// Opens the Trash at an absolute path, and makes it when it is missing.
    /// @return nothing, with the slot filled, when it cannot be used.
    [[nodiscard]] static std::optional<Trash> open(const std::string& path, ErrorSlot& error);

    /// The folder of the items, links resolved.
    [[nodiscard]] const std::string& folder() const { return folder_; }
    /// The same folder, open for calls that take the folder of an entry. Not for reading.
    [[nodiscard]] int descriptor() const { return items_.get(); }

    /// Moves an entry (a file, a link itself, a folder) into the Trash. A name that is taken there
    /// gets a number before its extension ("Cut 2.xml"). On another volume it is copied, read back
    /// and compared before the original is removed.
    /// @param item where the entry is now
    /// @param originalName what it was called in that folder: its name in the Trash, and the one
    ///     under which a file manager restores it
    /// @return nothing, with the slot filled, when it is still in its place; the Trash is then as
    ///     it was.
    [[nodiscard]] std::optional<TrashedItem> take(const HeldPath& item,
                                                  const std::string& originalName,
                                                  ErrorSlot& error) const;

    /// For moves that another process makes: notes where the item will come from, before it is
    /// moved to that name.
    /// @param originalPath absolute, links in its folders resolved
    /// @return 0, EEXIST when an item of that name has such a note already, or the errno value.
    ///     0 where the Trash is a plain folder, which has no notes.
    [[nodiscard]] int addInfo(const std::string& name, const std::string& originalPath) const;
    /// Takes the note away: the item has left the Trash, or has not come into it. Nothing is told
    /// of a failure: a note without an item is shown nowhere.
    void removeInfo(const std::string& name) const;
    /// Writes the note anew, for another item that has taken the place of the one it was about.
    /// @return 0 or the errno value; the old note stays on failure.
    [[nodiscard]] int replaceInfo(const std::string& name, const std::string& originalPath) const;

  private:
    Trash() = default;

    FileDescriptor items_;
    // The folder of the notes; none beside a plain folder.
    FileDescriptor info_;
    std::string folder_;
};

}  // namespace vornic::platform

#endif
