#ifndef VORNIC_XML_TEXT_DECODING_H
#define VORNIC_XML_TEXT_DECODING_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "base/Error.h"
#include "xml/text/TextSurvey.h"

namespace vornic {

/// The UTF-8 byte order mark.
inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// The offset of the first byte that does not belong to well-formed UTF-8 (RFC 3629: no overlong
/// form, no surrogate, nothing above U+10FFFF), or nothing when the text is whole.
[[nodiscard]] std::optional<std::size_t> firstInvalidUTF8(std::string_view bytes);

/// Reads bytes as UTF-8 text: checks them and drops a byte order mark at the beginning, in place.
/// @return nothing, with the slot filled (line, column and byte offset of the first bad byte), when
///     they are not UTF-8.
[[nodiscard]] std::optional<std::string> textFromUTF8(std::string bytes, ErrorSlot& error);

/// The same for bytes that have been looked at.
/// @param survey of all of them
[[nodiscard]] std::optional<std::string> textFromUTF8(std::string bytes, const TextSurvey& survey,
                                                      ErrorSlot& error);

/// Turns the bytes of an XML file into UTF-8 text by the byte order mark, else by the pattern of
/// the first bytes and the encoding declaration (XML 1.0 appendix F), else as UTF-8. Known
/// encodings are UTF-8, US-ASCII, UTF-16 (either order), ISO-8859-1, windows-1252 and macintosh
/// (Mac Roman), each under its usual names.
/// @return nothing, with the slot filled, for an unknown encoding or bytes that do not fit it.
[[nodiscard]] std::optional<std::string> decodeXMLBytes(std::string bytes, ErrorSlot& error);

/// How the bytes of a file became text.
struct TextDecoding {
    /// "UTF-8", "ASCII", "UTF-16LE", "UTF-16BE", "ISO-8859-1", "CP1252" or "MACINTOSH".
    std::string encoding = "UTF-8";
    /// The length of the byte order mark that was dropped at the beginning.
    std::size_t markLength = 0;
    /// The offset of the first byte of the file that could not be decoded; 0 when all could.
    std::size_t faultOffset = 0;
    /// Of the text; looked at in UTF-8 alone.
    XMLForbidden forbidden = XMLForbidden::unknown;
};

struct DecodedText {
    std::string text;
    TextDecoding decoding;
};

/// `decodeXMLBytes`, which also tells how the text lies in the bytes; see `FileOffsets`.
[[nodiscard]] std::optional<DecodedText> decodeXMLText(std::string bytes, ErrorSlot& error);
/// The same. @param how is filled on failure, too: its encoding is then the one that the file was
/// taken for, by its own name when it is not known.
[[nodiscard]] std::optional<std::string> decodeXMLText(std::string bytes, TextDecoding& how,
                                                       ErrorSlot& error);

/// The same for bytes that have been looked at.
/// @param survey of all of them
[[nodiscard]] std::optional<std::string> decodeXMLText(std::string bytes, const TextSurvey& survey,
                                                       TextDecoding& how, ErrorSlot& error);

/// The text of bytes that are UTF-8 by the same rules, where it lies in them. Costs no memory.
/// @return nothing for bytes in another encoding and for those that do not fit theirs.
[[nodiscard]] std::optional<std::string_view> textWithin(std::string_view bytes, TextDecoding& how);

/// The encoding that the XML declaration at the beginning of a text names (XML 1.0, section 4.3.3),
/// as a view of it; empty when it names none.
[[nodiscard]] std::string_view declaredEncoding(std::string_view text);

/// What `TextDecoding` calls an encoding of that name, or "UTF-16" when the name leaves the order
/// of the bytes open; empty when the name is not known.
[[nodiscard]] std::string_view encodingOfName(std::string_view name);

/// The text in an encoding that `TextDecoding` names, without a byte order mark; nothing when it
/// has characters that the encoding lacks.
[[nodiscard]] std::optional<std::string> encodeText(std::string_view text,
                                                    const std::string& encoding);

}  // namespace vornic

#endif
