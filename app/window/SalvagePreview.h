#ifndef VORNIC_APP_WINDOW_SALVAGE_PREVIEW_H
#define VORNIC_APP_WINDOW_SALVAGE_PREVIEW_H

#include <memory>
#include <string>
#include <vector>

#include "app/window/FileActions.h"
#include "app/window/FindingsTable.h"

namespace vornic {

/// What a salvage would make of a file that is no XML any more, to be looked at.
struct SalvagePreview {
    /// Why there is no copy, as a sentence; "" when there is one.
    std::string refusal;
    /// Every guess, with the line that it is about and what that becomes; null with a refusal.
    std::shared_ptr<const FindingsTable> guesses;
    /// One for each root element of the file; most files have one.
    std::vector<std::string> copies;
};

/// Looks for the likeliest original of a damaged file. Nothing is written. Any thread.
[[nodiscard]] SalvagePreview previewSalvage(const std::string& path);

/// Writes what was looked at as new files; the file itself stays. Any thread.
/// @param to a name that is free, or gets a number
/// @return `replaced` is where the first copy is
[[nodiscard]] FileActionResult saveSalvaged(const std::string& path, const SalvagePreview& preview,
                                            const std::string& to);

}  // namespace vornic

#endif
