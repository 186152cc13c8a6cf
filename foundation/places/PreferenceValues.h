#ifndef VORNIC_FOUNDATION_PLACES_PREFERENCE_VALUES_H
#define VORNIC_FOUNDATION_PLACES_PREFERENCE_VALUES_H

#include <cstdint>
#include <optional>
#include <string_view>

#include "base/Error.h"
#include "platform/settings/PropertyList.h"

/// What the values of preferences mean. Any thread.
namespace vornic {

/// True for an integer, a real number or a boolean that equals the number; never for a text.
[[nodiscard]] bool isNumberEqualTo(const std::optional<platform::PropertyList>& value, int number);

/// The value as a whole number: a real number without its fraction, a boolean as 1 or 0, a text as
/// `integerValue` reads it; 0 for nothing and for every other kind.
[[nodiscard]] std::int64_t integerPreference(const std::optional<platform::PropertyList>& value);

/// Logs that a preference could not be written.
void logUnsavedPreference(std::string_view key, const ErrorSlot& error);

}  // namespace vornic

#endif
