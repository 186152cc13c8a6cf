#ifndef VORNIC_BASE_STRING_ENCODING_H
#define VORNIC_BASE_STRING_ENCODING_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vornic::platform {

/// How text is written in bytes, by the platform's numbers. Any other number may be cast to the
/// type; nothing decodes under it.
enum class StringEncoding : std::uint32_t {
    ascii = 1,
    japaneseEuc = 3,
    utf8 = 4,
    isoLatin1 = 5,
    shiftJis = 8,
    isoLatin2 = 9,
    utf16 = 10,
    windowsCyrillic = 11,
    windowsLatin1 = 12,
    windowsGreek = 13,
    windowsTurkish = 14,
    windowsLatin2 = 15,
    iso2022Jp = 21,
    macRoman = 30,
    utf32 = 0x8C000100,
    utf16BigEndian = 0x90000100,
    utf16LittleEndian = 0x94000100,
    utf32BigEndian = 0x98000100,
    utf32LittleEndian = 0x9C000100,
};

/// Decodes bytes to UTF-8 text. ASCII is strict: a byte above 127 does not decode. UTF-16 and
/// UTF-32 go by their byte order mark, which is no part of the text, and without one by the
/// machine's byte order; the mark of UTF-8 is no part of the text either. Any thread.
/// @return nothing when the bytes are no text of that encoding, or the encoding is not known.
[[nodiscard]] std::optional<std::string> decodeString(std::string_view bytes,
                                                      StringEncoding encoding);

}  // namespace vornic::platform

#endif
