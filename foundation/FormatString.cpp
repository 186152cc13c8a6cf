#include "foundation/FormatString.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <limits>
#include <optional>

#include <locale.h>  // NOLINT(modernize-deprecated-headers): uselocale is POSIX

#include "foundation/Text.h"
#include "foundation/Utf8.h"

namespace vornic {

namespace {

/// Widths and precisions above this are held here, so that no argument can ask for gigabytes.
constexpr int kLargestField = 65535;

enum class LengthWord { none, byte, half, wide };

/// One conversion of a format, from its percent sign to its letter.
struct Conversion {
    bool leftJustified = false;
    bool showsPlus = false;
    bool showsBlank = false;
    bool alternate = false;
    bool zeroPadded = false;
    int width = 0;
    std::optional<int> precision;
    LengthWord length = LengthWord::none;
    char letter = 0;
};

/// A whole number of either kind, in 64 bits of two's complement.
struct Integer {
    std::uint64_t bits = 0;
    bool isSigned = true;
    [[nodiscard]] bool isNegative() const {
        return isSigned && static_cast<std::int64_t>(bits) < 0;
    }
};

template <typename Number>
std::string plainText(Number number) {
    std::array<char, 64> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
    return {buffer.data(), end};
}

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

/// Reads an argument as the kind that its conversion wants.
struct AsInteger {
    Integer operator()(std::int64_t value) const {
        return {static_cast<std::uint64_t>(value), true};
    }
    Integer operator()(std::uint64_t value) const { return {value, false}; }
    Integer operator()(double value) const { return (*this)(truncated(value)); }
    Integer operator()(std::string_view value) const { return (*this)(integerValue(value)); }
};

struct AsDouble {
    double operator()(std::int64_t value) const { return static_cast<double>(value); }
    double operator()(std::uint64_t value) const { return static_cast<double>(value); }
    double operator()(double value) const { return value; }
    double operator()(std::string_view value) const { return doubleValue(value); }
};

/// The code point that `%c` and `%C` write; a text gives its first character.
struct AsCharacter {
    char32_t operator()(std::string_view value) const {
        return value.empty() ? 0 : utf8CharacterAt(value, 0).code;
    }
    template <typename Number>
    char32_t operator()(Number value) const {
        return static_cast<char32_t>(AsInteger()(value).bits);
    }
};

int digitsOf(std::string_view digits) {
    int value = 0;
    for (const char digit : digits) {
        value = std::min(value * 10 + (digit - '0'), kLargestField);
    }
    return value;
}

/// The decimal separator and the grouping are those of the C locale, whatever the process has set.
class CLocale {
  public:
    CLocale() : previous_(uselocale(shared())) {}
    ~CLocale() { uselocale(previous_); }
    CLocale(const CLocale&) = delete;
    CLocale& operator=(const CLocale&) = delete;

  private:
    static locale_t shared() {
        static const locale_t kLocale = newlocale(LC_ALL_MASK, "C", nullptr);
        return kLocale;
    }
    locale_t previous_;
};

class Formatter {
  public:
    Formatter(std::string_view format, std::span<const FormatArgument> arguments)
        : format_(format), arguments_(arguments) {}

    std::string run() {
        while (position_ < format_.size()) {
            const std::size_t percent = format_.find('%', position_);
            result_.append(format_, position_, percent - position_);
            if (percent == std::string_view::npos) {
                break;
            }
            position_ = percent;
            convertOne();
        }
        return std::move(result_);
    }

  private:
    /// Handles what begins with the percent sign at `position_`. What turns out to be no conversion
    /// with all of its arguments is written as it stands.
    void convertOne() {
        const std::size_t start = position_++;
        if (position_ < format_.size() && format_[position_] == '%') {
            ++position_;
            result_ += '%';
            return;
        }
        const std::size_t firstArgument = nextArgument_;
        const std::optional<Conversion> conversion = parse();
        if (conversion && write(*conversion)) {
            return;
        }
        nextArgument_ = firstArgument;
        result_.append(format_, start, position_ - start);
    }

    [[nodiscard]] char peek() const {
        return position_ < format_.size() ? format_[position_] : '\0';
    }

