#ifndef VORNIC_JOB_MEND_FILE_H
#define VORNIC_JOB_MEND_FILE_H

#include <string>

#include "job/InPlaceChange.h"
#include "job/MendedBytes.h"

namespace vornic {

/// How the mending of a file in its place ended. Nothing is swapped, and there is no error, when
/// there was nothing to mend.
struct MendedFile : InPlaceResult {
    /// What was found and what was to be written.
    MendedBytes mended;
};

/// Mends a file in its place: what comes of it takes its path, the original goes to the Trash, as
/// after a repair. A file that another program changes meanwhile stays what that program made of
/// it. Nothing is written when nothing can be mended. Raises nothing but for memory that has run
/// out.
/// @param observer follows the swap: `JournaledSwap`, so that it can be undone
[[nodiscard]] MendedFile mendFile(const std::string& path, const MendRequest& request,
                                  const Waiting& waiting, SwapObserver& observer);

}  // namespace vornic

#endif
