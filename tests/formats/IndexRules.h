#ifndef VORNIC_TESTS_FORMATS_INDEX_RULES_H
#define VORNIC_TESTS_FORMATS_INDEX_RULES_H

#include <string>
#include <string_view>

namespace vornic::test {

/// What in the index of a text differs from what the reader tells of it, or is not as the index
/// promises; "" when nothing does.
[[nodiscard]] std::string brokenRuleOfIndex(std::string_view text);

}  // namespace vornic::test

#endif
