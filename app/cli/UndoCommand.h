#ifndef VORNIC_APP_CLI_UNDO_COMMAND_H
#define VORNIC_APP_CLI_UNDO_COMMAND_H

#include <string>
#include <vector>

#include "job/Undo.h"

namespace vornic {

/// What `vornic-repair --undo` is asked for.
struct UndoOptions {
    /// Show what can be undone, and change nothing.
    bool list = false;
    /// Take files back that have changed since, without asking.
    bool force = false;
    bool quiet = false;
    /// Absolute; none for the newest change of all, or for a list of all.
    std::vector<std::string> files = {};
};

/// A sentence for everything that is not as it should be after an undo; with one the exit status is
/// not 0.
[[nodiscard]] std::vector<std::string> complaintsAbout(const UndoResult& result);

/// `vornic-repair --undo`: takes repairs back. What was done goes to standard output, what could
/// not be done to standard error. Main thread.
class UndoCommand {
  public:
    /// @return 0 when all was undone or listed, 1 when something was undone and something has to be
    ///     said, 3 when nothing was undone. An interruption ends the run at the next file.
    static int run(const UndoOptions& options);
};

}  // namespace vornic

#endif
