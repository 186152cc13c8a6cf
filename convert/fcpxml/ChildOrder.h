#ifndef VORNIC_CONVERT_FCPXML_CHILD_ORDER_H
#define VORNIC_CONVERT_FCPXML_CHILD_ORDER_H

#include <vector>

#include "convert/fcpxml/Change.h"
#include "formats/fcpxml/Version.h"
#include "mend/EditList.h"

namespace vornic::fcpxml {

/// Where versions put the parts of an element in another order: below 1.6 filters, texts and notes.
struct ChildOrder {
    EditList edits;
    /// What was moved, in the order of the text.
    std::vector<Change> changes;

    /// Moves them to where the next version wants them, each as it is. They hold no clips, so that
    /// nothing that moves holds anything that moves. Elements that the next version has no place
    /// for stay where they are.
    [[nodiscard]] static ChildOrder of(const ElementIndex& index, Version from, Version to);
};

}  // namespace vornic::fcpxml

#endif
