#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "report/XMLFindings.h"

namespace vornic {
namespace {

Findings findingsIn(std::string_view text) {
    Findings findings;
    XMLFindings sink(text, findings);
    sink.addFault(readXML(text, XMLMode::tolerant, nullptr, &sink));
    findings.sort();
    return findings;
}

TEST(XMLFindings, areTheRulesOfWhatTheReaderMends) {
    const Findings findings =
        findingsIn("<a b=c d e='x'f='y' g='<'>& &nbsp; ]]> < <!-- -- -->\x01</a>");
    std::vector<std::string_view> ids;
    for (const Finding& finding : findings.kept()) {
        ids.push_back(ruleOf(finding.rule).id);
    }
    EXPECT_EQ(ids, (std::vector<std::string_view>{
                       "xml-unquoted-value", "xml-attribute-without-value", "xml-missing-space",
                       "xml-less-than-in-value", "xml-stray-ampersand", "xml-undefined-entity",
                       "xml-cdata-end-in-text", "xml-stray-less-than",
                       "xml-double-hyphen-in-comment", "xml-forbidden-character"}));
}

TEST(XMLFindings, haveTheEditsOfTheReaderAsTheirSafeMends) {
    const Findings findings = findingsIn("<a b=c>\x01\x02</a>");
    ASSERT_EQ(findings.kept().size(), 2U);
    EXPECT_EQ(findings.kept()[0].mend,
              (Mend{Confidence::safe, "put the value in quotes", {{5, 0, "\""}, {6, 0, "\""}}}));
    EXPECT_EQ(findings.kept()[1].where.length, 2U);
    EXPECT_EQ(findings.kept()[1].mend,
              (Mend{Confidence::safe, "delete the character", {{7, 2, ""}}}));
}

TEST(XMLFindings, nameWhatIsConcerned) {
    EXPECT_EQ(findingsIn("<a disabled></a>").kept()[0].message(),
              "the attribute disabled has no value; one in quotes should follow it");
    EXPECT_EQ(findingsIn("<a>&eacute;</a>").kept()[0].message().substr(0, 15), "&eacute; is no ");
}

TEST(XMLFindings, endWithTheFaultThatEndedTheReading) {
    const Findings findings = findingsIn("<a>&\n<b></a>");
    ASSERT_EQ(findings.kept().size(), 2U);
    EXPECT_EQ(findings.kept()[1].rule, "xml-mismatched-end-tag"_rule);
    EXPECT_EQ(findings.kept()[1].where.offset, 8U);
    EXPECT_EQ(findings.kept()[1].message(),
              "the end tag </a> does not match the start tag <b> of line 2; </b> should close it "
              "first");
    EXPECT_FALSE(findings.kept()[1].mend.has_value());
}

TEST(XMLFindings, ofAFileThatEndsEarlySayWhatIsOpen) {
    const Findings findings = findingsIn("<a>\n<b>");
    ASSERT_EQ(findings.kept().size(), 1U);
    EXPECT_EQ(findings.kept()[0].message(),
              "the file ends before <b> (line 2) is closed; </b> should stand at its end");
}

TEST(XMLFindings, reportOnceWhatTheReaderBeganToMendAndRefused) {
    for (const std::string text :
         {"<a b=T\"/>", "<a b=\"x\" c=\"=\"d=\"\"/>", "<a><!-- <!-- --></a>"}) {
        const Findings findings = findingsIn(text);
        ASSERT_EQ(findings.kept().size(), 1U) << text;
        EXPECT_FALSE(findings.kept()[0].mend.has_value()) << text;
    }
    EXPECT_EQ(findingsIn("<a b=\"x\" c=\"=\"d=\"\"/>").kept()[0].message().substr(0, 11),
              "the tag <a>");
}

TEST(XMLFindings, ofASoundTextAreNone) {
    EXPECT_TRUE(findingsIn("<a b='&amp;'>x</a>").kept().empty());
}

}  // namespace
}  // namespace vornic
