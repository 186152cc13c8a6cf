#ifndef VORNIC_FORMATS_XMEML_NUMBER_H
#define VORNIC_FORMATS_XMEML_NUMBER_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace vornic::xmeml {

/// How a number is written.
enum class NumberForm {
    /// "-12".
    whole,
    /// "12.0": a whole number all the same.
    wholeWithFraction,
    /// "12.5".
    fraction,
    /// "12" with so many digits that no program reads it.
    tooLarge,
    /// No number.
    other,
};

struct Number {
    NumberForm form = NumberForm::other;
    /// The digits before the point; 0 for `tooLarge` and `other`.
    std::int64_t value = 0;

    /// The value, where it is a whole one.
    [[nodiscard]] std::optional<std::int64_t> whole() const {
        const bool isWhole = form == NumberForm::whole || form == NumberForm::wholeWithFraction;
        return isWhole ? std::optional(value) : std::nullopt;
    }
};

/// @param text without white space at both ends.
[[nodiscard]] Number readNumber(std::string_view text);

}  // namespace vornic::xmeml

#endif
