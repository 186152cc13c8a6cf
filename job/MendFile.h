#ifndef VORNIC_JOB_MEND_FILE_H
#define VORNIC_JOB_MEND_FILE_H

#include <optional>
#include <string>

#include "job/MendedBytes.h"
#include "job/SwapObserver.h"
#include "job/SwapResult.h"
#include "job/Waiting.h"
#include "platform/Error.h"

namespace vornic {

/// How the mending of a file in its place ended.
struct MendedFile {
    /// What was found and what was to be written.
    MendedBytes mended;
    /// Where the files are; nothing when there was nothing to mend or it was not begun.
    std::optional<SwapResult> swap;
    /// What of the file's mode, owner and attributes the new one could not be given, in words.
    std::string lostMetadata;
    /// What else the user should know, a sentence each.
    std::vector<std::string> notes;
    /// Why the file could not be read, or was left as it is; nothing when it was mended, or there
    /// was nothing to mend.
    ErrorSlot error;
    bool isCancelled = false;
};

/// Mends a file in its place: what comes of it takes its path, the original goes to the Trash, as
/// after a repair. A file that another program changes meanwhile stays what that program made of
/// it. Nothing is written when nothing can be mended. Raises nothing but for memory that has run
/// out.
/// @param observer follows the swap: `JournaledSwap`, so that it can be undone
[[nodiscard]] MendedFile mendFile(const std::string& path, const MendRequest& request,
                                  Waiting& waiting, SwapObserver& observer);

}  // namespace vornic

#endif
