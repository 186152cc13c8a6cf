#ifndef VORNIC_PLATFORM_VOLUMES_FILE_TRANSFER_H
#define VORNIC_PLATFORM_VOLUMES_FILE_TRANSFER_H

#include <functional>
#include <optional>
#include <string>

#include "base/Error.h"

/// The steps that copying, moving and recycling share.
namespace vornic::platform {

/// Whether a copy is read back from the disk and compared with its source before it counts.
enum class Verification { none, readBack };

/// `copyItem`, with or without verification.
[[nodiscard]] bool transferItem(const std::string& source, const std::string& destination,
                                Verification verification, ErrorSlot& error);

/// Copies a regular file or a link, which is not followed, to a path at which nothing may exist.
/// The copy is synced, read back and compared before it counts; one that fails leaves nothing.
/// @param losses set to a sentence for everything of owner, mode and attributes that was lost and
///     could have been kept; empty when nothing was
[[nodiscard]] bool copyTellingLosses(const std::string& source, const std::string& destination,
                                     std::string& losses, ErrorSlot& error);

/// The contents of one open file to another, inside the kernel where it can.
/// @return 0 or the errno value.
[[nodiscard]] int copyContents(int from, int to);

/// Reads both files and compares them; `written` is synced first and read from the disk rather than
/// from memory where the system lets itself be asked.
/// @return 0 when they are equal, EIO when they differ, or the errno value.
[[nodiscard]] int compareWithSource(int source, int written);

/// Names to be tried one after the other, from attempt 1; nothing when there are no more.
using NameForAttempt = std::function<std::optional<std::string>(long attempt)>;

/// The moments of a move to another volume at which somebody else may come between.
enum class MoveStep {
    /// The copy is complete; the original still has its name.
    copied,
    /// The original has a hidden name of its own in its folder.
    setAside,
    /// The original has been found unchanged and is about to be removed.
    verified,
};

/// Called at each of them. For tests, which put a function here that comes between; empty
/// otherwise. Set it while nothing is being moved.
[[nodiscard]] std::function<void(MoveStep)>& moveObserver();

/// Moves an item into a folder under the first of the names that is free, as `moveFile` moves.
[[nodiscard]] bool moveInto(const std::string& source, const std::string& folder,
                            const NameForAttempt& names, ErrorSlot& error);

/// True when `inner`, which need not exist, lies in the folder `outer` or is the folder itself.
[[nodiscard]] bool liesWithin(const std::string& inner, const std::string& outer);

}  // namespace vornic::platform

#endif
