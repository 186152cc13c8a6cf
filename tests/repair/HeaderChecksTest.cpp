#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "repair/HeaderChecks.h"
#include "tests/support/EngineTest.h"
#include "tests/support/RecordingRepairHost.h"

namespace vornic {
namespace {

using Strings = std::vector<std::string>;

class HeaderChecksTest : public test::EngineTest {
  protected:
    /// Checks a document as XMEML and keeps what comes back.
    void checkXMEML(std::string_view text) {
        std::unique_ptr<XMLDocument> document = test::parsed(text);
        const XMLDocument* given = document.get();
        checked = checkXMEMLHeaderTags(host, std::move(document));
        EXPECT_EQ(checked.get(), given);
    }
    void checkFCPXML(std::string_view text) {
        std::unique_ptr<XMLDocument> document = test::parsed(text);
        const XMLDocument* given = document.get();
        checked = checkFCPXMLHeaderTags(host, std::move(document));
        EXPECT_EQ(checked.get(), given);
    }
    void expectFlags(bool hasErrors, bool wasRepaired) const {
        EXPECT_EQ(host.hasErrors, hasErrors);
        EXPECT_EQ(host.wasRepaired, wasRepaired);
    }

    test::RecordingRepairHost host;
    std::unique_ptr<XMLDocument> checked;
};

using XMEMLHeader = HeaderChecksTest;

TEST_F(XMEMLHeader, findsNothingInASoundFile) {
    checkXMEML("<!DOCTYPE xmeml><xmeml version=\"5\"><project><sequence/></project></xmeml>");
    EXPECT_EQ(host.calls, Strings{});
    expectFlags(false, true);
    EXPECT_EQ(log.entries(), Strings{"Checking header tags..."});
}

TEST_F(XMEMLHeader, addsAMissingDeclaration) {
    checkXMEML("<xmeml><sequence/></xmeml>");
    EXPECT_EQ(host.calls, Strings{"error: Invalid DTD... repairing"});
    expectFlags(true, true);
    EXPECT_EQ(checked->documentTypeName(), "xmeml");
    EXPECT_EQ(checked->xmlString(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml>\n"
              "    <sequence/>\n</xmeml>\n");
}

TEST_F(XMEMLHeader, replacesADeclarationOfAnotherName) {
    checkXMEML("<!DOCTYPE XMEML SYSTEM \"a.dtd\"><xmeml><sequence/></xmeml>");
    EXPECT_EQ(host.calls, Strings{"error: Invalid DTD... repairing"});
    EXPECT_EQ(checked->xmlString(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml>\n"
              "    <sequence/>\n</xmeml>\n");
}

TEST_F(XMEMLHeader, keepsADeclarationOfTheNameWithIdentifiers) {
    checkXMEML("<!DOCTYPE xmeml SYSTEM \"a.dtd\"><xmeml><sequence/></xmeml>");
    EXPECT_EQ(host.calls, Strings{});
    EXPECT_NE(checked->xmlString().find("<!DOCTYPE xmeml SYSTEM \"a.dtd\">"), std::string::npos);
}

TEST_F(XMEMLHeader, neverSetsTheRepairedFlagForTheMendedDeclaration) {
    host.wasRepaired = false;
    checkXMEML("<xmeml><sequence/></xmeml>");
    expectFlags(true, false);
}

TEST_F(XMEMLHeader, reportsAnotherRootAndLeavesIt) {
    checkXMEML("<!DOCTYPE xmeml><Xmeml><sequence/></Xmeml>");
    EXPECT_EQ(host.calls, Strings{"error: Root element should be <xmeml> node"});
    expectFlags(true, false);
    EXPECT_EQ(checked->rootElement().name(), "Xmeml");
}

TEST_F(XMEMLHeader, reportsAFileWithoutSequences) {
    checkXMEML("<!DOCTYPE xmeml><xmeml><Sequence/><project sequence=\"1\"/></xmeml>");
    EXPECT_EQ(host.calls, Strings{"error: No sequences found in file"});
    expectFlags(true, false);
}

TEST_F(XMEMLHeader, looksForSequencesBelowTheRootElementOnly) {
    checkXMEML("<!DOCTYPE sequence><sequence/>");
    EXPECT_EQ(host.calls, (Strings{"error: Invalid DTD... repairing",
                                   "error: Root element should be <xmeml> node",
                                   "error: No sequences found in file"}));
}

TEST_F(XMEMLHeader, reportsEverythingWithoutADocument) {
    EXPECT_EQ(checkXMEMLHeaderTags(host, nullptr), nullptr);
    EXPECT_EQ(host.calls, (Strings{"error: Invalid DTD... repairing",
                                   "error: Root element should be <xmeml> node",
                                   "error: No sequences found in file"}));
    expectFlags(true, false);
}

TEST_F(XMEMLHeader, yieldsNothingAfterAnException) {
    host.raiseAtCall = "error: Invalid DTD... repairing";
    EXPECT_EQ(checkXMEMLHeaderTags(host, test::parsed("<xmeml/>")), nullptr);
    EXPECT_EQ(host.calls.size(), 1U);
    EXPECT_EQ(log.entries().back(),
              "Exception in -[Document checkXMEMLHeaderTags:]. Test - raised.");
}

using FCPXMLHeader = HeaderChecksTest;

TEST_F(FCPXMLHeader, findsNothingInASoundFile) {
    checkFCPXML(
        "<!DOCTYPE fcpxml><fcpxml><resources/><library><event><project/></event></library>"
        "</fcpxml>");
    EXPECT_EQ(host.calls, Strings{});
    expectFlags(false, true);
    EXPECT_EQ(log.entries(), Strings{"Checking header tags..."});
}

TEST_F(FCPXMLHeader, addsAMissingDeclaration) {
    checkFCPXML("<fcpxml><resources/><project/></fcpxml>");
    EXPECT_EQ(host.calls, Strings{"error: Invalid DTD... repairing"});
    expectFlags(true, true);
    EXPECT_EQ(checked->documentTypeName(), "fcpxml");
}

TEST_F(FCPXMLHeader, replacesADeclarationOfXMEML) {
    checkFCPXML("<!DOCTYPE xmeml><fcpxml><resources/><project/></fcpxml>");
    EXPECT_EQ(host.calls, Strings{"error: Invalid DTD... repairing"});
    EXPECT_EQ(checked->documentTypeName(), "fcpxml");
}

TEST_F(FCPXMLHeader, reportsAnotherRoot) {
    checkFCPXML("<!DOCTYPE fcpxml><xmeml><resources/><project/></xmeml>");
    EXPECT_EQ(host.calls, Strings{"error: Root element should be <fcpxml> node"});
    expectFlags(true, false);
}

TEST_F(FCPXMLHeader, reportsAMissingProjectAndDoesNotLookForResourcesThen) {
    checkFCPXML("<!DOCTYPE fcpxml><fcpxml><event/></fcpxml>");
    EXPECT_EQ(host.calls, Strings{"error: No project node found in file"});
    expectFlags(true, false);
}

TEST_F(FCPXMLHeader, reportsMissingResourcesAlone) {
    checkFCPXML("<!DOCTYPE fcpxml><fcpxml><project/></fcpxml>");
    EXPECT_EQ(host.calls, Strings{"error: No resource node found in file"});
    expectFlags(true, false);
}

TEST_F(FCPXMLHeader, needsNoSequence) {
    checkFCPXML("<!DOCTYPE fcpxml><fcpxml><a><b><resources/></b><project/></a></fcpxml>");
    EXPECT_EQ(host.calls, Strings{});
}

TEST_F(FCPXMLHeader, reportsEverythingWithoutADocument) {
    EXPECT_EQ(checkFCPXMLHeaderTags(host, nullptr), nullptr);
    EXPECT_EQ(host.calls, (Strings{"error: Invalid DTD... repairing",
                                   "error: Root element should be <fcpxml> node",
                                   "error: No project node found in file"}));
    expectFlags(true, false);
}

TEST_F(FCPXMLHeader, yieldsNothingAfterAnException) {
    host.raiseAtCall = "error: No resource node found in file";
    EXPECT_EQ(
        checkFCPXMLHeaderTags(host, test::parsed("<!DOCTYPE fcpxml><fcpxml><project/></fcpxml>")),
        nullptr);
    EXPECT_EQ(log.entries().back(),
              "Exception in -[Document checkFCPXMLHeaderTags:]. Test - raised.");
}

}  // namespace
}  // namespace vornic
