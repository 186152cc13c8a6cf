#ifndef VORNIC_JOB_LEFT_FILES_H
#define VORNIC_JOB_LEFT_FILES_H

#include <string>
#include <vector>

#include "job/Note.h"

namespace vornic {

/// Clears what killed runs have left in a folder: files that were being written are removed, and
/// what was set aside while names were changed, which may be the user's own, comes back where
/// nothing stands at its path, and goes to the Trash elsewhere. What a living program works on is
/// left alone. Any thread.
/// @return a note for each file that was moved, or could not be, with where it is
[[nodiscard]] std::vector<Note> clearLeftFiles(const std::string& folder);

}  // namespace vornic

#endif
