#ifndef VORNIC_MEND_UNIFIED_DIFFERENCE_H
#define VORNIC_MEND_UNIFIED_DIFFERENCE_H

#include <string>
#include <string_view>

#include "mend/EditList.h"

namespace vornic {

/// What edits change, line by line, in the unified format that POSIX gives for `diff -u`: three
/// lines of context, changes that are closer together than that in one hunk. `patch` can apply it
/// to a file in UTF-8. Linear in the text and its edits.
/// @param text the whole text, UTF-8
/// @param edits of it
/// @param oldName,newName what stands behind "---" and "+++", in quotes where `patch` would not
/// read
///     it otherwise
/// @return "" when no line changes
[[nodiscard]] std::string unifiedDifference(std::string_view text, const EditList& edits,
                                            std::string_view oldName, std::string_view newName);

}  // namespace vornic

#endif
