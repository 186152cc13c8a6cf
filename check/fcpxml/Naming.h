#ifndef VORNIC_CHECK_FCPXML_NAMING_H
#define VORNIC_CHECK_FCPXML_NAMING_H

#include <string>
#include <string_view>
#include <vector>

#include "formats/ElementIndex.h"
#include "report/Mend.h"

namespace vornic {

/// How a message calls an element: `<asset-clip> "Interview"`, by its id when neither it nor what
/// it refers to has a name, and `<asset-clip>` when it has no id either.
[[nodiscard]] std::string calledBy(const ElementIndex& index, ElementNumber element);

/// "an <asset>", "a <format>".
[[nodiscard]] std::string withArticle(std::string_view element);

/// What an attribute says, as a message quotes it: references replaced, long ones cut.
[[nodiscard]] std::string quotedValue(std::string_view rawValue);

/// The edits that take an attribute out with the white space in front of it; none when the element
/// has no such attribute.
[[nodiscard]] std::vector<Edit> removalOf(const ElementIndex& index, ElementNumber element,
                                          std::string_view attribute);

}  // namespace vornic

#endif
