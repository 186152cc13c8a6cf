#include "mend/MendPlan.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <utility>

#include "base/FormatString.h"
#include "report/RuleTable.h"

namespace vornic {

namespace {

constexpr std::string_view kPostponed = "another mend changes the same place; run it again";

// The parts of a file that chosen mends change, so that none is changed twice.
class ChangedParts {
  public:
    // Takes the edits of one mend, or none of them when one meets what is taken already.
    bool take(const EditList& edits) {
        const bool isFree = std::none_of(edits.begin(), edits.end(),
                                         [this](const Edit& edit) { return meets(edit); });
        if (isFree) {
            for (const Edit& edit : edits) {
                parts_.emplace(edit.offset, edit);
            }
        }
        return isFree;
    }

    [[nodiscard]] EditList inOrder() && {
        EditList edits;
        edits.reserve(parts_.size());
        for (auto& [offset, edit] : parts_) {
            edits.push_back(std::move(edit));
        }
        return edits;
    }

  private:
    // Two that only touch meet as well: which of two insertions comes first is nobody's guess.
    [[nodiscard]] bool meets(const Edit& edit) const {
        const auto next = parts_.upper_bound(edit.offset + edit.length);
        if (next == parts_.begin()) {
            return false;
        }
        const Edit& last = std::prev(next)->second;
        return last.offset + last.length >= edit.offset;
    }

    std::map<std::size_t, Edit> parts_;
};

// Why the mend of a finding is not made, as far as the finding itself tells; "" when it may be.
std::string refusalOf(const Finding& finding, const std::vector<RuleId>& asked) {
    if (!finding.mend || finding.mend->edits.empty()) {
        return finding.rule == "versions-not-declared"_rule
                   ? "it needs --set-version with a version of the file's format"
                   : "no mend is known";
    }
    const bool isAsked = std::find(asked.begin(), asked.end(), finding.rule) != asked.end();
    if (finding.mend->confidence == Confidence::ask && !isAsked) {
        return formatString("it is made only with --fix=%@", ruleOf(finding.rule).id);
    }
    return "";
}

// @param refusal tells why the mend of a finding is not made; "" when it may be
template <typename Refusal>
MendPlan planOf(const Findings& findings, const Refusal& refusal) {
    MendPlan plan;
    ChangedParts parts;
    for (const Finding& finding : findings.kept()) {
        std::string why = refusal(finding);
        if (why.empty() && !parts.take(finding.mend->edits)) {
            why = kPostponed;
            plan.hasPostponed = true;
        }
        const bool isMade = why.empty();
        plan.records.push_back({{}, isMade, std::move(why)});
    }
    plan.edits = std::move(parts).inOrder();
    return plan;
}

}  // namespace

MendPlan MendPlan::of(const Findings& findings, const std::vector<RuleId>& asked) {
    return planOf(findings, [&asked](const Finding& it) { return refusalOf(it, asked); });
}

MendPlan MendPlan::ofChosen(const Findings& findings, const std::vector<ChosenMend>& chosen) {
    return planOf(findings, [&chosen](const Finding& finding) {
        if (!finding.mend || finding.mend->edits.empty()) {
            return std::string("no mend is known");
        }
        const bool isChosen = std::binary_search(chosen.begin(), chosen.end(),
                                                 ChosenMend{finding.rule, finding.where.offset});
        return std::string(isChosen ? "" : "it was not chosen");
    });
}

}  // namespace vornic
