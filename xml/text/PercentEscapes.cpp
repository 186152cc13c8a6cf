#include "xml/text/PercentEscapes.h"

#include <algorithm>
#include <cstddef>

namespace vornic {

namespace {

constexpr std::size_t kEscapeLength = 3;

bool isLetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

std::optional<unsigned> hexDigit(char character) {
    if (isDigit(character)) {
        return static_cast<unsigned>(character - '0');
    }
    const char lower = static_cast<char>(character | 0x20);
    if (lower >= 'a' && lower <= 'f') {
        return static_cast<unsigned>(lower - 'a' + 10);
    }
    return std::nullopt;
}

/// The byte that the escape at the beginning of the text stands for, or nothing when none begins
/// there.
std::optional<unsigned> escapedByte(std::string_view text) {
    if (text.size() < kEscapeLength || text[0] != '%') {
        return std::nullopt;
    }
    const std::optional<unsigned> high = hexDigit(text[1]);
    const std::optional<unsigned> low = hexDigit(text[2]);
    return high && low ? std::optional((*high << 4U) | *low) : std::nullopt;
}

bool isScheme(std::string_view text) {
    return !text.empty() && isLetter(text[0]) &&
           std::all_of(text.begin(), text.end(), [](char character) {
               return isLetter(character) || isDigit(character) || character == '+' ||
                      character == '-' || character == '.';
           });
}

}  // namespace

std::optional<std::string> percentDecodedASCII(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] != '%') {
            decoded += text[i++];
            continue;
        }
        const std::optional<unsigned> byte = escapedByte(text.substr(i));
        if (!byte || *byte > 0x7F) {
            return std::nullopt;
        }
        decoded += static_cast<char>(*byte);
        i += kEscapeLength;
    }
    return decoded;
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

std::string_view pathOfURL(std::string_view url) {
    std::string_view rest = url.substr(0, url.find_first_of("?#"));
    const std::size_t colon = rest.find(':');
    if (colon != std::string_view::npos && isScheme(rest.substr(0, colon))) {
        rest.remove_prefix(colon + 1);
    }
    if (!rest.starts_with("//")) {
        return rest;
    }
    rest.remove_prefix(2);
    const std::size_t slash = rest.find('/');
    return slash == std::string_view::npos ? std::string_view() : rest.substr(slash);
}

}  // namespace vornic
