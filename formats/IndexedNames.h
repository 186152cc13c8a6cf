#ifndef VORNIC_FORMATS_INDEXED_NAMES_H
#define VORNIC_FORMATS_INDEXED_NAMES_H

#include <span>
#include <string_view>

namespace vornic {

/// Of which elements an index keeps lists. The names are fixed texts.
struct IndexedNames {
    /// Attributes by which an element refers to another, or to something outside of the file.
    std::span<const std::string_view> attributes;
    /// Elements that do, by their content or as a whole.
    std::span<const std::string_view> elements;
};

}  // namespace vornic

#endif
