#ifndef VORNIC_TESTS_SALVAGE_SALVAGE_RULE_H
#define VORNIC_TESTS_SALVAGE_SALVAGE_RULE_H

#include <string>
#include <string_view>

namespace vornic::test {

/// A salvage of any bytes makes well-formed documents, or says why it does not, or that there is
/// nothing to do. @return how that is broken, "" when it holds.
[[nodiscard]] std::string brokenRuleOfSalvage(std::string_view bytes);

}  // namespace vornic::test

#endif
