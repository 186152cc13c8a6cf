#ifndef VORNIC_FORMATS_FCPXML_INDEXED_NAMES_H
#define VORNIC_FORMATS_FCPXML_INDEXED_NAMES_H

#include <array>
#include <string_view>

#include "formats/IndexedNames.h"

namespace vornic::fcpxml {

/// The attributes of type IDREF in any version, and the paths of media.
inline constexpr std::array<std::string_view, 6> kIndexedAttributes = {
    "ref", "format", "tracking", "dataLocator", "projectRef", "src"};
/// What holds a timeline, and the angles that clips name.
inline constexpr std::array<std::string_view, 3> kIndexedElements = {"sequence", "spine",
                                                                     "mc-angle"};

inline constexpr IndexedNames kIndexedNames = {kIndexedAttributes, kIndexedElements};

}  // namespace vornic::fcpxml

#endif
