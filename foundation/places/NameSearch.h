#ifndef VORNIC_FOUNDATION_PLACES_NAME_SEARCH_H
#define VORNIC_FOUNDATION_PLACES_NAME_SEARCH_H

#include <chrono>
#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

#include "base/StopToken.h"

namespace vornic {

/// A file whose name was looked for.
struct NamedFile {
    /// Absolute.
    std::string path;
    /// Nanoseconds since 1970-01-01 UTC.
    std::int64_t modified = 0;
};

struct NameSearchResult {
    /// Ordered by path.
    std::vector<NamedFile> files;
    /// Folders that could not be looked through: volumes that did not answer, and what may not be
    /// read.
    std::vector<std::string> unread;
};

/// Looks through a folder and all folders in it once, for files of any of some names. Hidden
/// folders are passed over, no link to a folder is followed, and nothing is mounted. Each volume is
/// asked by a child process, so that one that does not answer ends its part of the search alone.
/// @param folder absolute
/// @param names as `foldedName` makes them
/// @param limit how long a volume may be silent
/// @param stop ends the search; what was found so far is returned
[[nodiscard]] NameSearchResult findNames(const std::string& folder,
                                         const std::unordered_set<std::string>& names,
                                         std::chrono::milliseconds limit = std::chrono::seconds(2),
                                         const StopToken& stop = {});

}  // namespace vornic

#endif
