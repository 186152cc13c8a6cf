#ifndef VORNIC_JOB_MOVE_TO_TRASH_H
#define VORNIC_JOB_MOVE_TO_TRASH_H

#include <optional>
#include <string>

#include "base/Error.h"

namespace vornic {

/// Moves what stands at a path (a file, a link itself, a folder) to the user's Trash (`~/.Trash`).
/// @param originalName what it is called there, and what it is restored as; a number is added
///     where the name is taken
/// @return where it lies now, or nothing, with the slot filled, when it is still in its place.
[[nodiscard]] std::optional<std::string> moveToTrash(const std::string& path,
                                                     const std::string& originalName,
                                                     ErrorSlot& error);

}  // namespace vornic

#endif
