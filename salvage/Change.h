#ifndef VORNIC_SALVAGE_CHANGE_H
#define VORNIC_SALVAGE_CHANGE_H

#include <cstdint>

#include "salvage/Token.h"

namespace vornic::salvage {

/// What a guess changes.
enum class ChangeKind : std::uint8_t {
    insertEndTag,
    removeEndTag,
    renameEndTag,
    insertStartTag,
    removeStartTag,
    renameStartTag,
    /// `>` where a tag lacks it.
    closeTag,
    /// The second of two attributes with one name, or the first, is taken out.
    removeAttribute,
    /// The same, where both have one value.
    removeEqualAttribute,
    /// Characters inside a tag that belong to nothing are taken out.
    removeJunk,
    closeValue,
    openValue,
    closeComment,
    closeCDATA,
    closeInstruction,
    closeDocumentType,
    /// The tag in which the text was cut off.
    dropCutTag,
    /// A less-than sign, or `<!`, that begins nothing is written as text.
    escapeLessThan,
    /// Text where none can stand becomes a comment.
    commentText,
    /// A declaration in the middle of the text, or a second document type, is taken out.
    removeDeclaration,
    /// The end of a file that was cut off: what is open is closed.
    closeAtEnd,
};

/// One change of the text. Changes at one offset are made in the order in which they stand.
struct Change {
    std::uint32_t offset = 0;
    /// Bytes that are taken out.
    std::uint32_t length = 0;
    /// The element concerned: the new name for renamed ones.
    NameId name = 0;
    /// The columns that an inserted tag is indented by on a line of its own, or `Token::kNoIndent`
    /// where it stands in a line with others.
    std::int16_t indent = Token::kNoIndent;
    ChangeKind kind = ChangeKind::closeTag;
    /// For an inserted end tag: where its start tag is; for an attribute: where the other one is.
    std::uint32_t other = 0;
};

/// The order of changes at one offset: what makes the piece whole that ends there, end tags, start
/// tags, what is done to the piece that begins there.
[[nodiscard]] constexpr int rankOf(ChangeKind kind) {
    switch (kind) {
        case ChangeKind::closeTag:
        case ChangeKind::closeValue:
        case ChangeKind::closeComment:
        case ChangeKind::closeCDATA:
        case ChangeKind::closeInstruction:
        case ChangeKind::closeDocumentType:
            return 0;
        case ChangeKind::insertEndTag:
        case ChangeKind::closeAtEnd:
            return 1;
        case ChangeKind::insertStartTag:
            return 2;
        case ChangeKind::escapeLessThan:
            return 4;  // a comment around it leaves nothing to do
        default:
            return 3;
    }
}

/// The order in which changes are made.
[[nodiscard]] constexpr bool isBefore(const Change& left, const Change& right) {
    return left.offset != right.offset ? left.offset < right.offset
                                       : rankOf(left.kind) < rankOf(right.kind);
}

}  // namespace vornic::salvage

#endif
