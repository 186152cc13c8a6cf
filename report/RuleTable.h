#ifndef VORNIC_REPORT_RULE_TABLE_H
#define VORNIC_REPORT_RULE_TABLE_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string_view>

#include "report/Rule.h"
#include "report/RuleId.h"
#include "report/rules/CharacterRules.h"
#include "report/rules/ConversionRules.h"
#include "report/rules/FCPXMLReferenceRules.h"
#include "report/rules/FCPXMLTimingRules.h"
#include "report/rules/FCPXMLValueRules.h"
#include "report/rules/FCPXMLVersionRules.h"
#include "report/rules/MediaRules.h"
#include "report/rules/RepairRules.h"
#include "report/rules/SalvageRules.h"
#include "report/rules/StructureRules.h"
#include "report/rules/ValueRules.h"
#include "report/rules/XMEMLReferenceRules.h"
#include "report/rules/XMEMLStructureRules.h"
#include "report/rules/XMEMLTimingRules.h"
#include "report/rules/XMEMLValueRules.h"
#include "report/rules/XMLRules.h"

/// The table of rules: every sentence that the programs say about a file, with what it means and
/// what to do. Each group's entries are in a file of their own, `report/rules/`. The table is part
/// of the code, so that an id that it lacks does not compile:
///
///     findings.add("references-dangling"_rule, {offset, length}, {{"name", name}, {"id", id}});
///
/// A new rule is an entry there, the code that finds it and a fixture. A new group of rules is a
/// file there and its name below.
namespace vornic {

namespace rules::detail {

template <std::size_t... Sizes>
[[nodiscard]] consteval auto joined(const Rule (&... groups)[Sizes]) {
    std::array<Rule, (Sizes + ...)> table{};
    auto end = table.begin();
    ((end = std::copy(std::begin(groups), std::end(groups), end)), ...);
    return table;
}

}  // namespace rules::detail

/// All rules, by groups.
inline constexpr auto kRuleTable = rules::detail::joined(
    rules::kXMLRules, rules::kXMLFileRules, rules::kStructureRules, rules::kValueRules,
    rules::kCharacterRules,
    // FCPXML.
    rules::kFCPXMLReferenceRules, rules::kFCPXMLTimingRules, rules::kFCPXMLValueRules,
    rules::kFCPXMLVersionRules,
    // XMEML.
    rules::kXMEMLStructureRules, rules::kXMEMLReferenceRules, rules::kXMEMLTimingRules,
    rules::kXMEMLValueRules, rules::kXMEMLVersionRules,
    // Both, and what is outside of them.
    rules::kMediaRules,
    // Repairs.
    rules::kRepairRules,
    // Salvages.
    rules::kSalvageRules,
    // Conversions.
    rules::kConversionRules);

inline constexpr std::size_t kRuleCount = kRuleTable.size();

[[nodiscard]] constexpr const Rule& ruleOf(RuleId id) {
    return kRuleTable[id.index];
}

/// The rule with the id that users know, or nothing.
[[nodiscard]] constexpr std::optional<RuleId> findRule(std::string_view id) {
    for (std::size_t index = 0; index < kRuleCount; ++index) {
        if (kRuleTable[index].id == id) {
            return RuleId{static_cast<std::uint16_t>(index)};
        }
    }
    return std::nullopt;
}

/// `"xml-stray-ampersand"_rule`: the rule of that id; does not compile when there is none.
[[nodiscard]] consteval RuleId operator""_rule(const char* id, std::size_t length) {
    return findRule({id, length}).value();
}

}  // namespace vornic

#endif
