#include <gtest/gtest.h>

#include "mend/MendPlan.h"
#include "report/RuleTable.h"

namespace vornic {

namespace {

void add(Findings& findings, RuleId rule, Confidence confidence, EditList edits) {
    const std::size_t offset = edits.empty() ? 0 : edits.front().offset;
    if (Finding* const finding = findings.add(rule, {offset, 1}, {{"name", "x"}})) {
        finding->mend = Mend{confidence, "mend it", std::move(edits)};
    }
}

constexpr RuleId kAmpersand = "xml-stray-ampersand"_rule;
constexpr RuleId kStandalone = "values-standalone"_rule;

TEST(MendPlan, takesSafeMendsAlone) {
    Findings findings;
    add(findings, kAmpersand, Confidence::safe, {{5, 1, "&amp;"}});
    add(findings, kStandalone, Confidence::ask, {{9, 3, ""}});
    findings.add("xml-unclosed-element"_rule, {12, 0}, {{"name", "clip"}});
    const MendPlan plan = MendPlan::of(findings, {});
    EXPECT_EQ(plan.edits, (EditList{{5, 1, "&amp;"}}));
    ASSERT_EQ(plan.records.size(), 3U);
    EXPECT_TRUE(plan.records[0].isMade);
    EXPECT_EQ(plan.records[0].why, "");
    EXPECT_FALSE(plan.records[1].isMade);
    EXPECT_EQ(plan.records[1].why, "it is made only with --fix=values-standalone");
    EXPECT_EQ(plan.records[2].why, "no mend is known");
    EXPECT_FALSE(plan.hasPostponed);
}

TEST(MendPlan, takesMendsThatAskWhenTheirRuleIsNamed) {
    Findings findings;
    add(findings, kStandalone, Confidence::ask, {{9, 3, ""}});
    EXPECT_EQ(MendPlan::of(findings, {kStandalone}).edits, (EditList{{9, 3, ""}}));
}

TEST(MendPlan, takesTheChosenMendsAlone) {
    Findings findings;
    add(findings, kAmpersand, Confidence::safe, {{5, 1, "&amp;"}});
    add(findings, kStandalone, Confidence::ask, {{9, 3, ""}});
    const MendPlan plan =
        MendPlan::ofChosen(findings, {{kStandalone, findings.kept().back().where.offset}});
    EXPECT_EQ(plan.edits, (EditList{{9, 3, ""}}));
    EXPECT_EQ(plan.records[0].why, "it was not chosen");
    EXPECT_TRUE(MendPlan::ofChosen(findings, {{kStandalone, 7777}}).edits.empty());
}

TEST(MendPlan, changesNoPlaceTwice) {
    Findings findings;
    add(findings, kAmpersand, Confidence::safe, {{5, 4, "a"}, {20, 1, "b"}});
    add(findings, kAmpersand, Confidence::safe, {{6, 1, "c"}});
    add(findings, kAmpersand, Confidence::safe, {{9, 0, "d"}});
    add(findings, kAmpersand, Confidence::safe, {{0, 5, "e"}});
    add(findings, kAmpersand, Confidence::safe, {{1, 1, "f"}, {30, 2, "g"}});
    add(findings, kAmpersand, Confidence::safe, {{10, 11, "h"}});
    const MendPlan plan = MendPlan::of(findings, {});
    EXPECT_EQ(plan.edits, (EditList{{1, 1, "f"}, {5, 4, "a"}, {20, 1, "b"}, {30, 2, "g"}}));
    EXPECT_TRUE(plan.hasPostponed);
    EXPECT_EQ(plan.records[1].why, "another mend changes the same place; run it again");
}

}  // namespace

}  // namespace vornic
