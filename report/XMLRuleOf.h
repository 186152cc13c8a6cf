#ifndef VORNIC_REPORT_XML_RULE_OF_H
#define VORNIC_REPORT_XML_RULE_OF_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "report/RuleId.h"
#include "report/RuleTable.h"
#include "xml/text/XMLErrorCode.h"

namespace vornic {

namespace rules::detail {

inline constexpr auto kXMLRuleOfCode = [] {
    std::array<std::optional<RuleId>, static_cast<std::size_t>(XMLErrorCode::end)> table{};
    for (std::size_t index = 0; index < kRuleCount; ++index) {
        if (const std::optional<XMLErrorCode> code = kRuleTable[index].code) {
            table[static_cast<std::size_t>(*code)] = RuleId{static_cast<std::uint16_t>(index)};
        }
    }
    return table;
}();

}  // namespace rules::detail

/// The rule for a fault or a mend of the reader: the one whose entry names the code. Nothing for a
/// code that tells of no file (`XMLErrorCode::malformedQuery`), or for a number that is none of the
/// codes.
[[nodiscard]] constexpr std::optional<RuleId> xmlRuleOf(XMLErrorCode code) {
    const auto index = static_cast<std::size_t>(code);
    return index < rules::detail::kXMLRuleOfCode.size() ? rules::detail::kXMLRuleOfCode[index]
                                                        : std::nullopt;
}

}  // namespace vornic

#endif
