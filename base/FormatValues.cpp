#include "base/FormatValues.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>
#include <type_traits>
#include <variant>

#include "base/Text.h"
#include "base/Utf8.h"

namespace vornic {

namespace {

std::int64_t truncated(double value) {
    constexpr double kLimit = 9223372036854775808.0;  // 2^63
    if (std::isnan(value)) {
        return 0;
    }
    if (value >= kLimit) {
        return std::numeric_limits<std::int64_t>::max();
    }
    return value <= -kLimit ? std::numeric_limits<std::int64_t>::min()
                            : static_cast<std::int64_t>(value);
}

double doubleValue(std::string_view text) {
    text = trimmed(text);
    if (text.starts_with('+')) {
        text.remove_prefix(1);
    }
    double value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

struct AsInteger {
    FormatInteger operator()(std::int64_t value) const { return formatInteger(value); }
    FormatInteger operator()(std::uint64_t value) const { return {value, false}; }
    FormatInteger operator()(double value) const { return formatInteger(truncated(value)); }
    FormatInteger operator()(std::string_view value) const {
        return formatInteger(integerValue(value));
    }
};

struct AsDouble {
    double operator()(double value) const { return value; }
    double operator()(std::string_view value) const { return doubleValue(value); }
    template <typename Integer>
    double operator()(Integer value) const {
        return static_cast<double>(value);
    }
};

struct AsPlainNumber {
    std::string operator()(std::string_view /*value*/) const { return {}; }
    template <typename Number>
    std::string operator()(Number number) const {
        std::array<char, 64> buffer{};
        const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
        return {buffer.data(), end};
    }
};

}  // namespace

FormatInteger formatInteger(std::int64_t value) {
    return {static_cast<std::uint64_t>(value), true};
}

FormatInteger integerOf(const FormatArgument& argument) {
    return std::visit(AsInteger(), argument.value());
}

double doubleOf(const FormatArgument& argument) {
    return std::visit(AsDouble(), argument.value());
}

char32_t characterOf(const FormatArgument& argument) {
    if (const auto* text = std::get_if<std::string_view>(&argument.value())) {
        return text->empty() ? 0 : utf8CharacterAt(*text, 0).code;
    }
    return static_cast<char32_t>(integerOf(argument).bits);
}

std::string plainNumber(const FormatArgument& argument) {
    return std::visit(AsPlainNumber(), argument.value());
}

}  // namespace vornic
