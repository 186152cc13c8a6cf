#ifndef VORNIC_TESTS_REPAIR_PIPELINE_REFERENCE_FILTER_H
#define VORNIC_TESTS_REPAIR_PIPELINE_REFERENCE_FILTER_H

#include <optional>
#include <string>
#include <string_view>

#include "repair/pipeline/CharacterFilter.h"

namespace vornic::test {

/// The UTF-16 units of a well-formed UTF-8 text, and back.
[[nodiscard]] std::u16string unitsOf(std::string_view text);
[[nodiscard]] std::string textOf(std::u16string_view units);

/// The character filter in its plainest form: unit after unit, one step after the other, with no
/// thought for speed. What the real one does must be the same, call for call.
/// @throws platform::RangeException as the real one does.
[[nodiscard]] std::optional<std::string> referenceFilter(std::string_view text,
                                                         CharacterFilterObserver& observer);
/// The same for nobody.
[[nodiscard]] std::optional<std::string> referenceFilter(std::string_view text);

}  // namespace vornic::test

#endif
