#ifndef VORNIC_SALVAGE_AFTER_CUT_H
#define VORNIC_SALVAGE_AFTER_CUT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "formats/ElementIndex.h"

namespace vornic::salvage {

/// Something that readers need in an element, and that the rest of the file tells.
struct AddedPart {
    /// Where it goes, in the copy.
    std::size_t offset = 0;
    std::string text;
    std::string_view parent;
    std::string_view element;
};

/// What the elements lack that a file was cut off in, as far as it can be derived: in FCPXML
/// children that the definition requires (`LeastContent`), in XMEML the rate, which is that of the
/// element around it, name and length of a clip item, which its file has, its end or out, which the
/// other three tell, and the length of a sequence, whose last clip item tells it. In the order of
/// the text. Linear.
/// @param copy well-formed.
/// @param end where the copy closes what the file had left open.
[[nodiscard]] std::vector<AddedPart> partsAfterCut(const ElementIndex& copy, std::size_t end);

}  // namespace vornic::salvage

#endif
