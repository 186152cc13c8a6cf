#include "report/JSONText.h"

#include <algorithm>
#include <utility>

#include "base/Utf8.h"

namespace vornic {

namespace {

constexpr unsigned char kFirstPrintable = 0x20;

bool isPlain(char character) {
    const auto code = static_cast<unsigned char>(character);
    return code >= kFirstPrintable && code < 0x80 && character != '"' && character != '\\';
}

// A character that may not stand in a string as it is (RFC 8259, section 7).
void appendEscaped(std::string& text, char character) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    const auto code = static_cast<unsigned char>(character);
    switch (character) {
        case '"':
        case '\\':
            text.append(1, '\\').append(1, character);
            break;
        case '\n':
            text += "\\n";
            break;
        case '\r':
            text += "\\r";
            break;
        case '\t':
            text += "\\t";
            break;
        default:
            text.append("\\u00").append(1, kDigits[code >> 4]).append(1, kDigits[code & 0xFU]);
    }
}

}  // namespace

JSONText& JSONText::key(std::string_view name) {
    part();
    text_.append(1, '"').append(name).append("\":");
    needsComma_ = false;
    return *this;
}

JSONText& JSONText::value(std::string_view text) {
    part();
    text_ += '"';
    while (!text.empty()) {
        const auto end = std::find_if_not(text.begin(), text.end(), isPlain);
        const auto plain = static_cast<std::size_t>(end - text.begin());
        text_.append(text.substr(0, plain));
        text.remove_prefix(plain);
        if (text.empty()) {
            break;
        }
        std::size_t length = 1;
        if (static_cast<unsigned char>(text.front()) < 0x80) {
            appendEscaped(text_, text.front());
        } else {
            const Utf8Character character = utf8CharacterAt(text, 0);
            appendUtf8(text_, character.code);
            length = character.length;
        }
        text.remove_prefix(length);
    }
    text_ += '"';
    needsComma_ = true;
    return *this;
}

JSONText& JSONText::newLine() {
    if (std::exchange(needsComma_, false)) {
        text_ += ',';
    }
    text_ += '\n';
    return *this;
}

std::string JSONText::take() {
    return std::exchange(text_, {});
}

JSONText& JSONText::begin(char bracket) {
    part();
    text_ += bracket;
    needsComma_ = false;
    return *this;
}

JSONText& JSONText::end(char bracket) {
    text_ += bracket;
    needsComma_ = true;
    return *this;
}

JSONText& JSONText::bare(std::string_view token) {
    part();
    text_ += token;
    needsComma_ = true;
    return *this;
}

void JSONText::part() {
    if (needsComma_) {
        text_ += ',';
    }
}

}  // namespace vornic
