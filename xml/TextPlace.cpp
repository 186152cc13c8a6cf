#include "xml/TextPlace.h"

#include <algorithm>

namespace vornic {

namespace {

constexpr std::size_t kExcerptCharacters = 40;

bool beginsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

}  // namespace

void TextPlace::moveTo(std::size_t offset) {
    if (offset < offset_) {
        *this = TextPlace(text_);
    }
    const std::size_t target = std::min(offset, text_.size());
    for (; offset_ < target; ++offset_) {
        const char byte = text_[offset_];
        const bool endsLine =
            byte == '\n' ||
            (byte == '\r' && (offset_ + 1 == text_.size() || text_[offset_ + 1] != '\n'));
        if (endsLine) {
            ++line_;
            column_ = 1;
        } else if (beginsCharacter(byte)) {
            ++column_;
        }
    }
}

std::string sentenceWithPlace(std::size_t line, std::size_t column, std::string_view sentence) {
    std::string result =
        "Line " + std::to_string(line) + ", column " + std::to_string(column) + ": ";
    result += sentence;
    return result;
}

std::string excerpt(std::string_view text) {
    std::size_t characters = 0;
    for (std::size_t offset = 0; offset < text.size(); ++offset) {
        if (beginsCharacter(text[offset]) && ++characters > kExcerptCharacters) {
            return std::string(text.substr(0, offset)) + "…";
        }
    }
    return std::string(text);
}

}  // namespace vornic
