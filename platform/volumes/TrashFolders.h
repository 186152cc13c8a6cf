#ifndef VORNIC_PLATFORM_VOLUMES_TRASH_FOLDERS_H
#define VORNIC_PLATFORM_VOLUMES_TRASH_FOLDERS_H

#include <string>

#include "base/Error.h"
#include "platform/files/FileDescriptor.h"

namespace vornic::platform {

/// The folders that a Trash consists of, open for calls that take the folder of an entry.
struct TrashFolders {
    FileDescriptor items;
    /// Where the desktop keeps a note about each item; closed when the Trash is a plain folder.
    FileDescriptor info;
    /// The path of `items`, links resolved.
    std::string path;
};

/// Finds the Trash at an absolute path, and makes it when nothing stands there; `Trash` says how.
/// @return false, with the slot filled, when it cannot be used.
[[nodiscard]] bool openTrashFolders(const std::string& path, TrashFolders& folders,
                                    ErrorSlot& error);

}  // namespace vornic::platform

#endif
