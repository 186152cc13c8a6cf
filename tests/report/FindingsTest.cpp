#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "report/Findings.h"

namespace vornic {
namespace {

TEST(Findings, countAllAndKeepTheFirstOfEachRule) {
    Findings findings(2);
    for (std::size_t offset = 0; offset < 1000; ++offset) {
        findings.add("xml-stray-ampersand"_rule, {offset, 1});
    }
    EXPECT_NE(findings.add("xml-unclosed-tag"_rule, {500, 3}, {{"name", "clip"}}), nullptr);
    EXPECT_EQ(findings.count("xml-stray-ampersand"_rule), 1000U);
    EXPECT_EQ(findings.count("xml-unclosed-tag"_rule), 1U);
    EXPECT_EQ(findings.count("xml-missing-space"_rule), 0U);
    EXPECT_EQ(findings.count(Severity::error), 1001U);
    ASSERT_EQ(findings.kept().size(), 3U);
    EXPECT_EQ(findings.kept()[1].where.offset, 1U);
    EXPECT_EQ(findings.kept()[2].where.length, 3U);
}

TEST(Findings, aFindingThatIsOnlyCountedIsNoObject) {
    Findings findings(0);
    EXPECT_EQ(findings.add("xml-stray-ampersand"_rule, {0, 1}), nullptr);
    EXPECT_EQ(findings.count(Severity::error), 1U);
}

TEST(Findings, aFindingHoldsItsArguments) {
    Findings findings;
    {
        const std::string name = "clip";
        findings.add("xml-second-root-element"_rule, {9, 0}, {{"name", name}, {"line", 4U}});
    }
    EXPECT_EQ(findings.kept().front().message(),
              "a second root element, <clip>, begins here; a file should have only one");
}

TEST(Findings, aFindingMayWeighOtherwiseThanItsRule) {
    Findings findings;
    findings.add("xml-stray-ampersand"_rule, Severity::info, {0, 1});
    EXPECT_EQ(findings.kept().front().severity, Severity::info);
    EXPECT_EQ(findings.count(Severity::info), 1U);
    EXPECT_EQ(findings.count(Severity::error), 0U);
    EXPECT_EQ(findings.count("xml-stray-ampersand"_rule), 1U);
}

TEST(Findings, anIgnoredRuleIsNeitherCountedNorKept) {
    Findings findings;
    findings.ignore("xml-stray-ampersand"_rule);
    EXPECT_EQ(findings.add("xml-stray-ampersand"_rule, {0, 1}), nullptr);
    EXPECT_EQ(findings.count("xml-stray-ampersand"_rule), 0U);
    EXPECT_EQ(findings.count(Severity::error), 0U);
}

TEST(Findings, areAddedBehindWhatIsThere) {
    Findings findings(1);
    findings.ignore("xml-missing-space"_rule);
    findings.add("xml-stray-ampersand"_rule, {7, 1});
    Findings others = findings.emptyCopy();
    EXPECT_TRUE(others.kept().empty());
    others.add("xml-missing-space"_rule, {1, 1});
    others.add("xml-unclosed-tag"_rule, {2, 3}, {{"name", "clip"}});
    others.add("xml-unclosed-tag"_rule, {3, 3}, {{"name", "clip"}});
    findings.append(std::move(others));
    ASSERT_EQ(findings.kept().size(), 2U);
    EXPECT_EQ(findings.kept()[1].where.offset, 2U);
    EXPECT_EQ(findings.count("xml-unclosed-tag"_rule), 2U);
    EXPECT_EQ(findings.count("xml-stray-ampersand"_rule), 1U);
    EXPECT_EQ(findings.count(Severity::error), 3U);
}

TEST(Findings, aKeptFindingStaysWhereItIs) {
    Findings findings;
    Finding* const first = findings.add("xml-stray-ampersand"_rule, {0, 1});
    for (std::size_t offset = 1; offset < 10000; ++offset) {
        findings.add("xml-stray-ampersand"_rule, {offset, 1});
    }
    EXPECT_EQ(&findings.kept().front(), first);
}

TEST(Findings, areSortedByPlaceAndThoseOfOnePlaceStayInOrder) {
    Findings findings;
    findings.add("xml-unclosed-tag"_rule, {7, 1});
    findings.add("xml-missing-space"_rule, {3, 1});
    findings.add("xml-stray-ampersand"_rule, {7, 1});
    findings.sort();
    EXPECT_EQ(findings.kept()[0].rule, "xml-missing-space"_rule);
    EXPECT_EQ(findings.kept()[1].rule, "xml-unclosed-tag"_rule);
    EXPECT_EQ(findings.kept()[2].rule, "xml-stray-ampersand"_rule);
}

}  // namespace
}  // namespace vornic
