#ifndef VORNIC_REPORT_RULE_ID_H
#define VORNIC_REPORT_RULE_ID_H

#include <compare>
#include <cstdint>

namespace vornic {

/// A rule of the table, by its place there. Places change with the program's version and are never
/// written anywhere; the rule's own id is. Made by `"xml-mismatched-end-tag"_rule`, which does not
/// compile for an id that the table doesn't have.
struct RuleId {
    std::uint16_t index = 0;
    friend constexpr auto operator<=>(const RuleId&, const RuleId&) = default;
};

}  // namespace vornic

#endif
