#ifndef VORNIC_CONVERT_FCPXML_RENAMES_H
#define VORNIC_CONVERT_FCPXML_RENAMES_H

#include <string_view>

#include "formats/ElementIndex.h"
#include "formats/fcpxml/Version.h"

namespace vornic::fcpxml {

/// What an element is called in the next version, where that has another name for the same thing:
/// the sources of sound in 1.6, filters in 1.3. The content models of both versions say where each
/// name has its place; a filter of a clip is one of the picture where its effect is known for one.
/// @param element of the index
/// @param parent the name of the element around it
/// @return the name that it has already where nothing is to be changed.
[[nodiscard]] std::string_view renamed(const ElementIndex& index, ElementNumber element,
                                       std::string_view parent, Version from, Version to);

}  // namespace vornic::fcpxml

#endif
