#include "xml/text/TextPlace.h"

#include <algorithm>
#include <cstdint>

namespace vornic {

namespace {

constexpr std::size_t kExcerptCharacters = 40;

bool beginsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

// Whether a line ends with the byte: LF, or CR that no LF follows.
bool endsLine(std::string_view text, std::size_t offset) {
    const bool isLast = offset + 1 == text.size();
    return text[offset] == '\n' || (text[offset] == '\r' && (isLast || text[offset + 1] != '\n'));
}

// How many lines end in a part of the text. A quarter of a check's time would go into this byte by
// byte, so the loop is one that compilers turn into vector instructions: no branch, and a
// counter as narrow as a byte.
std::size_t lineEnds(std::string_view text, std::size_t offset, std::size_t end) {
    constexpr std::size_t kBlock = 255;
    const std::size_t last = end == text.size() && end != offset ? end - 1 : end;
    std::size_t count = last < end && endsLine(text, last) ? 1 : 0;
    while (offset < last) {
        const char* const bytes = text.data() + offset;
        const std::size_t length = std::min(kBlock, last - offset);
        std::uint8_t ends = 0;
        for (std::size_t i = 0; i < length; ++i) {
            const bool isLineFeed = bytes[i] == '\n';
            const bool isReturn = bytes[i] == '\r';
            const bool isPair = bytes[i + 1] == '\n';
            ends = static_cast<std::uint8_t>(ends + (isLineFeed | (isReturn & !isPair)));
        }
        count += ends;
        offset += length;
    }
    return count;
}

// A line must end before the offset.
std::size_t behindLastLineEnd(std::string_view text, std::size_t offset) {
    while (!endsLine(text, offset - 1)) {
        --offset;
    }
    return offset;
}

std::ptrdiff_t at(std::size_t offset) {
    return static_cast<std::ptrdiff_t>(offset);
}

}  // namespace

void TextPlace::moveTo(std::size_t offset) {
    if (offset < offset_) {
        *this = TextPlace(text_);
    }
    const std::size_t target = std::min(offset, text_.size());
    if (const std::size_t ends = lineEnds(text_, offset_, target); ends != 0) {
        line_ += ends;
        column_ = 1;
        offset_ = behindLastLineEnd(text_, target);
    }
    column_ += static_cast<std::size_t>(
        std::count_if(text_.begin() + at(offset_), text_.begin() + at(target), beginsCharacter));
    offset_ = target;
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
