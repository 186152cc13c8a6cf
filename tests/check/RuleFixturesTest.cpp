// Every rule has files of its own: at least one that breaks it and nothing else, and at least one
// that comes close and does not.

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "report/RuleTable.h"
#include "tests/support/texts/RuleFixtures.h"

namespace vornic::test {

namespace {

struct Exception {
    std::string_view rule;
    std::string_view reason;
};

// Rules that no file can break alone.
constexpr std::array kExceptions = {
    Exception{"xml-too-many-faults", "thousands of other faults come first"},
    Exception{"structure-value-not-fixed",
              "the version is the only fixed value, and the definition is chosen by it"},
};

// Rules whose findings never come without another's, which says more about the file as a whole.
struct Companion {
    std::string_view rule;
    std::string_view companion;
};

constexpr std::array kCompanions = {
    Companion{"references-dangling", "versions-unknown"},
    Companion{"versions-unread-element", "versions-newer-than-receiver"},
    Companion{"versions-unread-attribute", "versions-newer-than-receiver"},
    Companion{"versions-unread-value", "versions-newer-than-receiver"},
};

// The rule and its companion, if it has one.
std::set<std::string> rulesOfFixture(const RuleFixture& fixture) {
    std::set<std::string> rules{fixture.rule};
    for (const Companion& companion : kCompanions) {
        if (companion.rule == fixture.rule) {
            rules.emplace(companion.companion);
        }
    }
    return rules;
}

bool isExcepted(std::string_view rule) {
    return std::any_of(kExceptions.begin(), kExceptions.end(),
                       [rule](const Exception& exception) { return exception.rule == rule; });
}

// The rules of all findings that weigh more than a note, and the fixture's own however it weighs.
std::set<std::string> rulesFoundIn(const RuleFixture& fixture) {
    std::set<std::string> rules;
    const Report report = checkFile(fixture.bytes, fixture.options);
    for (const Finding& finding : report.findings.kept()) {
        const Rule& rule = ruleOf(finding.rule);
        if (finding.severity != Severity::info || rule.id == fixture.rule) {
            rules.emplace(rule.id);
        }
    }
    return rules;
}

}  // namespace

TEST(RuleFixtures, thatAreBrokenBreakTheirRuleAlone) {
    for (const RuleFixture& fixture : ruleFixtures()) {
        if (fixture.breaks()) {
            EXPECT_EQ(rulesFoundIn(fixture), rulesOfFixture(fixture))
                << fixture.rule << "/" << fixture.name;
        }
    }
}

TEST(RuleFixtures, thatComeCloseDoNotBreakTheirRule) {
    for (const RuleFixture& fixture : ruleFixtures()) {
        if (!fixture.breaks()) {
            EXPECT_FALSE(rulesFoundIn(fixture).contains(fixture.rule))
                << fixture.rule << "/" << fixture.name;
        }
    }
}

TEST(RuleFixtures, areInFoldersThatAreNamedAfterRules) {
    for (const std::string& folder : ruleFixtureFolders()) {
        EXPECT_TRUE(findRule(folder).has_value()) << folder;
        EXPECT_FALSE(isExcepted(folder)) << folder;
    }
}

TEST(RuleFixtures, areThereForEveryRuleOfACheckOfEitherKind) {
    std::map<std::string, int, std::less<>> broken;
    std::map<std::string, int, std::less<>> close;
    for (const RuleFixture& fixture : ruleFixtures()) {
        ++(fixture.breaks() ? broken : close)[fixture.rule];
    }
    for (const Rule& rule : kRuleTable) {
        const bool isOfAFile = isOfACheck(rule.group) && rule.group != RuleGroup::media;
        if (isOfAFile && !isExcepted(rule.id)) {
            EXPECT_TRUE(broken.contains(rule.id)) << rule.id << " has no file that breaks it";
            EXPECT_TRUE(close.contains(rule.id)) << rule.id << " has no file that comes close";
        }
    }
    for (const Exception& exception : kExceptions) {
        EXPECT_TRUE(findRule(exception.rule).has_value()) << exception.rule;
    }
}

TEST(RuleFixtures, areReportedInMessagesThatNameWhatTheySpeakOf) {
    for (const RuleFixture& fixture : ruleFixtures()) {
        const Report report = checkFile(fixture.bytes, fixture.options);
        for (const Finding& finding : report.findings.kept()) {
            const std::string message = finding.message();
            for (const std::string_view name : argumentNames(ruleOf(finding.rule).message)) {
                const auto argument =
                    std::find_if(finding.arguments.begin(), finding.arguments.end(),
                                 [name](const Argument& each) { return each.name == name; });
                EXPECT_TRUE(argument != finding.arguments.end() && !argument->value.empty())
                    << fixture.rule << "/" << fixture.name << ": " << name << " in " << message;
            }
            EXPECT_EQ(message.find("  "), std::string::npos) << message;
            EXPECT_EQ(message.find("\"\""), std::string::npos) << message;
        }
    }
}

}  // namespace vornic::test
