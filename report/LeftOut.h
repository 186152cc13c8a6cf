#ifndef VORNIC_REPORT_LEFT_OUT_H
#define VORNIC_REPORT_LEFT_OUT_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "report/Report.h"

namespace vornic {

/// What the findings of a report that are shown do not say, for writers of a format.

/// Findings of one rule that were counted and not kept.
struct Remainder {
    RuleId rule;
    std::uint64_t count = 0;
};

/// One for each rule, in the order of the table. A finding is kept or counted whatever its weight,
/// so a rule of which everything is hidden has none.
/// @param least findings of less weight are hidden
[[nodiscard]] std::vector<Remainder> remaindersOf(const Report& report, Severity least);

/// Groups that did not run, for one reason.
struct SkippedGroups {
    /// "structure, timing"
    std::string names;
    std::string_view why;
};

/// One for each reason. What was not asked for is not missed.
[[nodiscard]] std::vector<SkippedGroups> skippedGroupsOf(const Report& report);

}  // namespace vornic

#endif
