#ifndef VORNIC_FORMATS_FCPXML_INDEXED_NAMES_H
#define VORNIC_FORMATS_FCPXML_INDEXED_NAMES_H

#include <array>
#include <string_view>

#include "formats/IndexedNames.h"

namespace vornic::fcpxml {

/// The attributes of type IDREF in any version, the paths of media, and dates.
inline constexpr std::array<std::string_view, 7> kIndexedAttributes = {
    "ref", "format", "tracking", "dataLocator", "projectRef", "src", "modDate"};
/// What holds a timeline, the angles of multicam clips, and what names them.
inline constexpr std::array<std::string_view, 4> kIndexedElements = {"sequence", "spine",
                                                                     "mc-angle", "mc-source"};

inline constexpr IndexedNames kIndexedNames = {kIndexedAttributes, kIndexedElements};

}  // namespace vornic::fcpxml

#endif
