#ifndef VORNIC_JOB_JOURNAL_RECOVERY_H
#define VORNIC_JOB_JOURNAL_RECOVERY_H

#include <string>
#include <vector>

#include "job/Journal.h"

namespace vornic {

/// What became of a change that a program had begun when it was killed or the power failed.
struct RecoveredRun {
    enum class End {
        /// The file is what it was before the change.
        takenBack,
        /// The change is complete; the old file is in the Trash.
        finished,
        /// The new file has its place; the old one was found nowhere.
        lost,
    };
    End end = End::takenBack;
    /// Whether the change was an undo.
    bool isUndo = false;
    /// The user's file.
    std::string file = {};
    /// Where the old file is when the change was finished: in the Trash, or beside the new one
    /// where that could not be used. Empty when there was none.
    std::string original = {};
};

/// Finishes each change that was interrupted between two of its moves, or takes it back, and writes
/// that into the journal. No file is replaced, and none removed but copies of what lies whole in
/// another place. What a living run is at work on is left to the next call. Costs next to nothing
/// when there is none. One thread; several programs may do it at once.
/// @param trash the user's Trash ("~/.Trash")
[[nodiscard]] std::vector<RecoveredRun> recoverInterrupted(const Journal& journal,
                                                           const std::string& trash);

}  // namespace vornic

#endif
