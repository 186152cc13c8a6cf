#include "report/Findings.h"

#include <algorithm>

namespace vornic {

std::string Finding::message() const {
    return formatMessage(ruleOf(rule).message, arguments);
}

Finding* Findings::keep(RuleId rule, Severity severity, TextSpan where,
                        std::initializer_list<MessageArgument> arguments) {
    Finding& finding = kept_.emplace_back();
    finding.rule = rule;
    finding.severity = severity;
    finding.where.offset = where.offset;
    finding.where.length = where.length;
    finding.arguments = vornic::kept({arguments.begin(), arguments.size()});
    return &finding;
}

void Findings::sort() {
    std::stable_sort(kept_.begin(), kept_.end(), [](const Finding& left, const Finding& right) {
        return left.where.offset < right.where.offset;
    });
}

void Findings::keepFirst(std::size_t most) {
    std::array<std::size_t, kRuleCount> seen{};
    std::erase_if(kept_,
                  [&](const Finding& finding) { return seen[finding.rule.index]++ >= most; });
}

}  // namespace vornic
