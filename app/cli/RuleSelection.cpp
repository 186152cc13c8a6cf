#include "app/cli/RuleSelection.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace vornic {

std::string RuleSelection::addOnly(std::string_view list) {
    hasOnly_ = true;
    return mark(only_, list);
}

std::string RuleSelection::addIgnored(std::string_view list) {
    return mark(ignored_, list);
}

std::vector<RuleId> RuleSelection::ignored() const {
    std::vector<RuleId> rules;
    for (std::size_t index = 0; index < kRuleCount; ++index) {
        if (ignored_[index] || (hasOnly_ && !only_[index])) {
            rules.push_back({static_cast<std::uint16_t>(index)});
        }
    }
    return rules;
}

std::string RuleSelection::mark(Marks& marks, std::string_view list) {
    while (!list.empty()) {
        const std::string_view name = list.substr(0, list.find(','));
        list.remove_prefix(std::min(name.size() + 1, list.size()));
        bool isKnown = false;
        for (std::size_t index = 0; index < kRuleCount; ++index) {
            const Rule& rule = kRuleTable[index];
            const bool isChecked = rule.group != RuleGroup::repair;
            if (isChecked && (name == "*" || name == rule.id || name == nameOf(rule.group))) {
                marks[index] = true;
                isKnown = true;
            }
        }
        isKnown = isKnown || std::any_of(kCheckedGroups.begin(), kCheckedGroups.end(),
                                         [name](RuleGroup group) { return nameOf(group) == name; });
        if (!isKnown) {
            return "there is no rule or group " + std::string(name);
        }
    }
    return "";
}

}  // namespace vornic
