#ifndef VORNIC_XML_TEXT_PERCENT_ESCAPES_H
#define VORNIC_XML_TEXT_PERCENT_ESCAPES_H

#include <optional>
#include <string>
#include <string_view>

/// URLs and percent escapes as they stand in Final Cut Pro XML. Pure operations, any thread.
namespace vornic {

/// The text with its percent escapes replaced by the ASCII characters that they stand for; what is
/// not escaped stays as it is.
/// @return nothing when a "%" begins no escape or an escape stands for a byte above 0x7F.
[[nodiscard]] std::optional<std::string> percentDecodedASCII(std::string_view text);

/// The path of a URL with its percent escapes replaced by the bytes that they stand for. A "%" that
/// begins no escape, and the escape of NUL, which no path can hold, are kept as they stand.
[[nodiscard]] std::string percentDecodedPath(std::string_view path);

/// The path of a URL by RFC 3986 section 3: what is left without the scheme, the authority, the
/// query and the fragment. Escapes are kept.
[[nodiscard]] std::string_view pathOfURL(std::string_view url);

}  // namespace vornic

#endif
