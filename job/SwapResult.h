#ifndef VORNIC_JOB_SWAP_RESULT_H
#define VORNIC_JOB_SWAP_RESULT_H

#include <string>

#include "base/Error.h"

namespace vornic {

/// How a swap ended.
enum class SwapEnd {
    /// The new file has the source's path and the original is in the Trash.
    done,
    /// Nothing was saved as the working copy. Nothing was touched.
    unsaved,
    /// Another program has replaced, written or taken away the working copy. The source is in its
    /// place.
    copyChanged,
    /// The source is not what was read any more: another program has written, replaced or taken it
    /// away. Its newer contents, if any, are in its place.
    sourceChanged,
    /// The original could not be moved to the Trash. Both files are in their places.
    trashFailed,
    /// The names could not be changed. Both files are in their places, unless the paths say
    /// otherwise.
    failed,
};

/// Where the files are after a swap, and why.
struct [[nodiscard]] SwapResult {
    SwapEnd end = SwapEnd::failed;
    /// Where the file is that was read: the source's path, a place in the Trash, or where it
    /// could not be brought back from. Empty when another program has taken it away.
    std::string original{};
    /// Where the new file is: the source's path, the working copy's, or where it could not be
    /// brought back from. Empty when there is none.
    std::string repaired{};
    /// Whether the original is in the Trash, or still under the name that it had during the swap.
    bool isInTrash = false;
    bool isAside = false;
    /// What failed, where something did.
    ErrorSlot error{};
};

}  // namespace vornic

#endif
