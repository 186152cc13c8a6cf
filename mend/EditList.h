#ifndef VORNIC_MEND_EDIT_LIST_H
#define VORNIC_MEND_EDIT_LIST_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "report/Mend.h"
#include "xml/text/TextDecoding.h"

namespace vornic {

/// Edits of one text, in its order, none of which touches what another one replaces.
using EditList = std::vector<Edit>;

/// What the edits make of a text. Bytes that no edit names stay as they are. Linear.
/// @param edits with the offsets of `text`, and `Edit::text` in its encoding
[[nodiscard]] std::string applyEdits(std::string_view text, const EditList& edits);

/// The same, handed over piece by piece. @param take returns false when no more must come
/// @return false when it did.
[[nodiscard]] bool forEachPieceAfter(std::string_view text, const EditList& edits,
                                     const std::function<bool(std::string_view piece)>& take);

/// One list that does to a text what two lists do to it one after the other. Linear.
/// @param second with the offsets of what `first` makes of the text
[[nodiscard]] EditList composeEdits(const EditList& first, const EditList& second);

/// The same edits with their text in the encoding of the file. A character that the encoding lacks
/// is written as a character reference.
/// @return nothing when a text cannot be written in that encoding at all
[[nodiscard]] std::optional<EditList> encodeEdits(const EditList& edits,
                                                  const std::string& encoding);

/// Edits of a file's bytes as edits of the text that the bytes were decoded to; their own text
/// stays. Linear.
[[nodiscard]] EditList toTextOffsets(const EditList& edits, const DecodedText& source);

/// Tells of bytes of a changed text where they stood before the change. Looking up costs the
/// logarithm of the number of edits.
class OldOffsets {
  public:
    /// @param edits must outlive this.
    explicit OldOffsets(const EditList& edits);

    /// @return for a byte that an edit put there, where what it replaced begins.
    [[nodiscard]] std::size_t of(std::size_t offset) const;

  private:
    const EditList& edits_;
    // Of what each edit put there, in the changed text.
    std::vector<std::size_t> starts_;
};

}  // namespace vornic

#endif
