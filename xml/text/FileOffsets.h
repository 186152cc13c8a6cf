#ifndef VORNIC_XML_TEXT_FILE_OFFSETS_H
#define VORNIC_XML_TEXT_FILE_OFFSETS_H

#include <cstddef>
#include <string_view>

#include "xml/text/TextDecoding.h"

namespace vornic {

/// Turns offsets in a decoded text into those of the file's bytes. From one offset to the next
/// costs what lies between them, in either direction; in UTF-8 nothing.
class FileOffsets {
  public:
    /// @param text what `decodeXMLText` made of the file; must outlive this.
    FileOffsets(std::string_view text, const TextDecoding& decoding);

    /// The offset in the file of a character of the text, or of the text's end. Offsets inside a
    /// character count as its beginning.
    [[nodiscard]] std::size_t of(std::size_t textOffset);

  private:
    [[nodiscard]] std::size_t bytesOfCharacterAt(std::size_t offset) const;

    std::string_view text_;
    bool isUTF8_;
    bool isUTF16_;
    std::size_t textOffset_ = 0;
    std::size_t fileOffset_;
};

}  // namespace vornic

#endif
