#ifndef VORNIC_BASE_TEXT_H
#define VORNIC_BASE_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Small operations on UTF-8 text. All are pure and may be called from any thread.
namespace vornic {

/// Reads a number the way the platform's strings do: leading white space skipped, an optional sign,
/// decimal digits up to the first other character; no digits give 0. Values outside the range are
/// held at its ends.
[[nodiscard]] std::int64_t integerValue(std::string_view text);

/// The length in UTF-16 code units. Bytes that are no UTF-8 count as one unit each.
[[nodiscard]] std::size_t utf16Length(std::string_view text);

/// The text without white space and line breaks at both ends (ASCII white space and the Unicode
/// separators).
[[nodiscard]] std::string_view trimmed(std::string_view text);

/// ASCII letters in lower case, everything else as it is.
[[nodiscard]] std::string lowercased(std::string_view text);

/// Letters of every script in lower case, as far as one character stands for one; bytes that are no
/// UTF-8 as they are.
[[nodiscard]] std::string lowercasedLetters(std::string_view text);

/// The same in upper case. A letter whose upper case is two letters, such as the sharp s, stays.
[[nodiscard]] std::string uppercasedLetters(std::string_view text);

/// Orders two texts without regard to the case of ASCII letters: below, equal to or above 0.
[[nodiscard]] int caseInsensitiveCompare(std::string_view left, std::string_view right);

/// `text` with every `what` replaced by `with`; an empty `what` replaces nothing.
[[nodiscard]] std::string replacingOccurrences(std::string_view text, std::string_view what,
                                               std::string_view with);

}  // namespace vornic

#endif
