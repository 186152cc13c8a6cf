#ifndef VORNIC_CONVERT_FCPXML_STEP_STATE_H
#define VORNIC_CONVERT_FCPXML_STEP_STATE_H

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "convert/MarkupEdits.h"
#include "convert/fcpxml/Change.h"
#include "formats/fcpxml/Definition.h"

namespace vornic::fcpxml {

/// What a conversion from one version to another has worked out so far, in the order of the text.
/// All of it that came since a mark can be taken back.
struct StepState {
    struct Mark {
        std::size_t edits = 0;
        std::size_t changes = 0;
        std::size_t removed = 0;
    };

    /// @param text must outlive this.
    StepState(const ElementIndex& text, Version oldVersion, Version newVersion)
        : index(text), from(oldVersion), to(newVersion), edits(text) {}

    [[nodiscard]] Mark mark() const { return {edits.size(), changes.size(), removed.size()}; }
    void takeBack(const Mark& mark) {
        edits.truncate(mark.edits);
        changes.resize(mark.changes);
        removed.resize(mark.removed);
    }
    /// True for a step to that version from an older one, or from it to an older one.
    [[nodiscard]] bool crossesUpTo(int minor) const {
        return from < Version(minor) && to >= Version(minor);
    }
    [[nodiscard]] bool crossesDownFrom(int minor) const {
        return from >= Version(minor) && to < Version(minor);
    }

    const ElementIndex& index;
    Version from;
    Version to;
    MarkupEdits edits;
    std::vector<Change> changes;
    /// Elements that went, each with the number behind those inside it.
    std::vector<std::pair<ElementNumber, ElementNumber>> removed;
    /// Ids of what goes, as far as they are known: what refers to them goes, too.
    std::unordered_set<std::string> lostIds;
    std::optional<MissingValue> missing;
};

}  // namespace vornic::fcpxml

#endif
