#include "base/PercentEncoding.h"

#include <cctype>
#include <charconv>
#include <system_error>

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

std::optional<std::string> percentDecoded(std::string_view text) {
    constexpr int kHexadecimal = 16;
    std::string decoded;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            decoded += text[at];
            continue;
        }
        unsigned byte = 0;
        const std::string_view digits = text.substr(at + 1, 2);
        const auto [end, error] =
            std::from_chars(digits.data(), digits.data() + digits.size(), byte, kHexadecimal);
        if (digits.size() != 2 || error != std::errc() || end != digits.data() + 2) {
            return std::nullopt;
        }
        decoded += static_cast<char>(byte);
        at += 2;
    }
    return decoded;
}

}  // namespace vornic::platform
