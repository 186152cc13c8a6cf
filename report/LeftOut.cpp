#include "report/LeftOut.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "report/RuleTable.h"

namespace vornic {

std::vector<Remainder> remaindersOf(const Report& report, Severity least) {
    std::array<std::uint64_t, kRuleCount> kept{};
    std::array<bool, kRuleCount> isShown{};
    for (const Finding& finding : report.findings.kept()) {
        ++kept[finding.rule.index];
        isShown[finding.rule.index] |= finding.severity >= least;
    }
    std::vector<Remainder> remainders;
    for (std::size_t index = 0; index < kRuleCount; ++index) {
        const RuleId rule{static_cast<std::uint16_t>(index)};
        const std::uint64_t more = report.findings.count(rule) - kept[index];
        const bool isHidden =
            !isShown[index] && (kept[index] != 0 || ruleOf(rule).severity < least);
        if (more != 0 && !isHidden) {
            remainders.push_back({rule, more});
        }
    }
    return remainders;
}

std::vector<SkippedGroups> skippedGroupsOf(const Report& report) {
    std::vector<SkippedGroups> skipped;
    for (const GroupRun& run : report.groups) {
        if (run.ran || run.why == kNotAskedFor) {
            continue;
        }
        const auto known =
            std::find_if(skipped.begin(), skipped.end(),
                         [&run](const SkippedGroups& groups) { return groups.why == run.why; });
        if (known == skipped.end()) {
            skipped.push_back({std::string(nameOf(run.group)), run.why});
        } else {
            known->names.append(", ").append(nameOf(run.group));
        }
    }
    return skipped;
}

}  // namespace vornic
