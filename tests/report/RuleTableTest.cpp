#include <algorithm>
#include <cctype>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "report/Message.h"
#include "report/RuleTable.h"

namespace vornic {
namespace {

static_assert(findRule("xml-stray-ampersand").has_value());
static_assert(!findRule("xml-stray-ampersan").has_value());
static_assert(ruleOf("xml-stray-ampersand"_rule).group == RuleGroup::xml);

// Fits between the first character of a text and its last.
bool isSentence(std::string_view text) {
    return !text.empty() && text.find_first_of("\r\n\t") == std::string_view::npos &&
           text.find("  ") == std::string_view::npos && text.front() != ' ' && text.back() != ' ';
}

TEST(RuleTable, everyIdIsThereOnceAndBeginsWithItsGroup) {
    std::set<std::string_view> ids;
    for (const Rule& rule : kRuleTable) {
        EXPECT_TRUE(ids.insert(rule.id).second) << rule.id;
        EXPECT_TRUE(rule.id.starts_with(std::string(nameOf(rule.group)) + "-")) << rule.id;
        EXPECT_TRUE(std::all_of(rule.id.begin(), rule.id.end(), [](unsigned char c) {
            return std::islower(c) != 0 || std::isdigit(c) != 0 || c == '-';
        })) << rule.id;
    }
}

TEST(RuleTable, everyRuleReportsWhatItMeansAndWhatToDo) {
    for (const Rule& rule : kRuleTable) {
        EXPECT_TRUE(isSentence(rule.message)) << rule.id;
        for (const std::string_view text : {rule.meaning, rule.effect, rule.remedy}) {
            EXPECT_TRUE(isSentence(text) && (text.ends_with('.'))) << rule.id << ": " << text;
        }
        EXPECT_TRUE(isSentence(rule.source)) << rule.id;
    }
}

TEST(RuleTable, noTwoRulesOfACheckSayTheSame) {
    std::set<std::string_view> messages;
    for (const Rule& rule : kRuleTable) {
        EXPECT_TRUE(messages.insert(rule.message).second) << rule.id;
    }
}

TEST(RuleTable, theMessageOfACheckSaysWhatWouldBeRight) {
    for (const Rule& rule : kRuleTable) {
        if (!isOfACheck(rule.group)) {
            continue;
        }
        EXPECT_NE(rule.message.find("should"), std::string_view::npos) << rule.id;
        EXPECT_NE(rule.message.find("; "), std::string_view::npos) << rule.id;
        EXPECT_FALSE(rule.message.ends_with('.')) << rule.id;
    }
}

// What a rule is about as a whole needs no name.
TEST(RuleTable, theMessageOfARuleAboutAFormatNamesTheThing) {
    constexpr std::string_view kAboutTheFile[] = {"structure-no-content", "values-standalone"};
    for (const Rule& rule : kRuleTable) {
        const bool isOfAFormat = isOfACheck(rule.group) && rule.group != RuleGroup::xml;
        const bool isAboutTheFile = std::find(std::begin(kAboutTheFile), std::end(kAboutTheFile),
                                              rule.id) != std::end(kAboutTheFile);
        if (isOfAFormat) {
            EXPECT_EQ(argumentNames(rule.message).empty(), isAboutTheFile) << rule.id;
        }
    }
}

TEST(RuleTable, namesOfArgumentsAreWordsInLowerCase) {
    for (const Rule& rule : kRuleTable) {
        for (const std::string_view name : argumentNames(rule.message)) {
            EXPECT_TRUE(!name.empty() &&
                        std::all_of(name.begin(), name.end(),
                                    [](unsigned char c) { return std::islower(c) != 0; }))
                << rule.id << ": " << name;
        }
    }
}

TEST(RuleTable, knowsNoOtherIds) {
    EXPECT_EQ(findRule(""), std::nullopt);
    EXPECT_EQ(findRule("xml"), std::nullopt);
    for (std::size_t index = 0; index < kRuleCount; ++index) {
        EXPECT_EQ(findRule(kRuleTable[index].id)->index, index);
    }
}

TEST(RuleTable, theLinesOfARepairAreLetterExact) {
    EXPECT_EQ(messageOf("repair-start"_rule, {{"path", "/a/Cut.xml"}}),
              "Starting repair for file /a/Cut.xml...");
    EXPECT_EQ(messageOf("repair-old-copy-stays"_rule, {{"copy", "/a/Cut-backup.xml"}}),
              "Error: unable to remove temporary file. Please remove /a/Cut-backup.xml manually.");
    EXPECT_EQ(messageOf("repair-mended-markup"_rule,
                        {{"line", 3U}, {"column", 14U}, {"what", "it was so"}}),
              "Line 3, column 14: it was so");
    EXPECT_EQ(messageOf("repair-character-removed"_rule, {{"index", 17}}),
              "Invalid character at byte 17 removed.");
    EXPECT_EQ(messageOf("repair-root-element"_rule, {{"name", "xmeml"}}),
              "Root element should be <xmeml> node");
    EXPECT_EQ(messageOf("repair-newer-element"_rule, {{"element", "<colorinfo"}, {"version", "4"}}),
              "Warning: Invalid element <colorinfo> for XML Interchange version 4. Go to Tools > "
              "Convert XML Interchange Version to convert this to the proper format.");
    EXPECT_EQ(messageOf("repair-copy-unremoved"_rule, {{"copy", "/c"}, {"reason", "No."}}),
              "Unable to remove temporary file /c. No..");
    EXPECT_EQ(messageOf("repair-copy-unsaved"_rule, {{"copy", "/c"}, {"path", "/p"}}),
              "No repaired file was saved as /c. The file /p was left as it is.");
}

}  // namespace
}  // namespace vornic
