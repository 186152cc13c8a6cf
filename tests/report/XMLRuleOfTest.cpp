#include <set>

#include <gtest/gtest.h>

#include "report/RuleTable.h"
#include "report/XMLRuleOf.h"

namespace vornic {
namespace {

constexpr int kEnd = static_cast<int>(XMLErrorCode::end);

TEST(XMLRuleOf, everyFaultOfTheReaderHasARuleOfItsOwn) {
    std::set<RuleId> rules;
    for (int code = 1; code < kEnd; ++code) {
        const auto rule = xmlRuleOf(static_cast<XMLErrorCode>(code));
        if (static_cast<XMLErrorCode>(code) == XMLErrorCode::malformedQuery) {
            EXPECT_EQ(rule, std::nullopt);
            continue;
        }
        ASSERT_TRUE(rule.has_value()) << code;
        EXPECT_EQ(ruleOf(*rule).group, RuleGroup::xml) << code;
        EXPECT_TRUE(rules.insert(*rule).second) << ruleOf(*rule).id;
    }
    // And every rule of the group has a fault.
    EXPECT_EQ(rules.size(), std::size(rules::kXMLRules));
}

TEST(XMLRuleOf, aNumberThatIsNoCodeHasNone) {
    EXPECT_EQ(xmlRuleOf(static_cast<XMLErrorCode>(kEnd)), std::nullopt);
    EXPECT_EQ(xmlRuleOf(static_cast<XMLErrorCode>(0)), std::nullopt);
}

}  // namespace
}  // namespace vornic
