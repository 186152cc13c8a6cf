#ifndef VORNIC_DESKTOP_OUTCOME_TEXT_H
#define VORNIC_DESKTOP_OUTCOME_TEXT_H

#include <QString>

#include "desktop/OutcomeBadge.h"
#include "repair/pipeline/RepairResult.h"

namespace vornic {

/// What a window says of a run that has ended.
struct OutcomeText {
    OutcomeBadge::Kind kind = OutcomeBadge::Kind::none;
    /// One sentence or more: how it ended and where each of the files is. Plain text.
    QString text;
    /// Whether a way to the file, and to the Trash, is of use.
    bool showsFile = false;
    bool showsTrash = false;
};

[[nodiscard]] OutcomeText outcomeText(const RepairResult& result);

}  // namespace vornic

#endif
