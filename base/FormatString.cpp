#include "base/FormatString.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <clocale>
#include <cstdio>
#include <limits>
#include <optional>

#include <locale.h>  // NOLINT(modernize-deprecated-headers): uselocale is POSIX

#include "base/FormatReader.h"
#include "base/FormatValues.h"
#include "base/Utf8.h"

namespace vornic {

namespace {

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

/// Writes arguments by their conversions to the end of a text.
class FormatWriter {
  public:
    void writeText(std::string_view text) { result_ += text; }

    void write(const FormatConversion& conversion) {
        switch (conversion.letter) {
            case '@':
            case 's':
                writeObject(conversion);
                break;
            case 'c':
            case 'C':
                writeCharacter(conversion, characterOf(*conversion.argument));
                break;
            case 'd':
            case 'D':
            case 'i':
                writeSigned(conversion, integerOf(*conversion.argument));
                break;
            case 'u':
            case 'U':
            case 'x':
            case 'X':
            case 'o':
            case 'O':
                writeUnsigned(conversion, integerOf(*conversion.argument));
                break;
            default:
                writeDouble(conversion, doubleOf(*conversion.argument));
                break;
        }
    }

    [[nodiscard]] std::string take() { return std::move(result_); }

  private:
    void writeObject(const FormatConversion& conversion) {
        if (const auto* text = std::get_if<std::string_view>(&conversion.argument->value())) {
            writePadded(conversion, *text);
        } else {
            writePadded(conversion, plainNumber(*conversion.argument));
        }
    }

    /// Writes a text cut at the precision and padded to the width, both in characters.
    void writePadded(const FormatConversion& conversion, std::string_view text) {
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

    void writeCharacter(const FormatConversion& conversion, char32_t code) {
        const char32_t mask = conversion.letter == 'c' ? 0xFF : 0x1FFFFF;
        pad(conversion, 1, [&] { appendUtf8(result_, code & mask); });
    }

    /// Calls `append`, which writes `characters` characters, with blanks before or after it.
    template <typename Append>
    void pad(const FormatConversion& conversion, std::size_t characters, const Append& append) {
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

    void writeSigned(const FormatConversion& conversion, FormatInteger value) {
        if (conversion.length == FormatConversion::Length::byte) {
            value = formatInteger(std::int64_t{static_cast<std::int8_t>(value.bits)});
        } else if (conversion.length == FormatConversion::Length::half) {
            value = formatInteger(std::int64_t{static_cast<std::int16_t>(value.bits)});
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

    void writeUnsigned(const FormatConversion& conversion, FormatInteger value) {
        std::uint64_t bits = value.bits;
        if (conversion.length == FormatConversion::Length::byte) {
            bits &= 0xFFU;
        } else if (conversion.length == FormatConversion::Length::half) {
            bits &= 0xFFFFU;
        } else if (conversion.length == FormatConversion::Length::none && value.isNegative() &&
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

    void writeDigits(const FormatConversion& conversion, std::string_view prefix,
                     std::uint64_t value, int base) {
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

    void writeDouble(const FormatConversion& conversion, double value) {
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

    std::string result_;
};

}  // namespace

std::string formatStringWithArguments(std::string_view format,
                                      std::span<const FormatArgument> arguments) {
    FormatReader reader(format, arguments);
    FormatWriter writer;
    while (!reader.atEnd()) {
        writer.writeText(reader.readText());
        if (reader.atEnd()) {
            break;
        }
        std::string_view asItStands;
        if (const std::optional<FormatConversion> conversion = reader.readConversion(asItStands)) {
            writer.write(*conversion);
        } else {
            writer.writeText(asItStands);
        }
    }
    return writer.take();
}

}  // namespace vornic
