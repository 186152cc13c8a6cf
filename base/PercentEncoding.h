#ifndef VORNIC_BASE_PERCENT_ENCODING_H
#define VORNIC_BASE_PERCENT_ENCODING_H

#include <optional>
#include <string>
#include <string_view>

namespace vornic::platform {

/// The text as it may stand in an address (RFC 3986): each byte but the unreserved ASCII characters
/// (letters, digits, "-", ".", "_", "~") and those in `kept` becomes "%" and two hexadecimal digits
/// in upper case. Any thread.
[[nodiscard]] std::string percentEncoded(std::string_view text, std::string_view kept = "");

/// The bytes that such a text stands for; every other character stands for itself. Any thread.
/// @return nothing when a "%" is not followed by two hexadecimal digits.
[[nodiscard]] std::optional<std::string> percentDecoded(std::string_view text);

/// The text with its percent escapes replaced by the ASCII characters that they stand for; what is
/// not escaped stays as it is. Any thread.
/// @return nothing when a "%" begins no escape or an escape stands for a byte above 0x7F.
[[nodiscard]] std::optional<std::string> percentDecodedASCII(std::string_view text);

/// The path of a URL with its percent escapes replaced by the bytes that they stand for. A "%" that
/// begins no escape, and the escape of NUL, which no path can hold, are kept as they stand. Any
/// thread.
[[nodiscard]] std::string percentDecodedPath(std::string_view path);

/// True for the scheme of a URL: a letter, then letters, digits, "+", "-" and "." (RFC 3986,
/// section 3.1). Any thread.
[[nodiscard]] bool isURLScheme(std::string_view text);

/// The path of a URL by RFC 3986 section 3: what is left without the scheme, the authority, the
/// query and the fragment. Escapes are kept. Any thread.
[[nodiscard]] std::string_view pathOfURL(std::string_view url);

}  // namespace vornic::platform

#endif
