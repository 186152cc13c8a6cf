#ifndef VORNIC_SALVAGE_CHANGE_H
#define VORNIC_SALVAGE_CHANGE_H

#include <cstdint>

#include "formats/Blocks.h"
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

/// One change of the text. Small, since a text may have as many faults as tags.
struct Change {
    std::uint32_t offset = 0;
    /// Bytes that are taken out.
    std::uint32_t length = 0;
    /// For an inserted tag: where the other tag of its element is; for an attribute: where the
    /// other one is.
    std::uint32_t other = 0;
    /// The element concerned: the new name for renamed ones.
    NameId name = 0;
    ChangeKind kind = ChangeKind::closeTag;
    /// Whether an inserted tag gets a line of its own, with the indentation of the other one.
    bool isOnOwnLine = false;
};
static_assert(sizeof(Change) == 16);

/// Changes in the order of the text.
using Changes = Blocks<Change>;

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

/// The order in which changes are made. Of the tags that are put at one place, the ends of inner
/// elements come first, and the starts of outer ones: those whose other tag is further down.
[[nodiscard]] constexpr bool isBefore(const Change& left, const Change& right) {
    if (left.offset != right.offset) {
        return left.offset < right.offset;
    }
    const int rank = rankOf(left.kind);
    if (rank != rankOf(right.kind)) {
        return rank < rankOf(right.kind);
    }
    return (rank == 1 || rank == 2) && left.other > right.other;
}

}  // namespace vornic::salvage

#endif
