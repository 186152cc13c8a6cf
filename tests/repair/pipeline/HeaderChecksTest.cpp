#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "repair/pipeline/HeaderChecks.h"
#include "tests/repair/pipeline/CheckOfRepairTest.h"

namespace vornic {
namespace {

using Strings = std::vector<std::string>;

class HeaderChecksTest : public test::CheckOfRepairTest {
  protected:
    /// Checks a document as XMEML and keeps what comes back.
    void checkXMEML(std::string_view text) {
        std::unique_ptr<XMLDocument> document = test::parsed(text);
        const XMLDocument* given = document.get();
        checked = checkXMEMLHeaderTags(std::move(document), found);
        EXPECT_EQ(checked.get(), given);
    }
    void checkFCPXML(std::string_view text) {
        std::unique_ptr<XMLDocument> document = test::parsed(text);
        const XMLDocument* given = document.get();
        checked = checkFCPXMLHeaderTags(std::move(document), found);
        EXPECT_EQ(checked.get(), given);
    }

    std::unique_ptr<XMLDocument> checked;
};

using XMEMLHeader = HeaderChecksTest;

TEST_F(XMEMLHeader, findsNothingInASoundFile) {
    checkXMEML("<!DOCTYPE xmeml><xmeml version=\"5\"><project><sequence/></project></xmeml>");
    EXPECT_EQ(findings(), Strings{});
    expectFlags(false, true);
}

TEST_F(XMEMLHeader, addsAMissingDeclaration) {
    checkXMEML("<xmeml><sequence/></xmeml>");
    EXPECT_EQ(findings(), Strings{"repair-document-type"});
    expectFlags(true, true);
    EXPECT_EQ(checked->documentTypeName(), "xmeml");
    EXPECT_EQ(checked->xmlString(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml>\n"
              "    <sequence/>\n</xmeml>\n");
}

TEST_F(XMEMLHeader, replacesADeclarationOfAnotherName) {
    checkXMEML("<!DOCTYPE XMEML SYSTEM \"a.dtd\"><xmeml><sequence/></xmeml>");
    EXPECT_EQ(findings(), Strings{"repair-document-type"});
    EXPECT_EQ(checked->xmlString(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml>\n"
              "    <sequence/>\n</xmeml>\n");
}

TEST_F(XMEMLHeader, keepsADeclarationOfTheNameWithIdentifiers) {
    checkXMEML("<!DOCTYPE xmeml SYSTEM \"a.dtd\"><xmeml><sequence/></xmeml>");
    EXPECT_EQ(findings(), Strings{});
    EXPECT_NE(checked->xmlString().find("<!DOCTYPE xmeml SYSTEM \"a.dtd\">"), std::string::npos);
}

TEST_F(XMEMLHeader, neverSetsTheRepairedFlagForTheMendedDeclaration) {
    report.setVerdict({false, false});
    checkXMEML("<xmeml><sequence/></xmeml>");
    expectFlags(true, false);
}

TEST_F(XMEMLHeader, reportsAnotherRootAndLeavesIt) {
    checkXMEML("<!DOCTYPE xmeml><Xmeml><sequence/></Xmeml>");
    EXPECT_EQ(findings(), Strings{"repair-root-element xmeml"});
    expectFlags(true, false);
    EXPECT_EQ(checked->rootElement().name(), "Xmeml");
}

TEST_F(XMEMLHeader, reportsAFileWithoutSequences) {
    checkXMEML("<!DOCTYPE xmeml><xmeml><Sequence/><project sequence=\"1\"/></xmeml>");
    EXPECT_EQ(findings(), Strings{"repair-no-sequence"});
    expectFlags(true, false);
}

TEST_F(XMEMLHeader, looksForSequencesBelowTheRootElementOnly) {
    checkXMEML("<!DOCTYPE sequence><sequence/>");
    EXPECT_EQ(findings(),
              (Strings{"repair-document-type", "repair-root-element xmeml", "repair-no-sequence"}));
}

TEST_F(XMEMLHeader, reportsEverythingWithoutADocument) {
    EXPECT_EQ(checkXMEMLHeaderTags(nullptr, found), nullptr);
    EXPECT_EQ(findings(),
              (Strings{"repair-document-type", "repair-root-element xmeml", "repair-no-sequence"}));
    expectFlags(true, false);
}

TEST_F(XMEMLHeader, yieldsNothingAfterAnException) {
    raiseAtFinding = "repair-document-type";
    EXPECT_EQ(checkXMEMLHeaderTags(test::parsed("<xmeml/>"), found), nullptr);
    EXPECT_EQ(findings().size(), 1U);
    EXPECT_EQ(log.entries().back(),
              "Exception in -[Document checkXMEMLHeaderTags:]. Test - raised.");
}

using FCPXMLHeader = HeaderChecksTest;

TEST_F(FCPXMLHeader, findsNothingInASoundFile) {
    checkFCPXML(
        "<!DOCTYPE fcpxml><fcpxml><resources/><library><event><project/></event></library>"
        "</fcpxml>");
    EXPECT_EQ(findings(), Strings{});
    expectFlags(false, true);
}

TEST_F(FCPXMLHeader, addsAMissingDeclaration) {
    checkFCPXML("<fcpxml><resources/><project/></fcpxml>");
    EXPECT_EQ(findings(), Strings{"repair-document-type"});
    expectFlags(true, true);
    EXPECT_EQ(checked->documentTypeName(), "fcpxml");
}

TEST_F(FCPXMLHeader, replacesADeclarationOfXMEML) {
    checkFCPXML("<!DOCTYPE xmeml><fcpxml><resources/><project/></fcpxml>");
    EXPECT_EQ(findings(), Strings{"repair-document-type"});
    EXPECT_EQ(checked->documentTypeName(), "fcpxml");
}

TEST_F(FCPXMLHeader, reportsAnotherRoot) {
    checkFCPXML("<!DOCTYPE fcpxml><xmeml><resources/><project/></xmeml>");
    EXPECT_EQ(findings(), Strings{"repair-root-element fcpxml"});
    expectFlags(true, false);
}

TEST_F(FCPXMLHeader, reportsAMissingProjectAndDoesNotLookForResourcesThen) {
    checkFCPXML("<!DOCTYPE fcpxml><fcpxml><event/></fcpxml>");
    EXPECT_EQ(findings(), Strings{"repair-no-project"});
    expectFlags(true, false);
}

TEST_F(FCPXMLHeader, reportsMissingResourcesAlone) {
    checkFCPXML("<!DOCTYPE fcpxml><fcpxml><project/></fcpxml>");
    EXPECT_EQ(findings(), Strings{"repair-no-resources"});
    expectFlags(true, false);
}

TEST_F(FCPXMLHeader, needsNoSequence) {
    checkFCPXML("<!DOCTYPE fcpxml><fcpxml><a><b><resources/></b><project/></a></fcpxml>");
    EXPECT_EQ(findings(), Strings{});
}

TEST_F(FCPXMLHeader, reportsEverythingWithoutADocument) {
    EXPECT_EQ(checkFCPXMLHeaderTags(nullptr, found), nullptr);
    EXPECT_EQ(findings(),
              (Strings{"repair-document-type", "repair-root-element fcpxml", "repair-no-project"}));
    expectFlags(true, false);
}

TEST_F(FCPXMLHeader, yieldsNothingAfterAnException) {
    raiseAtFinding = "repair-no-resources";
    EXPECT_EQ(
        checkFCPXMLHeaderTags(test::parsed("<!DOCTYPE fcpxml><fcpxml><project/></fcpxml>"), found),
        nullptr);
    EXPECT_EQ(log.entries().back(),
              "Exception in -[Document checkFCPXMLHeaderTags:]. Test - raised.");
}

}  // namespace
}  // namespace vornic