    std::optional<Conversion> parse() {
        Conversion conversion;
        parseFlags(conversion);
        std::optional<int> width = parseField();
        if (!width) {
            return std::nullopt;
        }
        if (*width < 0) {
            conversion.leftJustified = true;
            width = -*width;
        }
        conversion.width = *width;
        if (peek() == '.') {
            ++position_;
            const std::optional<int> precision = parseField();
            if (!precision) {
                return std::nullopt;
            }
            if (*precision >= 0) {
                conversion.precision = precision;
            }
        }
        parseLength(conversion);
        constexpr std::string_view kLetters = "@sdDiuUxXoOfFeEgGaAcC";
        if (position_ == format_.size() || kLetters.find(peek()) == std::string_view::npos) {
            return std::nullopt;
        }
        conversion.letter = format_[position_++];
        return conversion;
    }

    void parseFlags(Conversion& conversion) {
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

    /// A width or precision: digits (none mean 0) or a star that takes an argument.
    /// @return nothing when the star has no argument left.
    std::optional<int> parseField() {
        if (peek() == '*') {
            ++position_;
            const FormatArgument* argument = takeArgument();
            if (argument == nullptr) {
                return std::nullopt;
            }
            const Integer value = std::visit(AsInteger(), argument->value());
            const auto number = value.isSigned || value.bits <= kLargestField
                                    ? static_cast<std::int64_t>(value.bits)
                                    : kLargestField;
            return static_cast<int>(
                std::clamp<std::int64_t>(number, -kLargestField, kLargestField));
        }
        const std::size_t start = position_;
        while (peek() >= '0' && peek() <= '9') {
            ++position_;
        }
        return digitsOf(format_.substr(start, position_ - start));
    }

    void parseLength(Conversion& conversion) {
        constexpr std::string_view kWideWords = "lqztjL";
        for (; position_ < format_.size(); ++position_) {
            if (peek() == 'h') {
                conversion.length =
                    conversion.length == LengthWord::half ? LengthWord::byte : LengthWord::half;
            } else if (kWideWords.find(peek()) != std::string_view::npos) {
                conversion.length = LengthWord::wide;
            } else {
                return;
            }
        }
    }

    const FormatArgument* takeArgument() {
        return nextArgument_ < arguments_.size() ? &arguments_[nextArgument_++] : nullptr;
    }

    /// @return false when no argument is left.
    bool write(const Conversion& conversion) {
        const FormatArgument* argument = takeArgument();
        if (argument == nullptr) {
            return false;
        }
        const FormatArgument::Value& value = argument->value();
        switch (conversion.letter) {
            case '@':
            case 's':
                writeText(conversion, value);
                break;
            case 'c':
            case 'C':
                writeCharacter(conversion, std::visit(AsCharacter(), value));
                break;
            case 'd':
            case 'D':
            case 'i':
                writeSigned(conversion, std::visit(AsInteger(), value));
                break;
            case 'u':
            case 'U':
            case 'x':
            case 'X':
            case 'o':
            case 'O':
                writeUnsigned(conversion, std::visit(AsInteger(), value));
                break;
            default:
                writeDouble(conversion, std::visit(AsDouble(), value));
                break;
        }
        return true;
    }

    void writeText(const Conversion& conversion, const FormatArgument::Value& value) {
        if (const auto* text = std::get_if<std::string_view>(&value)) {
            writePadded(conversion, *text);
        } else if (const auto* number = std::get_if<double>(&value)) {
            writePadded(conversion, plainText(*number));
        } else if (const auto* integer = std::get_if<std::int64_t>(&value)) {
            writePadded(conversion, plainText(*integer));
        } else {
            writePadded(conversion, plainText(std::get<std::uint64_t>(value)));
        }
    }

    /// Writes a text cut at the precision and padded to the width, both in characters.
    void writePadded(const Conversion& conversion, std::string_view text) {
        if (conversion.width == 0 && !conversion.precision) {
            result_ += text;
            return;
        }
        std::size_t characters = 0;
        std::size_t end = 0;
        const auto limit = conversion.precision ? static_cast<std::size_t>(*conversion.precision)
                                                : std::numeric_limits<std::size_t>::max();
        for (; end < text.size() && characters < limit; ++characters) {
            end += utf8CharacterAt(text, end).length;
        }
        pad(conversion, characters, [&] { result_ += text.substr(0, end); });
    }

    void writeCharacter(const Conversion& conversion, char32_t code) {
        const char32_t mask = conversion.letter == 'c' ? 0xFF : 0x1FFFFF;
        pad(conversion, 1, [&] { appendUtf8(result_, code & mask); });
    }

    /// Calls `append`, which writes `characters` characters, with blanks before or after it.
    template <typename Append>
    void pad(const Conversion& conversion, std::size_t characters, const Append& append) {
        const auto width = static_cast<std::size_t>(conversion.width);
        const std::size_t blanks = width > characters ? width - characters : 0;
        if (!conversion.leftJustified) {
            result_.append(blanks, ' ');
        }
        append();
        if (conversion.leftJustified) {
            result_.append(blanks, ' ');
        }
    }

    void writeSigned(const Conversion& conversion, Integer value) {
        if (conversion.length == LengthWord::byte) {
            value = AsInteger()(std::int64_t{static_cast<std::int8_t>(value.bits)});
        } else if (conversion.length == LengthWord::half) {
            value = AsInteger()(std::int64_t{static_cast<std::int16_t>(value.bits)});
        }
        std::string_view sign;
        if (value.isNegative()) {
            sign = "-";
        } else if (conversion.showsPlus) {
            sign = "+";
        } else if (conversion.showsBlank) {
            sign = " ";
        }
        writeDigits(conversion, sign, value.isNegative() ? 0 - value.bits : value.bits, 10);
    }

    void writeUnsigned(const Conversion& conversion, Integer value) {
        std::uint64_t bits = value.bits;
        if (conversion.length == LengthWord::byte) {
            bits &= 0xFFU;
        } else if (conversion.length == LengthWord::half) {
            bits &= 0xFFFFU;
        } else if (conversion.length == LengthWord::none && value.isNegative() &&
                   static_cast<std::int64_t>(bits) >= std::numeric_limits<std::int32_t>::min()) {
            bits &= 0xFFFFFFFFU;
        }
        switch (conversion.letter) {
            case 'x':
                writeDigits(conversion, conversion.alternate && bits != 0 ? "0x" : "", bits, 16);
                break;
            case 'X':
                writeDigits(conversion, conversion.alternate && bits != 0 ? "0X" : "", bits, 16);
                break;
            case 'o':
            case 'O':
                writeDigits(conversion, conversion.alternate && bits != 0 ? "0" : "", bits, 8);
                break;
            default:
                writeDigits(conversion, "", bits, 10);
                break;
        }
    }

    void writeDigits(const Conversion& conversion, std::string_view prefix, std::uint64_t value,
                     int base) {
        std::array<char, 24> buffer{};
        const auto end =
            std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, base).ptr;
        std::string_view digits(buffer.data(), static_cast<std::size_t>(end - buffer.data()));
        if (conversion.precision == 0 && value == 0) {
            digits = {};
        }
        if (conversion.letter == 'X') {
            std::transform(buffer.data(), end, buffer.data(), [](char digit) {
                return digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit;
            });
        }
        std::size_t wanted = static_cast<std::size_t>(conversion.precision.value_or(1));
        if (conversion.zeroPadded && !conversion.precision && !conversion.leftJustified &&
            static_cast<std::size_t>(conversion.width) > prefix.size()) {
            wanted = static_cast<std::size_t>(conversion.width) - prefix.size();
        }
        const std::size_t zeros = wanted > digits.size() ? wanted - digits.size() : 0;
        pad(conversion, prefix.size() + zeros + digits.size(), [&] {
            result_ += prefix;
            result_.append(zeros, '0');
            result_ += digits;
        });
    }

