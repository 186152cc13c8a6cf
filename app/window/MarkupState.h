#ifndef VORNIC_APP_WINDOW_MARKUP_STATE_H
#define VORNIC_APP_WINDOW_MARKUP_STATE_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vornic {

/// What a place of an XML text is inside of, as far as colours need it. Goes through a text that
/// may be damaged, byte by byte, and is never wrong for longer than the damage lasts.
enum class MarkupState : std::uint8_t {
    text,
    /// From the less-than sign to the end of the element's name.
    tagName,
    tag,
    doubleQuoted,
    singleQuoted,
    comment,
    cdata,
    instruction,
    declaration,
    /// Between the brackets of a document type declaration.
    subset,
};

/// The state behind the byte at an offset. Within a comment and the like only its last byte ends
/// it.
[[nodiscard]] inline MarkupState stateBehind(std::string_view text, std::size_t at,
                                             MarkupState state) {
    const char byte = text[at];
    const auto endsWith = [&](std::string_view end) {
        return at + 1 >= end.size() && text.substr(at + 1 - end.size(), end.size()) == end;
    };
    switch (state) {
        case MarkupState::text: {
            if (byte != '<') {
                return state;
            }
            const std::string_view rest = text.substr(at);
            if (rest.starts_with("<!--")) {
                return MarkupState::comment;
            }
            if (rest.starts_with("<![CDATA[")) {
                return MarkupState::cdata;
            }
            if (rest.starts_with("<?")) {
                return MarkupState::instruction;
            }
            return rest.starts_with("<!") ? MarkupState::declaration : MarkupState::tagName;
        }
        case MarkupState::tagName:
            if (byte == '>') {
                return MarkupState::text;
            }
            return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r' ? MarkupState::tag
                                                                               : state;
        case MarkupState::tag:
            switch (byte) {
                case '>':
                    return MarkupState::text;
                case '"':
                    return MarkupState::doubleQuoted;
                case '\'':
                    return MarkupState::singleQuoted;
                case '<':
                    return MarkupState::tagName;
                default:
                    return state;
            }
        case MarkupState::doubleQuoted:
            return byte == '"' ? MarkupState::tag : state;
        case MarkupState::singleQuoted:
            return byte == '\'' ? MarkupState::tag : state;
        case MarkupState::comment:
            return byte == '>' && endsWith("-->") ? MarkupState::text : state;
        case MarkupState::cdata:
            return byte == '>' && endsWith("]]>") ? MarkupState::text : state;
        case MarkupState::instruction:
            return byte == '>' && endsWith("?>") ? MarkupState::text : state;
        case MarkupState::declaration:
            return byte == '>' ? MarkupState::text : byte == '[' ? MarkupState::subset : state;
        case MarkupState::subset:
            return byte == ']' ? MarkupState::declaration : state;
    }
    return state;
}

}  // namespace vornic

#endif
