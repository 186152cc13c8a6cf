#include "report/Findings.h"

#include <algorithm>
#include <iterator>

namespace vornic {

std::string Finding::message() const {
    return formatMessage(ruleOf(rule).message, arguments);
}

Findings Findings::emptyCopy() const {
    Findings copy(limit_);
    copy.ignored_ = ignored_;
    return copy;
}

void Findings::append(Findings&& other) {
    for (std::size_t rule = 0; rule < kRuleCount; ++rule) {
        ruleCounts_[rule] += other.ruleCounts_[rule];
    }
    for (std::size_t severity = 0; severity < kSeverityCount; ++severity) {
        severityCounts_[severity] += other.severityCounts_[severity];
    }
    std::move(other.kept_.begin(), other.kept_.end(), std::back_inserter(kept_));
    other.kept_.clear();
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
