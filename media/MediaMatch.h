#ifndef VORNIC_MEDIA_MEDIA_MATCH_H
#define VORNIC_MEDIA_MEDIA_MATCH_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "media/MediaPath.h"

namespace vornic {

/// A file that a search has found.
struct FoundFile {
    /// Absolute.
    std::string path;
    /// How many of the names on its path lead to the folder that was searched.
    std::size_t depth = 0;
    /// Nanoseconds since 1970-01-01 UTC.
    std::int64_t modified = 0;
};

/// What decides between several files of one name.
enum class Pick { newest, longestTail };

struct MediaMatch {
    /// The file that is meant.
    std::optional<std::size_t> file;
    /// Where it is not plain which one is: those that it may be.
    std::vector<std::size_t> candidates;
};

/// Which of the files that were found a missing medium is. One of exactly its name comes before
/// those whose name differs by case or normalisation. Of several the one is meant whose whole way
/// below the searched folder, one folder at least, is the end of the medium's path, when no other
/// has as long an end in common with it; else `pick` decides, or nothing. Linear.
/// @param files all of the same folded name as the medium
[[nodiscard]] MediaMatch matchOf(const MediaPath& medium, const std::vector<FoundFile>& files,
                                 std::optional<Pick> pick);

}  // namespace vornic

#endif
