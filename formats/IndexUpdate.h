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
/// @param text what the edits make of that text; must outlive the result. Both texts are read.
/// @param edits of the text before, in its order
/// @return nothing where the whole text has to be read.
[[nodiscard]] std::optional<ElementIndex> indexAfterEdits(ElementIndex before,
                                                          std::string_view text,
                                                          const std::vector<Edit>& edits);

/// The innermost element of the text before that an edit is inside of, touching neither its first
/// nor its last byte; `kNoElement` outside the root.
[[nodiscard]] ElementNumber elementAround(const ElementIndex& before, const Edit& edit);

}  // namespace vornic

#endif
