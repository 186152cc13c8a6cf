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

}  // namespace vornic::platform

#endif
