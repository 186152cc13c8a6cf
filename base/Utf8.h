#ifndef VORNIC_BASE_UTF8_H
#define VORNIC_BASE_UTF8_H

#include <cstddef>
#include <string>
#include <string_view>

namespace vornic {

/// One character of a UTF-8 text, or one byte of it that is no UTF-8.
struct Utf8Character {
    /// The code point; U+FFFD for a byte that is no UTF-8.
    char32_t code = 0;
    /// The number of bytes that it takes, 1 to 4.
    std::size_t length = 1;
    bool isValid = true;
};

/// Reads the character that begins at `position`, which must lie inside the text. A byte that
/// begins no well-formed sequence (RFC 3629: no overlong form, no surrogate, nothing above
/// U+10FFFF) is read by itself. Any thread.
[[nodiscard]] Utf8Character utf8CharacterAt(std::string_view text, std::size_t position);

/// The same, without a look at what is no UTF-8, for a text that is known to be well-formed and has
/// its character there.
[[nodiscard]] inline Utf8Character wellFormedUtf8At(const char* at) {
    const auto byte = [at](std::size_t i) { return static_cast<unsigned char>(at[i]); };
    const auto rest = [&byte](std::size_t i) { return byte(i) & 0x3FU; };
    if (byte(0) < 0x80) {
        return {.code = byte(0), .length = 1};
    }
    if (byte(0) < 0xE0) {
        return {.code = (byte(0) & 0x1FU) << 6U | rest(1), .length = 2};
    }
    if (byte(0) < 0xF0) {
        return {.code = (byte(0) & 0x0FU) << 12U | rest(1) << 6U | rest(2), .length = 3};
    }
    return {.code = (byte(0) & 0x07U) << 18U | rest(1) << 12U | rest(2) << 6U | rest(3),
            .length = 4};
}

/// Reads the character that ends just before `end`, which must be above 0 and not above the length.
[[nodiscard]] Utf8Character utf8CharacterBefore(std::string_view text, std::size_t end);

/// The length of the run of ASCII characters that the text begins with.
[[nodiscard]] std::size_t asciiPrefixLength(std::string_view text);

/// Appends a code point; what no UTF-8 can hold (a surrogate, say) is appended as U+FFFD.
void appendUtf8(std::string& text, char32_t code);

/// "U+FF01", with at least four digits.
[[nodiscard]] std::string codePointName(char32_t code);

/// Appends the text with every byte that is no UTF-8 replaced by U+FFFD.
void appendAsValidUtf8(std::string& text, std::string_view bytes);

}  // namespace vornic

#endif
