#include "base/FormatReader.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "base/ASCII.h"
#include "base/FormatValues.h"

namespace vornic {

namespace {

/// Widths and precisions above this are held here, so that no argument can ask for gigabytes.
constexpr int kLargestField = 65535;

int digitsOf(std::string_view digits) {
    int value = 0;
    for (const char digit : digits) {
        value = std::min(value * 10 + (digit - '0'), kLargestField);
    }
    return value;
}

}  // namespace

std::string_view FormatReader::readText() {
    const std::string_view rest = format_.substr(position_);
    const std::string_view text = rest.substr(0, rest.find('%'));
    position_ += text.size();
    return text;
}

std::optional<FormatConversion> FormatReader::readConversion(std::string_view& asItStands) {
    const std::size_t start = position_++;
    if (peek() == '%') {
        ++position_;
        asItStands = "%";
        return std::nullopt;
    }
    const std::size_t firstArgument = nextArgument_;
    std::optional<FormatConversion> conversion = parse();
    if (!conversion) {
        nextArgument_ = firstArgument;
        asItStands = format_.substr(start, position_ - start);
    }
    return conversion;
}

std::optional<FormatConversion> FormatReader::parse() {
    constexpr std::string_view kLetters = "@sdDiuUxXoOfFeEgGaAcC";
    FormatConversion conversion;
    parseFlags(conversion);
    if (!parseWidth(conversion) || !parsePrecision(conversion)) {
        return std::nullopt;
    }
    parseLength(conversion);
    if (atEnd() || kLetters.find(peek()) == std::string_view::npos) {
        return std::nullopt;
    }
    conversion.letter = format_[position_++];
    conversion.argument = takeArgument();
    return conversion.argument != nullptr ? std::optional(conversion) : std::nullopt;
}

void FormatReader::parseFlags(FormatConversion& conversion) {
    for (;; ++position_) {
        switch (peek()) {
            case '-':
                conversion.leftJustified = true;
                break;
            case '+':
                conversion.showsPlus = true;
                break;
            case ' ':
                conversion.showsBlank = true;
                break;
            case '#':
                conversion.alternate = true;
                break;
            case '0':
                conversion.zeroPadded = true;
                break;
            case '\'':
                break;
            default:
                return;
        }
    }
}

/// @return false when a star has no argument left.
bool FormatReader::parseWidth(FormatConversion& conversion) {
    const std::optional<int> width = parseField();
    if (width) {
        conversion.leftJustified = conversion.leftJustified || *width < 0;
        conversion.width = std::abs(*width);
    }
    return width.has_value();
}

/// @return false when a star has no argument left. A negative precision counts as none.
bool FormatReader::parsePrecision(FormatConversion& conversion) {
    if (peek() != '.') {
        return true;
    }
    ++position_;
    const std::optional<int> precision = parseField();
    if (precision && *precision >= 0) {
        conversion.precision = precision;
    }
    return precision.has_value();
}

void FormatReader::parseLength(FormatConversion& conversion) {
    constexpr std::string_view kWideWords = "lqztjL";
    for (; position_ < format_.size(); ++position_) {
        if (peek() == 'h') {
            conversion.length = conversion.length == FormatConversion::Length::half
                                    ? FormatConversion::Length::byte
                                    : FormatConversion::Length::half;
        } else if (kWideWords.find(peek()) != std::string_view::npos) {
            conversion.length = FormatConversion::Length::wide;
        } else {
            return;
        }
    }
}

/// A width or precision: digits (none mean 0) or a star that takes an argument.
/// @return nothing when the star has no argument left.
std::optional<int> FormatReader::parseField() {
    if (peek() == '*') {
        ++position_;
        const FormatArgument* argument = takeArgument();
        if (argument == nullptr) {
            return std::nullopt;
        }
        const FormatInteger value = integerOf(*argument);
        const auto number = value.isSigned || value.bits <= kLargestField
                                ? static_cast<std::int64_t>(value.bits)
                                : kLargestField;
        return static_cast<int>(std::clamp<std::int64_t>(number, -kLargestField, kLargestField));
    }
    const std::size_t start = position_;
    while (isDigit(peek())) {
        ++position_;
    }
    return digitsOf(format_.substr(start, position_ - start));
}

const FormatArgument* FormatReader::takeArgument() {
    return nextArgument_ < arguments_.size() ? &arguments_[nextArgument_++] : nullptr;
}

}  // namespace vornic
