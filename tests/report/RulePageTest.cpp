#include <algorithm>
#include <cstdlib>
#include <set>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "report/RulePage.h"
#include "report/RuleTable.h"
#include "report/rules/Requirements.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic {
namespace {

const std::string kDocument = VORNIC_SOURCE "/docs/rules.md";
const std::string kChapter = VORNIC_SOURCE "/docs/manual/11-report-lines.md";
const std::string kManualPage = VORNIC_SOURCE "/packaging/man/vornic-rules.7";

// The page's date is that of its last change.
std::string manualPage() {
    const std::string page = test::readBytes(kManualPage);
    const std::string title = ".TH VORNIC\\-RULES 7 ";
    return rulesInRoff(page.substr(0, title.size()) == title ? page.substr(title.size(), 10) : "");
}

bool isOfACheck(const Rule& rule) {
    return isOfACheck(rule.group);
}

TEST(RulePage, reportsAllThatTheTableSays) {
    const Rule& rule = ruleOf("xml-stray-ampersand"_rule);
    const std::string page = pageOf(rule);
    EXPECT_TRUE(page.starts_with("xml-stray-ampersand (error, group xml)\n\nan ampersand begins"));
    EXPECT_NE(page.find("\nHow to mend it\n    Write &amp; in its place.\n"), std::string::npos);
    EXPECT_NE(page.find("\nSource\n    XML 1.0 (fifth edition), section 4.1\n"), std::string::npos);
}

TEST(RulePage, breaksLinesBetweenWordsAndLosesNone) {
    for (const Rule& rule : kRuleTable) {
        std::istringstream lines(pageOf(rule));
        std::string joined;
        for (std::string line; std::getline(lines, line);) {
            EXPECT_LE(line.size(), 80U) << line;
            const std::size_t start = std::min(line.find_first_not_of(' '), line.size());
            joined += line.substr(start) + " ";
        }
        for (const std::string_view part :
             {rule.message, rule.meaning, rule.effect, rule.remedy, rule.source}) {
            EXPECT_NE(joined.find(part), std::string::npos) << rule.id << ": " << joined;
        }
    }
}

TEST(RuleList, hasALineForEachRuleOfACheck) {
    std::istringstream lines(listOfRules());
    auto rule = std::find_if(kRuleTable.begin(), kRuleTable.end(), isOfACheck);
    for (std::string line; std::getline(lines, line);) {
        ASSERT_NE(rule, kRuleTable.end());
        EXPECT_TRUE(line.starts_with(std::string(rule->id) + " ")) << line;
        EXPECT_NE(line.find(std::string("  ") + std::string(nameOf(rule->severity)) + " "),
                  std::string::npos);
        rule = std::find_if(rule + 1, kRuleTable.end(), isOfACheck);
    }
    EXPECT_EQ(rule, kRuleTable.end());
}

TEST(Requirements, areHeldByRulesThatExist) {
    for (const rules::Requirement& requirement : rules::kRequirements) {
        EXPECT_FALSE(requirement.rules.empty()) << requirement.text;
        std::istringstream ids{std::string(requirement.rules)};
        for (std::string id; ids >> id;) {
            EXPECT_TRUE(findRule(id).has_value()) << requirement.text << ": " << id;
        }
    }
}

TEST(Requirements, nameEveryRuleAboutTheFormats) {
    std::set<std::string> named;
    for (const rules::Requirement& requirement : rules::kRequirements) {
        std::istringstream ids{std::string(requirement.rules)};
        for (std::string id; ids >> id;) {
            named.insert(id);
        }
    }
    for (const Rule& rule : kRuleTable) {
        if (isOfACheck(rule) && rule.group != RuleGroup::xml) {
            EXPECT_TRUE(named.contains(std::string(rule.id))) << rule.id;
        }
    }
}

// scripts/refresh-rules names a folder for what these files should hold.
TEST(RulePages, thatAreCheckedInAreMadeFromTheTable) {
    if (const char* const folder = std::getenv("VORNIC_REFRESH_RULES")) {
        test::writeBytes(std::string(folder) + "/rules.md", rulesInMarkdown());
        test::writeBytes(std::string(folder) + "/report-lines.md", reportLinesInMarkdown());
        test::writeBytes(std::string(folder) + "/vornic-rules.7",
                         rulesInRoff(std::getenv("VORNIC_REFRESH_DATE")));
        return;
    }
    EXPECT_EQ(test::readBytes(kDocument), rulesInMarkdown()) << "scripts/refresh-rules is due";
    EXPECT_EQ(test::readBytes(kChapter), reportLinesInMarkdown()) << "scripts/refresh-rules is due";
    EXPECT_EQ(test::readBytes(kManualPage), manualPage()) << "scripts/refresh-rules is due";
}

}  // namespace
}  // namespace vornic
