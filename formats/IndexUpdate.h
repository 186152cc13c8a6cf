#ifndef VORNIC_FORMATS_INDEX_UPDATE_H
#define VORNIC_FORMATS_INDEX_UPDATE_H

#include <optional>
#include <string_view>
#include <vector>

#include "formats/ElementIndex.h"
#include "report/Mend.h"

namespace vornic {

/// The index that reading a changed text would give, made of the index of the text before: only the
/// elements around the edits are read again, strictly, and must be the same elements with the same
/// start tags as before. Everything else is moved. Linear in the elements; any thread.
/// @param before of a text that was read to its end, and in which nothing but what the edits change
///     keeps it from being well-formed
/// @param text what the edits make of that text; must outlive the result
/// @param edits of the text before, in its order
/// @return nothing where the whole text has to be read.
[[nodiscard]] std::optional<ElementIndex> indexAfterEdits(const ElementIndex& before,
                                                          std::string_view text,
                                                          const std::vector<Edit>& edits);

}  // namespace vornic

#endif
