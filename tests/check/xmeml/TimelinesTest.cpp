#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "check/Check.h"
#include "report/RuleTable.h"

namespace vornic::xmeml {
namespace {

using Strings = std::vector<std::string>;

std::string item(int start, int end, const std::string& more = "") {
    return "<clipitem><name>C</name><duration>900</duration><start>" + std::to_string(start) +
           "</start><end>" + std::to_string(end) + "</end>" + more + "</clipitem>";
}

std::string sequence(const std::string& items, const std::string& timecode = "") {
    return "<xmeml "
           "version=\"5\"><sequence><name>S</name><duration>30000</duration><rate><timebase>30"
           "</timebase><ntsc>TRUE</ntsc></rate>" +
           timecode + "<media><video><track>" + items +
           "</track></video></media></sequence></xmeml>";
}

// Rules of all findings of a group, with the timecode where there is one.
Strings findingsOf(const std::string& text, RuleGroup group = RuleGroup::timing) {
    Strings found;
    const Report report = checkFile(text, {});
    for (const Finding& finding : report.findings.kept()) {
        if (ruleOf(finding.rule).group == group) {
            const std::string& timecode = finding.where.timecode;
            found.push_back(std::string(ruleOf(finding.rule).id) +
                            (timecode.empty() ? "" : " " + timecode));
        }
    }
    return found;
}

TEST(XMEMLTimelines, reportTheTimecodeOfTheirSequence) {
    const std::string overlap = item(0, 1800) + item(1799, 1900) + item(1900, 1901);
    EXPECT_EQ(findingsOf(sequence(overlap))[0], "timing-overlap 00:00:59:29");
    EXPECT_EQ(findingsOf(sequence(overlap,
                                  "<timecode><string>01:00:00;00</string><frame>107892"
                                  "</frame><displayformat>DF</displayformat></timecode>"))
                  .at(0),
              "timing-overlap 01:00:59;29");
    EXPECT_EQ(findingsOf(sequence(overlap,
                                  "<timecode><frame>90</frame><displayformat>NDF"
                                  "</displayformat></timecode>"))
                  .at(0),
              "timing-overlap 00:01:02:29");
}

TEST(XMEMLTimelines, takeAClipThatIsOutOfOrderForThatAlone) {
    EXPECT_EQ(findingsOf(sequence(item(100, 200) + item(50, 150) + item(200, 300))),
              Strings{"timing-item-order 00:00:01:20"});
}

TEST(XMEMLTimelines, missNoTransitionThatMayComeAfterTheFaultOfTheFile) {
    const std::string text = sequence(item(0, -1));
    EXPECT_EQ(findingsOf(text), Strings{"timing-missing-transition 00:00:00:00"});
    EXPECT_EQ(findingsOf(text.substr(0, text.find("</track>"))), Strings());
}

TEST(XMEMLTimelines, doNotMeasureWhatRunsAtAnotherSpeed) {
    const std::string used = "<in>0</in><out>50</out>";
    EXPECT_EQ(findingsOf(sequence(item(0, 100, used))), Strings{"timing-length 00:00:00:00"});
    for (const char* const reason :
         {"<reversed>TRUE</reversed>",
          "<filter><effect><effectid>TimeRemap</effectid></effect></filter>",
          "<rate><timebase>60</timebase><ntsc>TRUE</ntsc></rate>",
          "<file "
          "id=\"f\"><name>F</name><rate><timebase>25</timebase><ntsc>FALSE</ntsc></rate></file>"}) {
        EXPECT_EQ(findingsOf(sequence(item(0, 100, used + reason))), Strings()) << reason;
    }
    EXPECT_EQ(findingsOf(sequence(item(
                  0, 100, used + "<filter><effect><effectid>blur</effectid></effect></filter>"))),
              Strings{"timing-length 00:00:00:00"});
}

TEST(XMEMLTimelines, ofSequencesInsideOfOthersAreTheirOwn) {
    const std::string inner =
        "<sequence><name>T</name><duration>10</duration><rate><timebase>25</timebase><ntsc>FALSE"
        "</ntsc></rate><media><video><track>" +
        item(0, 10) + "</track></video></media></sequence>";
    EXPECT_EQ(findingsOf(sequence(item(0, 100, inner) + item(100, 200))), Strings());
    EXPECT_EQ(findingsOf(sequence(item(0, 100, inner) + item(99, 200))),
              Strings{"timing-overlap 00:00:03:09"});
}

TEST(XMEMLTimelines, areReadInTimeThatGrowsWithTheFile) {
    std::string items;
    for (int i = 0; i < 20000; ++i) {
        items += item(i, i + 2, "<file id=\"f\"/>");
    }
    const Report report = checkFile(sequence(items), {});
    EXPECT_EQ(report.findings.count("timing-overlap"_rule), 19999U);
    EXPECT_EQ(report.findings.count("references-file-undefined"_rule), 1U);
}

}  // namespace
}  // namespace vornic::xmeml
