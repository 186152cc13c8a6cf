#ifndef VORNIC_MEND_MEND_PLAN_H
#define VORNIC_MEND_MEND_PLAN_H

#include <compare>
#include <cstddef>
#include <vector>

#include "mend/EditList.h"
#include "report/Findings.h"
#include "report/MendRecord.h"

namespace vornic {

/// A mend that a user has chosen by its finding.
struct ChosenMend {
    RuleId rule;
    /// Where the finding's place begins.
    std::size_t offset = 0;
    friend auto operator<=>(const ChosenMend&, const ChosenMend&) = default;
};

/// Which of the mends of a file's findings are made together, and what they do to its bytes.
struct MendPlan {
    /// Edits of the file's bytes, their text still in UTF-8.
    EditList edits;
    /// One for each kept finding, in their order, without the finding, which may have no place yet.
    std::vector<MendRecord> records;

    /// Takes all safe mends, and those that ask when their rule is named. Of mends that meet at one
    /// place the first is taken; the others can be made afterwards, when the file has been checked
    /// again. Linear but for the sorting of the edits, whose offsets are those of the findings.
    /// @param findings in the order of the file
    /// @param asked rules whose mends the user wants although they ask
    [[nodiscard]] static MendPlan of(const Findings& findings, const std::vector<RuleId>& asked);
    /// Takes the chosen ones alone, whether they ask or not.
    /// @param chosen in ascending order
    [[nodiscard]] static MendPlan ofChosen(const Findings& findings,
                                           const std::vector<ChosenMend>& chosen);

    /// Whether a mend had to wait for another one at the same place.
    bool hasPostponed = false;
};

}  // namespace vornic

#endif
