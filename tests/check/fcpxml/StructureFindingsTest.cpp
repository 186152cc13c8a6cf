#include <string>

#include <gtest/gtest.h>

#include "check/fcpxml/StructureFindings.h"
#include "xml/reader/XMLReader.h"

namespace vornic {

namespace {

using fcpxml::Definition;
using fcpxml::Validator;
using fcpxml::Version;

// The one finding of a document, as its rule and its message.
std::string onlyFinding(const std::string& text, int minor = 10, bool isStandalone = false) {
    Findings findings;
    const Version version(minor);
    Validator validator(Definition::of(version), isStandalone,
                        structureFindings(version, text, findings));
    EXPECT_FALSE(readXML(text, XMLMode::strict, &validator).fault);
    validator.finish();
    EXPECT_EQ(findings.kept().size(), 1U);
    if (findings.kept().size() != 1) {
        return "";
    }
    const Finding& finding = findings.kept()[0];
    return std::string(ruleOf(finding.rule).id) + ": " + finding.message();
}

std::string withResources(const std::string& resources) {
    return "<fcpxml version=\"1.10\"><resources>" + resources + "</resources></fcpxml>";
}

}  // namespace

TEST(StructureFindings, nameWhatWasMeant) {
    EXPECT_EQ(onlyFinding(withResources("<fromat id=\"r1\"/>")),
              "structure-unknown-element: <fromat> is no element of FCPXML; <format> should stand "
              "here");
    EXPECT_EQ(onlyFinding(withResources("<format id=\"r1\" framDuration=\"1/25s\"/>")),
              "structure-unknown-attribute: <format> has no attribute framDuration; it should "
              "perhaps be frameDuration");
    EXPECT_EQ(onlyFinding(withResources("<format id=\"r1\"/><media id=\"r2\"><sequence "
                                        "format=\"r1\" audioRate=\"48000\"><spine/></sequence>"
                                        "</media>")),
              "structure-value-not-listed: audioRate of <sequence> is \"48000\"; it should be 32k, "
              "44.1k, 48k, 88.2k, 96k, 176.4k or 192k");
}

TEST(StructureFindings, nameTheVersionsThatHaveWhatThisOneLacks) {
    EXPECT_EQ(
        onlyFinding("<fcpxml version=\"1.8\"><resources><asset id=\"r1\" src=\"file:///a\">"
                    "<media-rep src=\"file:///a\"/></asset></resources></fcpxml>",
                    8),
        "structure-element-of-other-version: <media-rep> belongs to FCPXML 1.9 and later, not "
        "to 1.8; the file should declare a version that has it, or do without it");
    EXPECT_EQ(
        onlyFinding(withResources("<asset id=\"r1\" src=\"file:///a\"><media-rep "
                                  "src=\"file:///a\"/></asset>")),
        "structure-attribute-of-other-version: the attribute src of <asset> belongs to FCPXML "
        "1.0 to 1.8, not to 1.10; the file should declare a version that has it, or do "
        "without it");
}

TEST(StructureFindings, nameTheVersionsInWhichAnElementHasItsPlace) {
    EXPECT_EQ(
        onlyFinding("<fcpxml version=\"1.3\"><resources/></fcpxml>", 3),
        "structure-element-of-other-version: <resources> in <fcpxml> belongs to FCPXML 1.4 and "
        "later, not to 1.3; the file should declare a version that has it, or do without it");
    EXPECT_EQ(onlyFinding(withResources("<format id=\"r1\">\n<note/>\n</format>")),
              "structure-misplaced-element: <note> has no place in <format>; nothing should stand "
              "here");
}

TEST(StructureFindings, reportAPathThatStandsWhereOlderVersionsHaveItOnce) {
    EXPECT_TRUE(onlyFinding(withResources("<asset id=\"r1\" src=\"file:///a\"/>"))
                    .starts_with("structure-attribute-of-other-version: "));
}

TEST(StructureFindings, nameWhatIsMissing) {
    EXPECT_EQ(onlyFinding(withResources("<asset id=\"r1\"/>")),
              "structure-missing-element: <asset> lacks a part; <media-rep> should stand in it");
    EXPECT_EQ(onlyFinding(withResources("<format/>")),
              "structure-missing-attribute: <format> lacks the attribute id; every <format> should "
              "have it");
    EXPECT_EQ(onlyFinding(withResources("<media id=\"r1\"><sequence format=\"r9\"><spine/>"
                                        "</sequence></media>")),
              "structure-dangling-reference: format of <sequence> is \"r9\", and nothing has that "
              "id; it should name something that is in the file");
}

TEST(StructureFindings, nameWhatStandsWrong) {
    EXPECT_EQ(onlyFinding(withResources("<media id=\"r1\"/>x")),
              "structure-misplaced-text: text stands between the parts of <resources>; only "
              "elements should stand there");
    EXPECT_EQ(onlyFinding("<fcpxml version=\"1.10\"><event/><resources/></fcpxml>"),
              "structure-element-order: <resources> stands behind <event> in <fcpxml>; it should "
              "stand before it");
    EXPECT_EQ(onlyFinding(withResources("<format id=\"r1\"> </format>")),
              "structure-content-in-empty-element: <format> has content; it should be empty, even "
              "of white space and comments");
    EXPECT_EQ(
        onlyFinding(withResources("<format id=\"1r\"/>")),
        "structure-malformed-id: \"1r\" cannot be the id of <format>; an id should begin with "
        "a letter or an underscore and hold letters, digits, hyphens and full stops alone");
    EXPECT_EQ(onlyFinding(withResources("<format id=\"r1\"/><format id=\"r1\"/>")),
              "structure-repeated-id: the id \"r1\" of <format> stands at another element, "
              "too; each id should be in the file once");
    EXPECT_EQ(onlyFinding("<fcpxml version=\"1.9\"/>"),
              "structure-value-not-fixed: version of <fcpxml> is \"1.9\"; it should always be "
              "\"1.10\"");
    EXPECT_EQ(onlyFinding("<!DOCTYPE xmeml><fcpxml version=\"1.10\"/>"),
              "structure-document-type: the document type is xmeml, the root element fcpxml; both "
              "should have the same name");
    EXPECT_EQ(onlyFinding(withResources("<spine/>")).substr(0, 93),
              "structure-misplaced-element: <spine> has no place in <resources>; <asset>, "
              "<effect>, <format>");
}

TEST(StructureFindings, reportOnceThatADocumentIsNotStandalone) {
    EXPECT_EQ(onlyFinding(withResources("\n<format id=\"r1\"/>\n"), 10, true).substr(0, 18),
              "values-standalone:");
}

}  // namespace vornic
