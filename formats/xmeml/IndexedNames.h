#ifndef VORNIC_FORMATS_XMEML_INDEXED_NAMES_H
#define VORNIC_FORMATS_XMEML_INDEXED_NAMES_H

#include <array>
#include <string_view>

#include "formats/IndexedNames.h"

namespace vornic::xmeml {

/// `<file id="…">` with content defines a file and without refers to it; the others refer by their
/// content, or hold a timeline.
inline constexpr std::array<std::string_view, 8> kIndexedElements = {
    "file", "linkclipref", "masterclipid", "pathurl", "clipitem", "sequence", "multiclip", "track"};

inline constexpr IndexedNames kIndexedNames = {{}, kIndexedElements};

}  // namespace vornic::xmeml

#endif
