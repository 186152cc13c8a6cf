#ifndef VORNIC_JOB_SWAP_OBSERVER_H
#define VORNIC_JOB_SWAP_OBSERVER_H

#include <optional>
#include <string>

#include "base/Error.h"
#include "platform/files/ContentDigest.h"
#include "platform/files/FileVersion.h"

namespace vornic {

/// What a swap is about to do.
struct SwapIntent {
    std::string source;
    std::string workingCopy;
    /// The original as it was opened, and the digest of the bytes that were read.
    platform::FileVersion sourceVersion;
    platform::ContentDigest::Value sourceDigest{};
    /// The file that will take its place. Renaming changes the time `changed` of both.
    platform::FileVersion copyVersion;
    platform::ContentDigest::Value copyDigest{};
};

/// The places in a swap at which somebody may look or step in.
enum class SwapPoint {
    /// The working copy was found to be what was saved and is on the disk.
    verified,
    /// Source and new file have each other's name, or, where names cannot be exchanged, the source
    /// is aside.
    exchanged,
    /// What came out is the file that was read.
    compared,
    /// What came out is not the file that was read, and is about to be put back.
    differed,
    /// Where names cannot be exchanged: the new file has come to the source's path.
    movedIn,
    /// What came out has the source's path again, and what came out for it is about to be looked
    /// at.
    takenBack,
    /// The original is about to be moved to the Trash.
    beforeTrash,
};

/// Follows a swap, on its thread.
class SwapObserver {
  public:
    virtual ~SwapObserver() = default;

    /// Just before the first name is changed.
    /// @return false, with the slot filled, when the swap must not be made.
    [[nodiscard]] virtual bool willSwap(const SwapIntent& intent, ErrorSlot& error) {
        static_cast<void>(intent);
        static_cast<void>(error);
        return true;
    }
    /// The swap is complete.
    /// @param original where the original lies in the Trash
    virtual void didSwap(const SwapIntent& intent, const std::string& original) {
        static_cast<void>(intent);
        static_cast<void>(original);
    }
    /// After `willSwap`: the swap has ended in another way, and both files are where they were, or
    /// where the job says that they are.
    virtual void didNotSwap(const SwapIntent& intent) { static_cast<void>(intent); }
    /// Called at each point that is passed.
    virtual void reached(SwapPoint point) { static_cast<void>(point); }
};

}  // namespace vornic

#endif
