#include "base/PercentEncoding.h"

#include <algorithm>
#include <cstddef>

#include "base/ASCII.h"

namespace vornic::platform {

namespace {

constexpr std::size_t kEscapeLength = 3;

// The byte that the escape at the beginning of the text stands for; nothing when none begins there.
std::optional<unsigned> escapedByte(std::string_view text) {
    if (text.size() < kEscapeLength || text[0] != '%') {
        return std::nullopt;
    }
    const std::optional<unsigned> high = hexDigit(text[1]);
    const std::optional<unsigned> low = hexDigit(text[2]);
    return high && low ? std::optional((*high << 4U) | *low) : std::nullopt;
}

// @param highest no escape may stand for a byte above it
std::optional<std::string> decodedUpTo(std::string_view text, unsigned highest) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] != '%') {
            decoded += text[i++];
            continue;
        }
        const std::optional<unsigned> byte = escapedByte(text.substr(i));
        if (!byte || *byte > highest) {
            return std::nullopt;
        }
        decoded += static_cast<char>(*byte);
        i += kEscapeLength;
    }
    return decoded;
}

}  // namespace

std::string percentEncoded(std::string_view text, std::string_view kept) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    constexpr std::string_view kMarks = "-._~";
    std::string encoded;
    for (const char character : text) {
        const bool isPlain = isLetter(character) || isDigit(character) ||
                             kMarks.find(character) != std::string_view::npos ||
                             kept.find(character) != std::string_view::npos;
        if (isPlain) {
            encoded += character;
        } else {
            const auto byte = static_cast<unsigned char>(character);
            encoded.append({'%', kDigits[byte >> 4U], kDigits[byte & 0xFU]});
        }
    }
    return encoded;
}

std::optional<std::string> percentDecoded(std::string_view text) {
    return decodedUpTo(text, 0xFF);
}

std::optional<std::string> percentDecodedASCII(std::string_view text) {
    return decodedUpTo(text, 0x7F);
}

std::string percentDecodedPath(std::string_view path) {
    std::string decoded;
    decoded.reserve(path.size());
    for (std::size_t i = 0; i < path.size();) {
        const unsigned byte = escapedByte(path.substr(i)).value_or(0);
        decoded += byte != 0 ? static_cast<char>(byte) : path[i];
        i += byte != 0 ? kEscapeLength : 1;
    }
    return decoded;
}

bool isURLScheme(std::string_view text) {
    return !text.empty() && isLetter(text[0]) && std::all_of(text.begin(), text.end(), [](char c) {
        return isLetter(c) || isDigit(c) || c == '+' || c == '-' || c == '.';
    });
}

std::string_view pathOfURL(std::string_view url) {
    std::string_view rest = url.substr(0, url.find_first_of("?#"));
    const std::size_t colon = rest.find(':');
    if (colon != std::string_view::npos && isURLScheme(rest.substr(0, colon))) {
        rest.remove_prefix(colon + 1);
    }
    if (!rest.starts_with("//")) {
        return rest;
    }
    rest.remove_prefix(2);
    const std::size_t slash = rest.find('/');
    return slash == std::string_view::npos ? std::string_view() : rest.substr(slash);
}

}  // namespace vornic::platform