    void writeDouble(const Conversion& conversion, double value) {
        std::string format = "%";
        format += conversion.leftJustified ? "-" : "";
        format += conversion.showsPlus ? "+" : "";
        format += conversion.showsBlank ? " " : "";
        format += conversion.alternate ? "#" : "";
        format += conversion.zeroPadded ? "0" : "";
        format += "*.*";
        format += conversion.letter;
        const CLocale locale;
        const int precision = conversion.precision.value_or(-1);
        std::array<char, 128> buffer{};
        const int length = std::snprintf(buffer.data(), buffer.size(), format.c_str(),
                                         conversion.width, precision, value);
        if (length < 0) {
            return;
        }
        const auto count = static_cast<std::size_t>(length);
        if (count < buffer.size()) {
            result_.append(buffer.data(), count);
            return;
        }
        std::string large(count + 1, '\0');
        static_cast<void>(std::snprintf(large.data(), large.size(), format.c_str(),
                                        conversion.width, precision, value));
        result_.append(large, 0, count);
    }

    std::string_view format_;
    std::span<const FormatArgument> arguments_;
    std::size_t position_ = 0;
    std::size_t nextArgument_ = 0;
    std::string result_;
};

}  // namespace

std::string formatStringWithArguments(std::string_view format,
                                      std::span<const FormatArgument> arguments) {
    return Formatter(format, arguments).run();
}

}  // namespace vornic
