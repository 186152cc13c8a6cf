#ifndef VORNIC_BASE_FORMAT_VALUES_H
#define VORNIC_BASE_FORMAT_VALUES_H

#include <cstdint>
#include <string>

#include "base/FormatString.h"

/// Reading the arguments of a format as the kind that a conversion wants, whatever they are.
namespace vornic {

/// A whole number of either kind, in 64 bits of two's complement.
struct FormatInteger {
    std::uint64_t bits = 0;
    bool isSigned = true;
    [[nodiscard]] bool isNegative() const {
        return isSigned && static_cast<std::int64_t>(bits) < 0;
    }
};

[[nodiscard]] FormatInteger formatInteger(std::int64_t value);

/// A floating-point number loses its fraction, a text is read up to the first other character.
[[nodiscard]] FormatInteger integerOf(const FormatArgument& argument);
[[nodiscard]] double doubleOf(const FormatArgument& argument);
/// A number is a code point, a text gives its first character.
[[nodiscard]] char32_t characterOf(const FormatArgument& argument);
/// The digits of a number; not for a text.
[[nodiscard]] std::string plainNumber(const FormatArgument& argument);

}  // namespace vornic

#endif
