#ifndef VORNIC_XML_TEXT_NUMBER_REFERENCE_H
#define VORNIC_XML_TEXT_NUMBER_REFERENCE_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vornic {

/// A reference by number (XML 1.0, section 4.1), such as "&#233;" or "&#xE9;".
struct NumberReference {
    /// Of any size; XML does not allow all.
    std::uint32_t number = 0;
    /// From the ampersand to behind the semicolon; 0 for what is no such reference.
    std::size_t length = 0;

    /// Half of a pair that UTF-16 keeps a character in, and which half.
    [[nodiscard]] bool isFirstHalf() const {
        return length != 0 && number >= 0xD800 && number <= 0xDBFF;
    }
    [[nodiscard]] bool isSecondHalf() const {
        return length != 0 && number >= 0xDC00 && number <= 0xDFFF;
    }
};

/// The one that the text begins with, unless it has more leading zeros than anybody writes. Takes
/// the same time whatever the text.
[[nodiscard]] NumberReference numberReferenceAt(std::string_view text);

/// The character that two halves, one behind the other, are together.
[[nodiscard]] constexpr char32_t characterOf(NumberReference first, NumberReference second) {
    return 0x10000 + ((first.number - 0xD800) << 10U) + (second.number - 0xDC00);
}

}  // namespace vornic

#endif
