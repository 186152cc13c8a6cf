#ifndef VORNIC_CHECK_XMEML_FINDINGS_AFTER_EDITS_H
#define VORNIC_CHECK_XMEML_FINDINGS_AFTER_EDITS_H

#include <optional>
#include <string>
#include <vector>

#include "formats/ElementIndex.h"
#include "report/Findings.h"
#include "report/Mend.h"

namespace vornic::xmeml {

/// What the rules of XMEML would find in a mended text, where that can't be anything new: each
/// element whose text the edits changed says what it said before, its references replaced. These
/// rules read texts in that way alone, but for the definitions of one file, which they compare as
/// they are written, and for the mends of a path, which change as little of it as they can. What
/// they found before is moved. Linear in the findings and the edits.
class FindingsAfterEdits {
  public:
    /// Takes what it needs; nothing need outlive this.
    /// @param before what was found in the text before. Those of the markup, of the characters and
    ///     of the media are left out.
    /// @param old the index of that text
    /// @param edits of that text, in its order
    FindingsAfterEdits(const Findings& before, const ElementIndex& old,
                       const std::vector<Edit>& edits);

    /// @param changed the index of the mended text: the same elements with the same start tags
    /// @return nothing where the rules have to look for themselves.
    [[nodiscard]] std::optional<Findings> in(const ElementIndex& changed) &&;

  private:
    // What an element said before.
    struct Said {
        ElementNumber element;
        // Nothing where other elements are in it.
        std::optional<std::string> text;
        bool isEmpty = false;
    };

    std::optional<Findings> moved_;
    std::vector<Said> said_;
};

}  // namespace vornic::xmeml

#endif
