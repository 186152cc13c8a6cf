#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "repair/pipeline/ClosingMessage.h"
#include "repair/pipeline/RepairReport.h"
#include "report/RuleTable.h"
#include "tests/support/fakes/RecordingEvents.h"

namespace vornic {
namespace {

using Strings = std::vector<std::string>;

class RepairReportTest : public ::testing::Test {
  protected:
    test::RecordingEvents events;
    RepairReport report{events, {false, true}};
};

TEST_F(RepairReportTest, saysLinesInTheStyleOfTheirRules) {
    report.say("repair-start"_rule, {{"path", "/a"}});
    report.say("repair-checking-file"_rule);
    report.say("repair-not-loaded"_rule);
    report.say("repair-critical"_rule);
    report.sayAsError("repair-filtering"_rule);
    EXPECT_EQ(events.calls, (Strings{"bold: Starting repair for file /a...",
                                     "info: Checking file...", "error: Unable to load XML data",
                                     "bold error: Critical error - repair canceled.",
                                     "error: Filtering invalid characters..."}));
    EXPECT_EQ(events.rules, (Strings{"repair-start", "repair-checking-file", "repair-not-loaded",
                                     "repair-critical", "repair-filtering"}));
}

TEST_F(RepairReportTest, saysALineBeforeItsLabel) {
    report.sayAndLabel("repair-checking-file"_rule);
    EXPECT_EQ(events.calls, (Strings{"info: Checking file...", "label: Checking file..."}));
}

TEST_F(RepairReportTest, keepsTheVerdictAsTheEffectsOfFindingsChangeIt) {
    const auto add = [this](FindingEffect effect) {
        report.add({"repair-no-sequence"_rule, effect});
        return report.verdict();
    };
    EXPECT_EQ(add(FindingEffect::warning), (Verdict{false, true}));
    EXPECT_EQ(add(FindingEffect::mended), (Verdict{true, true}));
    EXPECT_EQ(add(FindingEffect::unmended), (Verdict{true, false}));
    EXPECT_EQ(add(FindingEffect::mended), (Verdict{true, false}));
    EXPECT_EQ(add(FindingEffect::removed), (Verdict{true, true}));
    EXPECT_EQ(events.verdicts.size(), 4U);
    EXPECT_EQ(report.findings().count(Severity::warning), 1U);
    EXPECT_EQ(report.findings().count(Severity::error), 4U);
}

TEST_F(RepairReportTest, reportsTheVerdictBeforeTheLine) {
    events.onCall = [this](const std::string&) {
        EXPECT_EQ(events.verdicts, std::vector<Verdict>{(Verdict{true, false})});
    };
    report.add({"repair-no-project"_rule});
    EXPECT_EQ(events.calls.size(), 1U);
}

TEST_F(RepairReportTest, reportsAVerdictThatIsTheSameToo) {
    // Whoever shows it may have had another one before the run.
    report.setVerdict({false, true});
    EXPECT_EQ(events.verdicts, std::vector<Verdict>{(Verdict{false, true})});
}

TEST_F(RepairReportTest, putsThePlaceInFrontOfAFindingThatHasOne) {
    RepairFinding finding{"repair-no-project"_rule};
    finding.where.line = 3;
    finding.where.column = 7;
    report.add(finding);
    EXPECT_EQ(events.calls, Strings{"error: Line 3, column 7: No project node found in file"});
}

TEST_F(RepairReportTest, countsEveryFindingAndKeepsTheFirstOnes) {
    const std::string text(3 * RepairReport::kKeptFindings, '\n');
    Findings found(RepairReport::kKeptFindings);
    for (std::size_t offset = 0; offset < text.size(); ++offset) {
        found.add("xml-stray-ampersand"_rule, {offset, 1});
    }
    report.count(std::move(found), SourcePlaces(text, 3));
    EXPECT_EQ(report.findings().count("xml-stray-ampersand"_rule), text.size());
    ASSERT_EQ(report.findings().kept().size(), RepairReport::kKeptFindings);
    EXPECT_EQ(report.findings().kept().back().where.line, RepairReport::kKeptFindings);
    EXPECT_EQ(report.findings().kept().back().where.offset, RepairReport::kKeptFindings - 1 + 3);
    EXPECT_EQ(events.calls, Strings{});
}

TEST_F(RepairReportTest, countsAFaultThatItKnowsNotAgain) {
    const auto count = [this](std::size_t offset) {
        Findings found;
        found.add("xml-stray-end-tag"_rule, {offset, 1});
        report.count(std::move(found), SourcePlaces("a text", 0));
        return report.findings().count("xml-stray-end-tag"_rule);
    };
    EXPECT_EQ(count(2), 1U);
    EXPECT_EQ(count(2), 1U);
    EXPECT_EQ(count(3), 2U);
}

TEST_F(RepairReportTest, knowsNoPlaceInATextThatIsNotTheFiles) {
    Findings found;
    found.add("xml-stray-ampersand"_rule, {2, 1});
    report.count(std::move(found), SourcePlaces("a text", std::nullopt));
    EXPECT_EQ(report.findings().kept().front().where, Place());
}

TEST_F(RepairReportTest, saysAMendByTheRuleOfItsFault) {
    report.sayMend({XMLErrorCode::missingSpace, 7, 2, 3, "a blank was put there"});
    EXPECT_EQ(events.rules, Strings{"xml-missing-space"});
    EXPECT_EQ(events.calls, Strings{"error: Line 2, column 3: a blank was put there"});
}

TEST_F(RepairReportTest, saysWithoutCountingWhatIsSaidOfNoDocument) {
    report.say(RepairFinding{"repair-no-sequence"_rule});
    EXPECT_EQ(report.verdict(), (Verdict{true, false}));
    EXPECT_EQ(events.rules, Strings{"repair-no-sequence"});
    EXPECT_EQ(report.findings().count(Severity::error), 0U);
}

TEST(ClosingMessage, hasTheFirstSentenceAsItsTitle) {
    const ClosingMessage sound = closingMessage("repair-sound"_rule);
    EXPECT_EQ(sound.title, "No repair was necessary");
    EXPECT_EQ(sound.information, "No critical errors were found in the file.");
    const ClosingMessage missing =
        closingMessage("repair-not-located"_rule, {{"path", "/a. b/{path}.xml"}});
    EXPECT_EQ(missing.title, "Unable to locate file");
    EXPECT_EQ(missing.information, "The file /a. b/{path}.xml cannot be found.");
}

}  // namespace
}  // namespace vornic
