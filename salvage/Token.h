#ifndef VORNIC_SALVAGE_TOKEN_H
#define VORNIC_SALVAGE_TOKEN_H

#include <cstdint>
#include <limits>

namespace vornic::salvage {

/// The number of an element name in a `NameTable`.
using NameId = std::uint16_t;

enum class TokenKind : std::uint8_t {
    /// `<name …>`.
    start,
    /// `<name …/>`.
    empty,
    /// `</name>`.
    end,
    /// Characters that are not white space alone, or a CDATA section.
    text,
    /// A comment, processing instruction or document type declaration.
    other,
};

/// A piece of a broken text. White space between pieces is none.
struct Token {
    std::uint32_t offset = 0;
    /// Behind the last byte. For text: behind the last character that is no white space.
    std::uint32_t end = 0;
    NameId name = 0;
    /// The columns in front of a piece that stands first on its line, a tab counting as four;
    /// `kNoIndent` for others.
    std::int16_t indent = -1;
    TokenKind kind = TokenKind::text;

    static constexpr std::int16_t kNoIndent = -1;
};
static_assert(sizeof(Token) == 16);

/// Longer texts are not salvaged.
inline constexpr std::size_t kLongestText = std::numeric_limits<std::uint32_t>::max() - 1;

}  // namespace vornic::salvage

#endif
