#include "platform/PercentEncoding.h"

#include <cctype>

namespace vornic::platform {

std::string percentEncoded(std::string_view text, std::string_view kept) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    constexpr std::string_view kUnreserved = "-._~";
    std::string encoded;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        const bool isPlain = (byte < 0x80 && std::isalnum(byte) != 0) ||
                             kUnreserved.find(character) != std::string_view::npos ||
                             kept.find(character) != std::string_view::npos;
        if (isPlain) {
            encoded += character;
        } else {
            encoded.append({'%', kDigits[byte >> 4U], kDigits[byte & 0xFU]});
        }
    }
    return encoded;
}

}  // namespace vornic::platform
