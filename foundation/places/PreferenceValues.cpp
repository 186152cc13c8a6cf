#include "foundation/places/PreferenceValues.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <variant>

#include "base/Text.h"
#include "foundation/log/QMLog.h"

namespace vornic {
namespace {

/// The number without its fraction, held within the range of whole numbers.
std::int64_t truncated(double number) {
    // The largest whole number of the range that a real number can be.
    constexpr double kLargest = 9223372036854774784.0;
    return std::isnan(number) ? 0
                              : static_cast<std::int64_t>(std::clamp(number, -kLargest, kLargest));
}

}  // namespace

bool isNumberEqualTo(const std::optional<platform::PropertyList>& value, int number) {
    if (!value) {
        return false;
    }
    const auto* real = std::get_if<double>(&value->value());
    return (value->integer() != nullptr && *value->integer() == number) ||
           (value->boolean() != nullptr && static_cast<int>(*value->boolean()) == number) ||
           (real != nullptr && *real == number);
}

std::int64_t integerPreference(const std::optional<platform::PropertyList>& value) {
    if (!value) {
        return 0;
    }
    if (const std::int64_t* integer = value->integer()) {
        return *integer;
    }
    if (const bool* boolean = value->boolean()) {
        return *boolean ? 1 : 0;
    }
    if (const auto* real = std::get_if<double>(&value->value())) {
        return truncated(*real);
    }
    const std::string* text = value->string();
    return text != nullptr ? integerValue(*text) : 0;
}

void logUnsavedPreference(std::string_view key, const ErrorSlot& error) {
    QMLog::appendLog("Unable to save preference %@. %@", key,
                     error ? error->localizedDescription() : std::string());
}

}  // namespace vornic
