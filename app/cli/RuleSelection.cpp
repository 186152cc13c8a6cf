#include "app/cli/RuleSelection.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "base/FormatString.h"
#include "check/NearestName.h"

namespace vornic {

std::string RuleSelection::addOnly(std::string_view list) {
    // A check of no rule at all would find every file sound.
    if (list.empty()) {
        return "no rule is named";
    }
    hasOnly_ = true;
    return mark(only_, list);
}

std::string RuleSelection::addIgnored(std::string_view list) {
    return mark(ignored_, list);
}

std::vector<const Rule*> RuleSelection::only() const {
    std::vector<const Rule*> rules;
    for (std::size_t index = 0; index < kRuleCount; ++index) {
        if (only_[index]) {
            rules.push_back(&kRuleTable[index]);
        }
    }
    return rules;
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

std::string RuleSelection::mark(Marks& marks, std::string_view list) const {
    while (!list.empty()) {
        const std::string_view name = list.substr(0, list.find(','));
        list.remove_prefix(std::min(name.size() + 1, list.size()));
        bool isKnown = false;
        for (std::size_t index = 0; index < kRuleCount; ++index) {
            const Rule& rule = kRuleTable[index];
            if (mayName(rule) && (name == "*" || name == rule.id || name == nameOf(rule.group))) {
                marks[index] = true;
                isKnown = true;
            }
        }
        isKnown = isKnown || std::any_of(kCheckedGroups.begin(), kCheckedGroups.end(),
                                         [name](RuleGroup group) { return nameOf(group) == name; });
        if (!isKnown) {
            return unknownRule(name);
        }
    }
    return "";
}

// With the name that was perhaps meant.
std::string RuleSelection::unknownRule(std::string_view name) const {
    std::vector<std::string_view> names;
    for (const Rule& rule : kRuleTable) {
        if (mayName(rule)) {
            names.push_back(rule.id);
            names.push_back(nameOf(rule.group));
        }
    }
    const std::string_view nearest = nearestName(name, names);
    return formatString("there is no rule or group %@%@", name,
                        nearest.empty() ? "" : formatString("; perhaps %@ is meant", nearest));
}

}  // namespace vornic
