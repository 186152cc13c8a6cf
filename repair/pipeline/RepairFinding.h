#ifndef VORNIC_REPAIR_PIPELINE_REPAIR_FINDING_H
#define VORNIC_REPAIR_PIPELINE_REPAIR_FINDING_H

#include <functional>

#include "report/Message.h"
#include "report/Place.h"
#include "report/RuleId.h"

namespace vornic {

/// What a finding means for the file.
enum class FindingEffect {
    /// The file is as sound as before.
    warning,
    /// The file has errors; this one is mended.
    mended,
    /// The file has errors; this one can't be mended.
    unmended,
    /// A character was taken out. Deliberate: the file then counts as repaired even when an earlier
    /// step had given it up.
    removed,
};

/// What a step of a repair has found in the file.
struct RepairFinding {
    RuleId rule;
    FindingEffect effect = FindingEffect::unmended;
    /// Those that the rule's message names.
    Arguments arguments{};
    /// Of the user's file; its line is 0 for a finding about the file as a whole.
    Place where{};
};

/// Receives findings in order, as they are made.
using FoundInRepair = std::function<void(const RepairFinding&)>;

}  // namespace vornic

#endif
