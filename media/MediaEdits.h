#ifndef VORNIC_MEDIA_MEDIA_EDITS_H
#define VORNIC_MEDIA_MEDIA_EDITS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "formats/ElementIndex.h"
#include "media/MediaList.h"
#include "report/Mend.h"

namespace vornic {

/// Where a medium is to lead.
struct MediumTarget {
    /// Nothing for one that stays; where it is the old path, only the form may change.
    std::optional<MediaPath> path;
    /// How it is to be written; nothing for the form that each place has.
    std::optional<PathForm> form;
};

/// What relinking changes of a text.
struct MediaEdits {
    /// In the order of the text, not overlapping.
    std::vector<Edit> edits;
    /// For each medium: what its first place will say, "" where nothing changes, and how many
    /// bookmarks go.
    std::vector<std::string> urls;
    std::vector<std::uint64_t> droppedBookmarks;
};

/// Writes the new paths into all places that name the media. Bookmarks of assets that lead
/// elsewhere are dropped, with the white space in front of them: programs believe them more than
/// the path, and they would lead back. Linear.
/// @param targets one for each medium
[[nodiscard]] MediaEdits editsFor(const ElementIndex& index, const std::vector<Medium>& media,
                                  const std::vector<MediumTarget>& targets);

}  // namespace vornic

#endif
