#ifndef VORNIC_JOB_UNDO_REMAINS_H
#define VORNIC_JOB_UNDO_REMAINS_H

#include <optional>
#include <string>

#include "base/Error.h"
#include "job/JournalEntry.h"
#include "platform/rights/HeldPath.h"
#include "platform/volumes/Trash.h"

/// What an undo of several moves has to clear away, at its end or after it was killed. Nothing is
/// removed but what lies whole in another place. One thread.
namespace vornic {

/// Clears the place beside a file in which an original waits (`undoWaitingPath`): a copy of the
/// original, whole or only begun, is removed; anything else goes to the Trash. For those alone who
/// know that no living undo of this file uses the place.
/// @param original the name in the Trash of what may have been copied
/// @return whether the place is free.
bool clearWaiting(const platform::Trash& trash, const std::string& original,
                  const platform::HeldPath& target);

/// Takes an original out of the Trash, with its note, while its copy stands at the path.
/// @param name of the original in the Trash
void dropOriginal(const platform::Trash& trash, const std::string& name,
                  const JournalFile& original, const platform::HeldPath& target);

/// Moves what stands beside a file under a hidden name to the Trash, as what the file was called.
/// @return where it lies now, or nothing, with the slot filled, when it is still in its place.
[[nodiscard]] std::optional<std::string> recycleBeside(const platform::Trash& trash,
                                                       const platform::HeldPath& target,
                                                       const std::string& hiddenName,
                                                       ErrorSlot& error);

/// A path into a folder that is held open: it leads there whatever is renamed above it.
[[nodiscard]] std::string pathInto(int folder, const std::string& name);

}  // namespace vornic

#endif
