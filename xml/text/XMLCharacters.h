#ifndef VORNIC_XML_TEXT_XML_CHARACTERS_H
#define VORNIC_XML_TEXT_XML_CHARACTERS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// The character classes of XML 1.0 (fifth edition), as tables over bytes for the ASCII range and
/// as range checks above it.
namespace vornic::xmlchars {

/// Bytes of the ASCII range that a reading loop passes over without a closer look, one bit for each
/// class. Bytes from 0x80 on and the control characters that XML forbids are in none of them.
using ByteClass = unsigned;

/// In character data: anything but `<`, `&` and `]`.
inline constexpr ByteClass kPlainText = 1U << 0U;
/// In an attribute value: anything but quotes, `<` and `&`.
inline constexpr ByteClass kPlainValue = 1U << 1U;
/// In a comment, CDATA section or processing instruction: anything but `-`, `]` and `?`.
inline constexpr ByteClass kPlainData = 1U << 2U;
inline constexpr ByteClass kName = 1U << 3U;
inline constexpr ByteClass kNameStart = 1U << 4U;
inline constexpr ByteClass kSpace = 1U << 5U;
/// In a public identifier.
inline constexpr ByteClass kPublicId = 1U << 6U;

namespace detail {

consteval std::array<std::uint8_t, 256> byteClasses() {
    std::array<std::uint8_t, 256> table{};
    constexpr std::string_view kPublicMarks = "-'()+,./:=?;!*#@$_% \r\n";
    for (unsigned byte = 0; byte < 0x80; ++byte) {
        const char c = static_cast<char>(byte);
        const bool space = c == ' ' || c == '\t' || c == '\n' || c == '\r';
        const bool digit = c >= '0' && c <= '9';
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        const bool nameStart = letter || c == '_' || c == ':';
        unsigned classes = 0;
        if (byte >= 0x20 || space) {
            classes |= c != '<' && c != '&' && c != ']' ? kPlainText : 0U;
            classes |= c != '<' && c != '&' && c != '"' && c != '\'' ? kPlainValue : 0U;
            classes |= c != '-' && c != ']' && c != '?' ? kPlainData : 0U;
        }
        classes |= nameStart || digit || c == '-' || c == '.' ? kName : 0U;
        classes |= nameStart ? kNameStart : 0U;
        classes |= space ? kSpace : 0U;
        classes |=
            letter || digit || kPublicMarks.find(c) != std::string_view::npos ? kPublicId : 0U;
        table[byte] = static_cast<std::uint8_t>(classes);
    }
    return table;
}

inline constexpr std::array<std::uint8_t, 256> kByteClasses = byteClasses();

}  // namespace detail

[[nodiscard]] inline bool is(char byte, ByteClass byteClass) {
    return (detail::kByteClasses[static_cast<unsigned char>(byte)] & byteClass) != 0;
}

[[nodiscard]] inline bool isASCII(char byte) {
    return static_cast<unsigned char>(byte) < 0x80;
}

/// The place after the white space that begins at `at`.
[[nodiscard]] const char* afterLongSpace(const char* at, const char* end);
[[nodiscard]] inline const char* afterSpace(const char* at, const char* end) {
    // Where white space may stand there is mostly none, or an indentation.
    if (at == end || !is(*at, kSpace)) {
        return at;
    }
    return ++at == end || !is(*at, kSpace) ? at : afterLongSpace(at, end);
}

/// A character decoded from UTF-8. `length` is 0 when the bytes are not well-formed.
struct Decoded {
    char32_t character = 0;
    std::size_t length = 0;
};

/// Decodes the character that begins at `at`, which is before `end`.
[[nodiscard]] Decoded decode(const char* at, const char* end);

/// The production Char: what may stand in a document at all.
[[nodiscard]] constexpr bool isAllowed(char32_t c) {
    return c >= 0x20
               ? c <= 0xD7FF || (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF)
               : c == '\t' || c == '\n' || c == '\r';
}

/// The productions NameStartChar and NameChar.
[[nodiscard]] bool isNameStart(char32_t c);
[[nodiscard]] bool isNameCharacter(char32_t c);

/// The length of the name, or of the run of name characters (Nmtoken), at `at`; 0 when none begins
/// there. Malformed UTF-8 ends it.
[[nodiscard]] std::size_t nameLength(const char* at, const char* end);
[[nodiscard]] std::size_t nameTokenLength(const char* at, const char* end);

}  // namespace vornic::xmlchars

#endif
