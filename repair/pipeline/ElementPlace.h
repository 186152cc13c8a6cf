#ifndef VORNIC_REPAIR_PIPELINE_ELEMENT_PLACE_H
#define VORNIC_REPAIR_PIPELINE_ELEMENT_PLACE_H

#include <cstddef>
#include <optional>
#include <string_view>

#include "report/Place.h"

namespace vornic {

/// Finds the start tag of an element again in the text that the user has, for a finding that was
/// made in a tree. Reads the text once, so it is for findings that there is one of.
/// @param text UTF-8, read as the repair reads it, mends and all
/// @param index of the element among those of its name, in document order, from 0
/// @return the place of the tag in the text, or nothing when the text has not so many of them
[[nodiscard]] std::optional<Place> placeOfElement(std::string_view text, std::string_view name,
                                                  std::size_t index);

}  // namespace vornic

#endif
