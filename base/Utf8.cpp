#include "base/Utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "base/FormatString.h"

namespace vornic {

namespace {

constexpr char32_t kReplacementCharacter = 0xFFFD;
constexpr Utf8Character kInvalidByte{.code = kReplacementCharacter, .length = 1, .isValid = false};

/// What the first byte of a sequence tells: the length, its own bits and the smallest code point
/// that needs that length. A length of 0 begins no sequence.
struct Lead {
    std::size_t length = 0;
    char32_t bits = 0;
    char32_t smallest = 0;
};

Lead leadOf(unsigned char byte) {
    if (byte < 0x80U) {
        return {.length = 1, .bits = byte, .smallest = 0};
    }
    if (byte >= 0xC2U && byte <= 0xDFU) {
        return {.length = 2, .bits = byte & 0x1FU, .smallest = 0x80};
    }
    if (byte >= 0xE0U && byte <= 0xEFU) {
        return {.length = 3, .bits = byte & 0x0FU, .smallest = 0x800};
    }
    if (byte >= 0xF0U && byte <= 0xF4U) {
        return {.length = 4, .bits = byte & 0x07U, .smallest = 0x10000};
    }
    return {};
}

bool isSurrogate(char32_t code) {
    return code >= 0xD800 && code <= 0xDFFF;
}

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

}  // namespace

Utf8Character utf8CharacterAt(std::string_view text, std::size_t position) {
    const Lead lead = leadOf(static_cast<unsigned char>(text[position]));
    if (lead.length == 0 || lead.length > text.size() - position) {
        return kInvalidByte;
    }
    char32_t code = lead.bits;
    for (std::size_t i = 1; i < lead.length; ++i) {
        const char byte = text[position + i];
        if (!isContinuation(byte)) {
            return kInvalidByte;
        }
        code = (code << 6U) | (static_cast<unsigned char>(byte) & 0x3FU);
    }
    if (code < lead.smallest || code > 0x10FFFF || isSurrogate(code)) {
        return kInvalidByte;
    }
    return {.code = code, .length = lead.length, .isValid = true};
}

Utf8Character utf8CharacterBefore(std::string_view text, std::size_t end) {
    const std::size_t longest = std::min<std::size_t>(4, end);
    for (std::size_t length = 1; length <= longest; ++length) {
        if (isContinuation(text[end - length])) {
            continue;
        }
        const Utf8Character character = utf8CharacterAt(text.substr(0, end), end - length);
        return character.length == length ? character : kInvalidByte;
    }
    return kInvalidByte;
}

std::size_t asciiPrefixLength(std::string_view text) {
    constexpr std::size_t kWords = 8;
    constexpr std::uint64_t kHighBits = 0x8080808080808080;
    std::array<std::uint64_t, kWords> block{};
    std::size_t length = 0;
    for (; text.size() - length >= sizeof block; length += sizeof block) {
        std::memcpy(block.data(), text.data() + length, sizeof block);
        std::uint64_t all = 0;
        for (const std::uint64_t word : block) {
            all |= word;
        }
        if ((all & kHighBits) != 0) {
            break;
        }
    }
    while (length < text.size() && static_cast<unsigned char>(text[length]) < 0x80) {
        ++length;
    }
    return length;
}

void appendUtf8(std::string& text, char32_t code) {
    if (code > 0x10FFFF || isSurrogate(code)) {
        code = kReplacementCharacter;
    }
    const auto append = [&text](char32_t byte) { text += static_cast<char>(byte); };
    if (code < 0x80) {
        append(code);
        return;
    }
    if (code < 0x800) {
        append(0xC0U | (code >> 6U));
    } else {
        if (code < 0x10000) {
            append(0xE0U | (code >> 12U));
        } else {
            append(0xF0U | (code >> 18U));
            append(0x80U | ((code >> 12U) & 0x3FU));
        }
        append(0x80U | ((code >> 6U) & 0x3FU));
    }
    append(0x80U | (code & 0x3FU));
}

std::string codePointName(char32_t code) {
    return formatString("U+%04X", static_cast<unsigned>(code));
}

void appendAsValidUtf8(std::string& text, std::string_view bytes) {
    std::size_t pending = 0;
    for (std::size_t i = 0; i < bytes.size();) {
        if (static_cast<unsigned char>(bytes[i]) < 0x80U) {
            ++i;
            continue;
        }
        const Utf8Character character = utf8CharacterAt(bytes, i);
        if (!character.isValid) {
            text.append(bytes, pending, i - pending);
            appendUtf8(text, kReplacementCharacter);
            pending = i + 1;
        }
        i += character.length;
    }
    text.append(bytes, pending);
}

}  // namespace vornic
