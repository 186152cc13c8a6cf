#ifndef VORNIC_TESTS_REPAIR_PIPELINE_FILTER_RULES_H
#define VORNIC_TESTS_REPAIR_PIPELINE_FILTER_RULES_H

#include <string>
#include <string_view>

namespace vornic::test {

/// What the character filter does to a text that it must not: leaves something that XML forbids,
/// loses a character without telling, tells a unit twice, maps an offset wrongly. "" when nothing.
/// Bytes that are no UTF-8 never reach the filter and are not looked at.
[[nodiscard]] std::string brokenRuleOfFilter(std::string_view text);

/// How the reading of a text that was read without a fault or a mend differs from that of the
/// filtered text, where the filter says that it is the same. "" when it does not.
/// @param isMoved set when it is the same although the text has changed
[[nodiscard]] std::string brokenRuleOfMovedReading(std::string_view text, bool& isMoved);

}  // namespace vornic::test

#endif
