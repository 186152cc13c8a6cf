#ifndef VORNIC_BASE_FORMAT_STRING_H
#define VORNIC_BASE_FORMAT_STRING_H

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

namespace vornic {

/// One argument of `formatString`: an integer, a floating-point number or a text. A text argument
/// is only viewed and must outlive the call.
class FormatArgument {
  public:
    template <std::integral T>
    requires(std::is_signed_v<T>) FormatArgument(T value)
        : value_(static_cast<std::int64_t>(value)) {}  // NOLINT: by design
    template <std::integral T>
    requires(std::is_unsigned_v<T>) FormatArgument(T value)
        : value_(static_cast<std::uint64_t>(value)) {}         // NOLINT: by design
    FormatArgument(double value) : value_(value) {}            // NOLINT: by design
    FormatArgument(std::string_view value) : value_(value) {}  // NOLINT: by design
    FormatArgument(const std::string& value) : value_(std::string_view(value)) {}  // NOLINT
    FormatArgument(const char* value)  // NOLINT: by design
        : value_(std::string_view(value == nullptr ? "(null)" : value)) {}

    using Value = std::variant<std::int64_t, std::uint64_t, double, std::string_view>;
    [[nodiscard]] const Value& value() const { return value_; }

  private:
    Value value_;
};

/// Formats by the platform's format syntax: `%@` (any argument in its plain form), `%s`, `%d` `%i`
/// `%u` `%x` `%X` `%o` with the length words h, hh, l, ll, q, z, t, j, `%f` `%e` `%g` and their
/// capitals, `%c` (an 8-bit character), `%C` (a UTF-16 unit, written as UTF-8), `%%`; flags, width
/// and precision as in C. Type-safe: an argument that does not fit its conversion is converted
/// (a text under `%d` is read as a number, a number under `%s` is written out), and a conversion
/// that has no argument left, or that is unknown, is written as it stands. Surplus arguments are
/// ignored. Text is UTF-8. Any thread.
[[nodiscard]] std::string formatStringWithArguments(std::string_view format,
                                                    std::span<const FormatArgument> arguments);

template <typename... Arguments>
[[nodiscard]] std::string formatString(std::string_view format, const Arguments&... arguments) {
    const std::initializer_list<FormatArgument> list{FormatArgument(arguments)...};
    return formatStringWithArguments(format, {list.begin(), list.size()});
}

}  // namespace vornic

#endif
