#ifndef VORNIC_PLATFORM_PERCENT_ENCODING_H
#define VORNIC_PLATFORM_PERCENT_ENCODING_H

#include <string>
#include <string_view>

namespace vornic::platform {

/// The text as it may stand in an address (RFC 3986): each byte but the unreserved ASCII characters
/// (letters, digits, "-", ".", "_", "~") and those in `kept` becomes "%" and two hexadecimal digits
/// in upper case. Any thread.
[[nodiscard]] std::string percentEncoded(std::string_view text, std::string_view kept = "");

}  // namespace vornic::platform

#endif
