#include <filesystem>

#include "base/Exception.h"
#include "tests/repair/document/DocumentTest.h"
#include "tests/support/machine/FileState.h"

/// The conversion dialog's operations of a document.
namespace vornic {
namespace {

using test::Strings;

const std::string kVersion5 =
    "<!DOCTYPE xmeml><xmeml version=\"5\"><sequence><multiclip/><multiclip>"
    "a</multiclip><b/></sequence></xmeml>";

class DocumentConversionTest : public test::DocumentTest {
  protected:
    [[nodiscard]] Strings menuKeys() const {
        Strings keys;
        for (const ConversionOffer::Version& version : window->offers.back().versions) {
            keys.insert(keys.end(), static_cast<std::size_t>(version.menuItems), version.key);
        }
        return keys;
    }
};

TEST_F(DocumentConversionTest, aFileThatIsGoneShowsAnAlertAndNoSheet) {
    document->setFilePath(sandbox.path("None.xml"));
    document->showConvertDialog();
    waitForThreads();
    EXPECT_EQ(window->calls, Strings{"alert: Unable to locate file | The file " +
                                     sandbox.path("None.xml") + " cannot be found."});
}

TEST_F(DocumentConversionTest, aDocumentWithoutAFileShowsTheAlertToo) {
    document->showConvertDialog();
    waitForThreads();
    EXPECT_EQ(window->calls, Strings{"alert: Unable to locate file | The file  cannot be found."});
}

TEST_F(DocumentConversionTest, theSheetIsShownAtOnceAndFilledByAThreadOfItsOwn) {
    document->setFilePath(sandbox.write("Cut.xml", kVersion5));
    document->showConvertDialog();
    EXPECT_EQ(window->calls, Strings{"begin convert"});
    waitForThreads();
    EXPECT_EQ(window->calls,
              (Strings{"begin convert", "start spinner",
                       "current: Current XML version: 5 (Final Cut Pro 7+)",
                       "offer: Can be downgraded without changes to version: 2 (Final Cut Pro "
                       "5+)",
                       "stop spinner"}));
    EXPECT_EQ(menuKeys(), (Strings{"5", "4", "4", "3", "3", "2", "2", "1", "1"}));
    EXPECT_EQ(window->offers.back().versions[0].title, "5 (Final Cut Pro 7+)");
    EXPECT_EQ(window->offers.back().version, "5");
    EXPECT_EQ(window->offers.back().release, "7");
    EXPECT_EQ(document->minDowngradeVersion(), 2);
}

TEST_F(DocumentConversionTest, aFileThatTheAnalysisRejectsLeavesTheSheetOpenAndEmpty) {
    document->setFilePath(sandbox.write("Cut.xml", "<xmeml/>"));
    document->showConvertDialog();
    waitForThreads();
    EXPECT_EQ(window->calls, (Strings{"begin convert", "start spinner", "stop spinner"}));
    EXPECT_EQ(alerts->shown.size(), 1U);
    EXPECT_EQ(document->minDowngradeVersion(), 0);
}

TEST_F(DocumentConversionTest, closingTheDialogEndsItsSheet) {
    document->closeConvertDialog();
    EXPECT_EQ(window->calls, Strings{"end convert"});
}

TEST_F(DocumentConversionTest, theInterfaceIsEnabledAndDisabled) {
    document->enableConvertInterface();
    document->disableConvertInterface();
    EXPECT_EQ(window->calls, (Strings{"interface on", "interface off"}));
}

TEST_F(DocumentConversionTest, convertingWithoutAFileDoesNothingButSpin) {
    document->convertVersion();
    document->setFilePath("");
    document->convertVersion();
    EXPECT_EQ(window->calls,
              (Strings{"start spinner", "stop spinner", "start spinner", "stop spinner"}));
}

TEST_F(DocumentConversionTest, convertingAFileThatIsGoneShowsTheDocumentsAlert) {
    document->setFilePath(sandbox.path("None.xml"));
    document->convertVersion();
    EXPECT_EQ(window->calls, (Strings{"start spinner",
                                      "alert: Unable to locate file | The file " +
                                          sandbox.path("None.xml") + " cannot be found.",
                                      "stop spinner"}));
}

TEST_F(DocumentConversionTest, convertingWithoutAChosenVersionAsksForAReport) {
    const std::string path = sandbox.write("Cut.xml", kVersion5);
    document->setFilePath(path);
    document->convertVersion();
    EXPECT_EQ(alerts->texts(),
              Strings{"Version not set | Unable to convert XML file. Please report "
                      "this issue to Quillmark."});
    EXPECT_EQ(alerts->shown[0].parentWindow, nullptr);
    EXPECT_EQ(log.entries(), Strings{"Version not set. Unable to convert XML file " + path +
                                     ". Please report this bug to Quillmark."});
    EXPECT_EQ(window->calls, (Strings{"start spinner", "stop spinner"}));
    EXPECT_EQ(test::readBytes(path), kVersion5);
}

TEST_F(DocumentConversionTest, convertingAFileThatDoesNotLoadAsksToRepairItFirst) {
    const std::string text = "<xmeml version=\"5\"><a></xmeml>";
    document->setFilePath(sandbox.write("Cut.xml", text));
    window->selectedKey = "4";
    ErrorSlot error;
    ASSERT_EQ(XMLDocument::load(sandbox.path("Cut.xml"), XMLMode::tolerant, error), nullptr);
    document->convertVersion();
    EXPECT_EQ(alerts->texts(),
              Strings{"Error loading XML file | " + error->localizedDescription() +
                      "\n\nPlease try repairing it first before attempting a conversion."});
    EXPECT_EQ(alerts->shown[0].parentWindow, nullptr);
    EXPECT_EQ(log.entries(),
              Strings{"Error loading XML file - " + error->localizedDescription() +
                      ". Please try repairing it first before attempting a conversion."});
    EXPECT_EQ(test::readBytes(sandbox.path("Cut.xml")), text);
    EXPECT_EQ(window->calls, (Strings{"start spinner", "stop spinner"}));
}

TEST_F(DocumentConversionTest, convertingRewritesTheFileAndFillsTheDialogAgain) {
    const std::string path = sandbox.write("Cut.xml", kVersion5);
    document->setFilePath(path);
    window->selectedKey = "4";
    document->setMinDowngradeVersion(2);
    document->convertVersion();
    waitForThreads();
    EXPECT_EQ(window->calls,
              (Strings{"start spinner", "converted: 4", "start spinner",
                       "current: Current XML version: 4 (Final Cut Pro 6+)",
                       "offer: Can be downgraded without changes to version: 2 (Final Cut Pro "
                       "5+)",
                       "stop spinner", "stop spinner"}));
    EXPECT_TRUE(alerts->shown.empty());
    EXPECT_NE(test::readBytes(path).find("<xmeml version=\"4\">"), std::string::npos);
    EXPECT_NE(test::readBytes(path).find("<multiclip>a</multiclip>"), std::string::npos);
}

TEST_F(DocumentConversionTest, aThreadConvertsTheFileThatTheDocumentHadWhenItWasStarted) {
    const std::string path = sandbox.write("Cut.xml", kVersion5);
    document->setFilePath(path);
    window->selectedKey = "4";
    document->convertVersionOnThread();
    document->setFilePath(std::nullopt);
    EXPECT_EQ(window->calls, Strings{}) << "it waited for the conversion";
    waitForThreads();
    EXPECT_NE(test::readBytes(path).find("<xmeml version=\"4\">"), std::string::npos);
}

TEST_F(DocumentConversionTest, aDowngradeThatLosesSomethingIsAskedForAndStrips) {
    const std::string path = sandbox.write("Cut.xml", kVersion5);
    document->setFilePath(path);
    window->selectedKey = "1";
    document->setMinDowngradeVersion(2);
    alerts->answer = 0;
    document->convertVersion();
    EXPECT_EQ(test::readBytes(path), kVersion5);
    EXPECT_EQ(alerts->shown.at(0).contents.messageText,
              "You cannot downgrade without losing information");
    alerts->answer = 1;
    document->convertVersion();
    waitForThreads();
    EXPECT_EQ(test::readBytes(path).find("multiclip"), std::string::npos);
    EXPECT_NE(test::readBytes(path).find("<b/>"), std::string::npos);
    EXPECT_EQ(document->minDowngradeVersion(), 1);
}

TEST_F(DocumentConversionTest, aFCPXMLDocumentIsRefused) {
    const std::string path = sandbox.write("Cut.xml", kVersion5);
    document->setFilePath(path);
    document->setXmlType(1);
    window->selectedKey = "4";
    ::testing::internal::CaptureStderr();
    document->convertVersion();
    waitForThreads();
    EXPECT_NE(::testing::internal::GetCapturedStderr().find(
                  "Cannot convert XMEML version. File is not a compatible XMEML document."),
              std::string::npos);
    EXPECT_EQ(test::readBytes(path), kVersion5);
}

TEST_F(DocumentConversionTest, theAlertOfARefusedFileIsASheetOnTheWindow) {
    document->setFilePath(sandbox.write("Cut.xml", "<other/>"));
    window->selectedKey = "4";
    document->convertVersion();
    waitForThreads();
    // The first is the conversion's, the second the analysis's.
    ASSERT_EQ(alerts->shown.size(), 2U);
    EXPECT_EQ(alerts->shown[0].parentWindow, window);
    EXPECT_EQ(alerts->shown[1].parentWindow, nullptr);
}

TEST_F(DocumentConversionTest, anExceptionIsLoggedAndTheSpinnerStops) {
    document->setFilePath(sandbox.write("Cut.xml", kVersion5));
    alerts->onShow = [](const AlertContents&) { throw platform::Exception("Test", "raised"); };
    document->convertVersion();
    EXPECT_EQ(log.entries().back(), "Exception in -[Document convertVersion:]. Test - raised.");
    EXPECT_EQ(window->calls, (Strings{"start spinner", "stop spinner"}));
}

TEST_F(DocumentConversionTest, aHeadlessDocumentConvertsWithoutAskingOrStripping) {
    const std::string path = sandbox.write("Cut.xml", kVersion5);
    document->setHasGUI(false);
    ErrorSlot error;
    document->convertXMEMLVersion("1", XMLDocument::load(path, XMLMode::tolerant, error), path);
    EXPECT_NE(test::readBytes(path).find("<xmeml version=\"1\">"), std::string::npos);
    EXPECT_NE(test::readBytes(path).find("<multiclip/>"), std::string::npos);
    EXPECT_TRUE(alerts->shown.empty());
    EXPECT_EQ(window->calls, Strings{});
    EXPECT_EQ(test::fileState(path).attributes[test::kFinderInfo], test::xmemlFinderInfo());
}

TEST_F(DocumentConversionTest, strippingTestingAndAnalysingAreOperationsOfTheDocument) {
    const auto stripped = document->stripTagsFromXMLDoc(test::parsed(kVersion5), "1");
    ASSERT_NE(stripped, nullptr);
    EXPECT_EQ(stripped->xmlString().find("multiclip"), std::string::npos);
    EXPECT_TRUE(document->xmlStringRequiresVersion("<multiclip>", "2"));
    EXPECT_FALSE(document->xmlStringRequiresVersion("<multiclip>", "3"));
    document->populateConversionDataForFile(std::nullopt);
    waitForThreads();
    EXPECT_EQ(window->calls, Strings{"stop spinner"});
}

}  // namespace
}  // namespace vornic
