#ifndef VORNIC_BASE_ASCII_H
#define VORNIC_BASE_ASCII_H

#include <optional>

/// Classes of ASCII characters, whatever the locale is; no byte from 0x80 on belongs to any. Pure,
/// any thread.
namespace vornic {

[[nodiscard]] constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

[[nodiscard]] constexpr bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// The value of a hexadecimal digit, 0 to 15; nothing for another character.
[[nodiscard]] constexpr std::optional<unsigned> hexDigit(char c) {
    if (isDigit(c)) {
        return static_cast<unsigned>(c - '0');
    }
    if ((c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F')) {
        return static_cast<unsigned>((c | 0x20) - 'a' + 10);
    }
    return std::nullopt;
}

/// A letter in lower case; any other character as it is.
[[nodiscard]] constexpr char lowercased(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace vornic

#endif
