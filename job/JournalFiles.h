#ifndef VORNIC_JOB_JOURNAL_FILES_H
#define VORNIC_JOB_JOURNAL_FILES_H

#include <optional>
#include <string>

#include "base/Error.h"
#include "job/JournalEntry.h"

/// Telling the files apart that the journal speaks of. Any thread.
namespace vornic {

/// What stands at a path, a link itself with the contents that it leads to.
/// @return nothing, with the slot filled, when nothing stands there or it cannot be read; a link
///     that leads nowhere has no contents.
[[nodiscard]] std::optional<JournalFile> journalFileAt(const std::string& path, ErrorSlot& error);

/// Whether the same bytes, or the same link, stand at a path, wherever they have been copied to
/// since.
[[nodiscard]] bool hasContentsOf(const JournalFile& file, const std::string& path);

/// Whether this very file stands at a path, with the bytes that it had. Devices are not compared:
/// a volume may get another number with each start of the machine.
[[nodiscard]] bool isSameFile(const JournalFile& file, const std::string& path);

/// Where a file lies in a Trash folder: at the path where it was put, or else under another name.
/// @return "" when it is there no more.
[[nodiscard]] std::string findInTrash(const JournalFile& file, const std::string& folder,
                                      const std::string& name);

/// `findInTrash` for a file that may have been copied there from another volume, under its name or
/// a numbered one ("Cut 2.xml"): the one with the highest number. What another file of that name
/// and with the same bytes has left there is taken for it.
[[nodiscard]] std::string findCopyInTrash(const JournalFile& file, const std::string& folder,
                                          const std::string& name);

/// What a move that was killed has left in a folder: this very file, under a hidden name that the
/// programs give to what they are about to remove.
/// @return "" when there is none.
[[nodiscard]] std::string findHidden(const JournalFile& file, const std::string& folder);

/// Where, in its folder, an original waits that is to take the place of a file in an undo of
/// several moves and what it replaces is afterwards; and where that is when the two cannot exchange
/// their names.
[[nodiscard]] std::string undoWaitingPath(const std::string& file);
[[nodiscard]] std::string undoAsidePath(const std::string& file);

}  // namespace vornic

#endif
