#include "xml/text/FileOffsets.h"

#include <algorithm>

namespace vornic {

namespace {

bool beginsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

}  // namespace

FileOffsets::FileOffsets(std::string_view text, const TextDecoding& decoding)
    : text_(text),
      isUTF8_(decoding.encoding == "UTF-8"),
      isUTF16_(decoding.encoding.starts_with("UTF-16")),
      fileOffset_(decoding.markLength) {}

// Every other encoding has one byte for each character.
std::size_t FileOffsets::bytesOfCharacterAt(std::size_t offset) const {
    constexpr unsigned char kFirstOfFourBytes = 0xF0;
    if (!isUTF16_) {
        return 1;
    }
    return static_cast<unsigned char>(text_[offset]) >= kFirstOfFourBytes ? 4 : 2;
}

std::size_t FileOffsets::of(std::size_t textOffset) {
    textOffset = std::min(textOffset, text_.size());
    if (isUTF8_) {
        return fileOffset_ + textOffset;
    }
    while (textOffset < text_.size() && textOffset != 0 && !beginsCharacter(text_[textOffset])) {
        --textOffset;
    }
    while (textOffset_ < textOffset) {
        fileOffset_ += bytesOfCharacterAt(textOffset_);
        do {
            ++textOffset_;
        } while (textOffset_ < textOffset && !beginsCharacter(text_[textOffset_]));
    }
    while (textOffset_ > textOffset) {
        do {
            --textOffset_;
        } while (!beginsCharacter(text_[textOffset_]));
        fileOffset_ -= bytesOfCharacterAt(textOffset_);
    }
    return fileOffset_;
}

}  // namespace vornic
