#include <algorithm>
#include <string>
#include <vector>

#include "report/RuleTable.h"
#include "tests/repair/pipeline/PipelineTest.h"

/// What a run hands back.
namespace vornic {
namespace {

using test::kSoundXMEML;
using test::Strings;

const std::string kHead = "<!DOCTYPE xmeml>\n<xmeml version=\"5\">";

class RepairResultTest : public test::PipelineTest {
  protected:
    /// The kept findings in order: "id line,column @offset", and their arguments behind it.
    [[nodiscard]] Strings findings() const {
        Strings all;
        for (const Finding& finding : result.findings.kept()) {
            const Place& where = finding.where;
            std::string words(ruleOf(finding.rule).id);
            words += " " + std::to_string(where.line) + "," + std::to_string(where.column) + " @" +
                     std::to_string(where.offset);
            for (const Argument& argument : finding.arguments) {
                words += argument.value.empty() ? "" : " " + argument.value;
            }
            all.push_back(words);
        }
        return all;
    }
};

TEST_F(RepairResultTest, ofASoundFileHasNoFindings) {
    EXPECT_EQ(runOn("Cut.xml", kSoundXMEML), RepairOutcome::sound);
    EXPECT_EQ(findings(), Strings{});
    EXPECT_EQ(result.verdict, (Verdict{false, true}));
    EXPECT_EQ(result.original, sandbox.path("Cut.xml"));
    EXPECT_EQ(result.workingCopy, "");
}

TEST_F(RepairResultTest, reportsWhatWasMendedByItsRuleAndWhere) {
    const std::string text = kHead + "<sequence a=&amp;>\n é & &nbsp; \x01</sequence></xmeml>";
    EXPECT_EQ(runOn("Cut.xml", "\xEF\xBB\xBF" + text), RepairOutcome::repairedAndSwapped);
    const auto offset = [&](std::string_view what) { return std::to_string(3 + text.find(what)); };
    const Strings all = findings();
    ASSERT_GE(all.size(), 4U);
    EXPECT_EQ(Strings(all.begin(), all.begin() + 4),
              (Strings{"xml-unquoted-value 2,32 @" + offset("&amp;"),
                       "xml-stray-ampersand 3,4 @" + offset("& "),
                       "xml-undefined-entity 3,6 @" + offset("&nbsp") + " nbsp",
                       "repair-character-removed 3,13 @" + offset("\x01") + " 67"}));
    EXPECT_EQ(result.findings.count("xml-stray-ampersand"_rule), 1U);
    EXPECT_EQ(result.findings.count(Severity::warning), 0U);
}

TEST_F(RepairResultTest, reportsTheFaultThatEndedTheReading) {
    EXPECT_EQ(runOn("Cut.xml", kHead + "<sequence></xmeml>"), RepairOutcome::unable);
    ASSERT_EQ(result.findings.kept().size(), 1U);
    EXPECT_EQ(findings().front(), "xml-mismatched-end-tag 2,30 @46 xmeml sequence 2");
    EXPECT_NE(result.findings.kept().front().message().find("</sequence>"), std::string::npos);
}

TEST_F(RepairResultTest, reportsTheFaultThatOnlyTheFilterMakesAndWhereItComesFrom) {
    // The filter takes what follows the first greater-than sign for text, and the mend before it
    // has moved all.
    const std::string text = kHead + "<sequence a=b>é\n<!-- a > b --></sequence></xmeml>";
    EXPECT_EQ(runOn("Cut.xml", text), RepairOutcome::unable);
    EXPECT_EQ(findings(), (Strings{"xml-unquoted-value 2,32 @" + std::to_string(text.find("b>")),
                                   "xml-double-hyphen-in-comment 3,12 @" +
                                       std::to_string(text.find("-->")) + " 1"}));
    // What the checks say of no document is said, but is no finding.
    EXPECT_EQ(std::count(events.rules.begin(), events.rules.end(), "repair-root-element"), 1);
    EXPECT_EQ(std::count(events.rules.begin(), events.rules.end(), "repair-version-missing"), 1);
    EXPECT_EQ(result.findings.count(Severity::error), 2U);
}

TEST_F(RepairResultTest, reportsTheFaultOfACharacterThatTheFilterLeaves) {
    const std::string text = kHead + "<sequence><![CDATA[\x01]]></sequence></xmeml>";
    EXPECT_EQ(runOn("Cut.xml", text), RepairOutcome::unable);
    EXPECT_EQ(findings(), Strings{"xml-forbidden-character 2,39 @" +
                                  std::to_string(text.find('\x01')) + " U+0001"});
}

TEST_F(RepairResultTest, reportsTheMendsWithTheirEditsOfTheFile) {
    const std::string text = "\xEF\xBB\xBF" + kHead + "<sequence a=b>&</sequence></xmeml>";
    EXPECT_EQ(runOn("Cut.xml", text), RepairOutcome::repairedAndSwapped);
    ASSERT_EQ(result.findings.kept().size(), 2U);
    const auto editsOf = [this](std::size_t index) {
        Strings edits;
        for (const Edit& edit : result.findings.kept()[index].mend.value().edits) {
            edits.push_back(std::to_string(edit.offset) + "+" + std::to_string(edit.length) + " " +
                            edit.text);
        }
        return edits;
    };
    const std::size_t value = text.find("b>");
    EXPECT_EQ(editsOf(0),
              (Strings{std::to_string(value) + "+0 \"", std::to_string(value + 1) + "+0 \""}));
    EXPECT_EQ(editsOf(1), Strings{std::to_string(text.find('&')) + "+1 &amp;"});
}

TEST_F(RepairResultTest, namesAHalfPairAsACheckDoes) {
    EXPECT_EQ(runOn("Cut.xml", kHead + "<sequence>&#xD83D;&#xDE00;</sequence></xmeml>"),
              RepairOutcome::repairedAndSwapped);
    EXPECT_EQ(result.findings.count("characters-half-pair"_rule), 1U);
    EXPECT_EQ(result.findings.count(Severity::error), 1U);
}

TEST_F(RepairResultTest, ofBytesThatAreNoTextHasNoPlacesAndNoMends) {
    EXPECT_EQ(runOn("Cut.xml", kHead + "<sequence>\xFF&</sequence></xmeml>"),
              RepairOutcome::repairedAndSwapped);
    ASSERT_EQ(findings(), Strings{"xml-stray-ampersand 0,0 @0"});
    EXPECT_FALSE(result.findings.kept().front().mend.has_value());
}

TEST_F(RepairResultTest, reportsWhatTheChecksFindAboutTheFileAsAWhole) {
    EXPECT_EQ(runOn("Cut.xml", "<xmeml version=\"4\"><a/><color>b</color></xmeml>"),
              RepairOutcome::unable);
    EXPECT_EQ(findings(), (Strings{"repair-document-type 0,0 @0", "repair-no-sequence 0,0 @0",
                                   "repair-newer-element 0,0 @0 <color 4"}));
    EXPECT_EQ(result.findings.count(Severity::error), 2U);
    EXPECT_EQ(result.findings.count(Severity::warning), 1U);
    EXPECT_EQ(result.verdict, (Verdict{true, false}));
}

TEST_F(RepairResultTest, ofARepairedFileReportsWhereTheOriginalIs) {
    EXPECT_EQ(runOn("Cut.xml", "<xmeml version=\"5\"><sequence/></xmeml>"),
              RepairOutcome::repairedAndSwapped);
    EXPECT_EQ(result.original, trash() + "/Cut.xml");
    EXPECT_EQ(result.workingCopy, "");
    EXPECT_EQ(result.verdict, (Verdict{true, true}));
}

}  // namespace
}  // namespace vornic
