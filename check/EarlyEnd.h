#ifndef VORNIC_CHECK_EARLY_END_H
#define VORNIC_CHECK_EARLY_END_H

#include <string_view>

#include "formats/ElementIndex.h"
#include "report/Finding.h"

namespace vornic {

/// The text without the beginning of a tag at its very end that nothing completes, as it is left
/// of a file that broke off. What remains of such a tag means nothing.
/// @return the whole text when it does not end so, or not inside of an element.
[[nodiscard]] std::string_view textBeforeTornTag(std::string_view text);

/// Makes the finding of a file that ends early say which elements are open.
/// @param isInTag whether a tag was torn.
void nameOpenElements(const ElementIndex& index, bool isInTag, Finding& finding);

}  // namespace vornic

#endif
