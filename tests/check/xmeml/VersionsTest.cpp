#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "check/Check.h"
#include "report/RuleTable.h"

namespace vornic::xmeml {
namespace {

using Strings = std::vector<std::string>;

Report reportOf(const std::string& text, std::optional<std::string> reads) {
    CheckOptions options;
    options.reads = std::move(reads);
    return checkFile(text, options);
}

// The rules of what weighs more than a note.
Strings rulesOf(const Report& report) {
    Strings rules;
    for (const Finding& finding : report.findings.kept()) {
        if (finding.severity != Severity::info) {
            rules.emplace_back(ruleOf(finding.rule).id);
        }
    }
    return rules;
}

const GroupRun& runOf(const Report& report, RuleGroup group) {
    return report.groups.at(static_cast<std::size_t>(group));
}

const std::string kBin =
    "<xmeml version=\"2\"><bin><name>B</name><children/><uuid>1</uuid>"
    "<multiclip><name>M</name><angle><clip><name>C</name><duration>1</duration></clip></angle></"
    "multiclip></bin></xmeml>";

TEST(XMEMLVersions, anElementIsTooNewForTheFileOrForTheReceiverAndNeverForBoth) {
    EXPECT_EQ(rulesOf(reportOf(kBin, std::nullopt)), Strings{"structure-newer-element"});
    EXPECT_EQ(rulesOf(reportOf(kBin, "3")), Strings{"structure-newer-element"});
    EXPECT_EQ(rulesOf(reportOf(kBin, "2")), Strings{"versions-newer-element"});
    EXPECT_EQ(rulesOf(reportOf(kBin, "1")),
              (Strings{"versions-newer-than-receiver", "versions-newer-element",
                       "versions-newer-element"}));
}

TEST(XMEMLVersions, whatTheReceiverLacksIsAnErrorInAFileWithoutAVersion) {
    std::string text = kBin;
    text.erase(text.find(" version"), 12);
    EXPECT_EQ(rulesOf(reportOf(text, std::nullopt)), Strings{"versions-not-declared"});
    EXPECT_EQ(rulesOf(reportOf(text, "2")),
              (Strings{"versions-not-declared", "versions-newer-element"}));
}

TEST(XMEMLVersions, theGroupRunsWhateverTheReceiverReads) {
    for (const auto& reads : {std::optional<std::string>(), std::optional<std::string>("1.9")}) {
        EXPECT_TRUE(runOf(reportOf(kBin, reads), RuleGroup::versions).ran);
        EXPECT_EQ(rulesOf(reportOf(kBin, reads)), Strings{"structure-newer-element"});
    }
}

TEST(XMEMLVersions, aMissingVersionIsAWarningOfTheRuleThatReportsItOfFCPXML) {
    std::string text = kBin;
    text.erase(text.find(" version"), 12);
    const Report report = reportOf(text, std::nullopt);
    const Finding& finding = report.findings.kept()[0];
    EXPECT_EQ(finding.severity, Severity::warning);
    EXPECT_EQ(finding.message(),
              "the file does not say which version of XMEML it is in; <xmeml> should have the "
              "attribute version, such as version=\"5\"");
}

TEST(XMEMLStructure, doesNotMissWhatAFileThatEndsEarlyMayHaveHad) {
    const std::string text =
        "<xmeml version=\"5\"><sequence><name>S</name><rate><timebase>25</timebase><ntsc>FALSE"
        "</ntsc></rate><marker><name>M</name></marker><marker><name>N</name>";
    const Report report = checkFile(text, {});
    EXPECT_EQ(rulesOf(report), (Strings{"structure-missing-part", "xml-unclosed-element"}));
    EXPECT_EQ(report.findings.kept()[0].message(),
              "the marker \"M\" lacks <in> and <out>; every <marker> should have that");
}

TEST(XMEMLStructure, namesThingsAsAnEditorReadsThem) {
    const Report report = checkFile(
        "<xmeml version=\"5\"><clip id=\"c\"><name>Tom &amp; <![CDATA[<Ann>]]></name></clip>"
        "</xmeml>",
        {});
    ASSERT_FALSE(report.findings.kept().empty());
    EXPECT_EQ(report.findings.kept()[0].message(),
              "the clip \"Tom & <Ann>\" lacks <duration>; every <clip> should have that");
}

}  // namespace
}  // namespace vornic::xmeml
