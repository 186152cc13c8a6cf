#include "base/TextConverter.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>

#include <iconv.h>

#include "base/Utf8.h"

namespace vornic {

namespace {

constexpr std::size_t kFailed = static_cast<std::size_t>(-1);
constexpr unsigned char kFirstOfUpperHalf = 0x80;

// The upper half of Mac Roman, 0x80 to 0xFF.
constexpr std::array<char16_t, 128> kMacRoman{
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, 0x00E0, 0x00E2, 0x00E4, 0x00E3,
    0x00E5, 0x00E7, 0x00E9, 0x00E8, 0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3,
    0x00F2, 0x00F4, 0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC, 0x2020, 0x00B0, 0x00A2, 0x00A3,
    0x00A7, 0x2022, 0x00B6, 0x00DF, 0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8,
    0x221E, 0x00B1, 0x2264, 0x2265, 0x00A5, 0x00B5, 0x2202, 0x2211, 0x220F, 0x03C0, 0x222B, 0x00AA,
    0x00BA, 0x03A9, 0x00E6, 0x00F8, 0x00BF, 0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB,
    0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5, 0x0152, 0x0153, 0x2013, 0x2014, 0x201C, 0x201D,
    0x2018, 0x2019, 0x00F7, 0x25CA, 0x00FF, 0x0178, 0x2044, 0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02,
    0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1, 0x00CB, 0x00C8, 0x00CD, 0x00CE,
    0x00CF, 0x00CC, 0x00D3, 0x00D4, 0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9, 0x0131, 0x02C6, 0x02DC,
    0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7};

std::size_t decodeMacRoman(std::string_view bytes, std::string& text) {
    for (const char byte : bytes) {
        const auto number = static_cast<unsigned char>(byte);
        appendUtf8(text,
                   number < kFirstOfUpperHalf ? number : kMacRoman[number - kFirstOfUpperHalf]);
    }
    return bytes.size();
}

std::size_t encodeMacRoman(std::string_view utf8, std::string& bytes) {
    std::size_t at = 0;
    while (at < utf8.size()) {
        const Utf8Character character = utf8CharacterAt(utf8, at);
        if (character.code < kFirstOfUpperHalf) {
            bytes += utf8[at];
        } else {
            const auto* const found = std::find(kMacRoman.begin(), kMacRoman.end(), character.code);
            if (!character.isValid || found == kMacRoman.end()) {
                break;
            }
            bytes += static_cast<char>(kFirstOfUpperHalf + (found - kMacRoman.begin()));
        }
        at += character.length;
    }
    return at;
}

void* failedHandle() {
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(-1));  // NOLINT: as iconv has it
}

}  // namespace

TextConverter::TextConverter(const char* from, const char* into)
    : kind_(from == std::string_view(kMacRoman)   ? Kind::fromMacRoman
            : into == std::string_view(kMacRoman) ? Kind::intoMacRoman
                                                  : Kind::system),
      handle_(kind_ == Kind::system ? iconv_open(into, from) : failedHandle()) {}

TextConverter::~TextConverter() {
    if (handle_ != failedHandle()) {
        iconv_close(handle_);
    }
}

bool TextConverter::isOpen() const {
    return kind_ != Kind::system || handle_ != failedHandle();
}

std::size_t TextConverter::convert(std::string_view bytes, std::string& text) {
    switch (kind_) {
        case Kind::fromMacRoman:
            return decodeMacRoman(bytes, text);
        case Kind::intoMacRoman:
            return encodeMacRoman(bytes, text);
        case Kind::system:
            break;
    }
    return convertBySystem(bytes, text);
}

std::size_t TextConverter::convertBySystem(std::string_view bytes, std::string& text) {
    std::array<char, 65536> buffer;  // NOLINT: filled by the system
    // The interface takes a pointer to what it only reads.
    char* in = const_cast<char*>(bytes.data());  // NOLINT(cppcoreguidelines-pro-type-const-cast)
    std::size_t left = bytes.size();
    while (left != 0) {
        char* out = buffer.data();
        std::size_t room = buffer.size();
        const std::size_t result = iconv(handle_, &in, &left, &out, &room);
        text.append(buffer.data(), buffer.size() - room);
        if (result == kFailed && errno != E2BIG) {
            break;
        }
    }
    return bytes.size() - left;
}

}  // namespace vornic
