#ifndef VORNIC_JOB_RELINK_FILE_H
#define VORNIC_JOB_RELINK_FILE_H

#include <string>
#include <vector>

#include "job/InPlaceChange.h"

namespace vornic {

/// Puts what relinking made of a file into its place; the original goes to the Trash.
/// @param bytesRead that the file had
/// @param observer follows the swap: `JournaledSwap`, so that it can be undone
[[nodiscard]] InPlaceResult relinkInPlace(const std::string& path, const std::string& bytesRead,
                                          const std::string& newBytes, const Waiting& waiting,
                                          SwapObserver& observer);

/// Clears what a killed relinking has left beside a file in which nothing is to be relinked.
/// @return what the user should know, a sentence each
[[nodiscard]] std::vector<std::string> clearLeftByRelinking(const std::string& path,
                                                            const Waiting& waiting);

/// The path of the new file that holds the result: "Cut (relinked).fcpxml" beside "Cut.fcpxml", and
/// beside a bundle for the file in it.
[[nodiscard]] std::string relinkedPath(const std::string& path);

}  // namespace vornic

#endif
