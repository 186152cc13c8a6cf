#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>

#include "base/Exception.h"
#include "platform/items/FileAttributes.h"
#include "tests/repair/document/DocumentTest.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using test::Strings;

constexpr const char* kNotRecognized =
    "The file has not been recognized as a Final Cut Pro XML file. Please try repairing it before "
    "attempting conversion.";
constexpr const char* kQuestion = "You cannot downgrade without losing information";

std::string xmeml(const std::string& version, const std::string& content) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"" +
           version + "\">\n" + content + "</xmeml>\n";
}

class DocumentVersionsTest : public test::DocumentTest {
  protected:
    void SetUp() override {
        DocumentTest::SetUp();
        file = sandbox.write("Cut.xml", "the old contents");
    }

    void convert(const std::string& text, const std::string& version) {
        document->convertXMEMLVersion(version, test::parsed(text), file);
    }
    [[nodiscard]] std::string contents() const { return test::readBytes(file); }

    [[nodiscard]] platform::FileAttributes codes() const {
        ErrorSlot error;
        return platform::readFileAttributes(file, error).value_or(platform::FileAttributes());
    }
    /// False on a volume that has no place for the codes.
    [[nodiscard]] bool volumeKeepsCodes() const {
        const std::string probe = sandbox.write("probe", "");
        ErrorSlot error;
        std::ignore = platform::writeFileAttributes(probe, {1, 1}, error);
        return platform::readFileAttributes(probe, error) == platform::FileAttributes{1, 1};
    }
    void expectConvertedCodes() const {
        EXPECT_EQ(codes(), (volumeKeepsCodes() ? platform::FileAttributes{0x584D4C20, 0x4B657947}
                                               : platform::FileAttributes{}));
    }

    std::string file;
};

TEST_F(DocumentVersionsTest, onlyRewritesTheVersionInAnUpgrade) {
    convert(
        "<!DOCTYPE xmeml><xmeml version=\"3\"><uuid>1</uuid><itemhistory>2</itemhistory></xmeml>",
        "5");
    EXPECT_EQ(contents(), xmeml("5", "    <uuid>1</uuid>\n    <itemhistory>2</itemhistory>\n"));
    EXPECT_TRUE(alerts->shown.empty());
    EXPECT_EQ(log.entries(), Strings{});
}

TEST_F(DocumentVersionsTest, givesTheFileItsTypeAndCreator) {
    convert(xmeml("3", ""), "5");
    expectConvertedCodes();
}

TEST_F(DocumentVersionsTest, stripsNothingDownToTheMinimum) {
    document->setMinDowngradeVersion(4);
    convert(xmeml("5", "    <color>1</color>\n"), "4");
    EXPECT_EQ(contents(), xmeml("4", "    <color>1</color>\n"));
    document->setMinDowngradeVersion(2);
    convert(xmeml("5", "    <color>1</color>\n"), "4");
    EXPECT_EQ(contents(), xmeml("4", "    <color>1</color>\n"));
    EXPECT_TRUE(alerts->shown.empty());
}

TEST_F(DocumentVersionsTest, asksBeforeADowngradeThatLosesInformation) {
    document->setMinDowngradeVersion(4);
    convert(xmeml("5", ""), "2");
    ASSERT_EQ(alerts->shown.size(), 1U);
    const AlertContents& question = alerts->shown[0].contents;
    EXPECT_EQ(question.messageText, kQuestion);
    EXPECT_EQ(question.informativeText,
              "Unsupported tags will be stripped from the file. This cannot be undone so please "
              "ensure you have a backup of the file if you will require this information later on. "
              "\n\nDo you wish to continue?");
    EXPECT_EQ(question.defaultButtonTitle, "Downgrade");
    EXPECT_EQ(question.alternateButtonTitle, "Cancel");
    EXPECT_EQ(question.otherButtonTitle, std::nullopt);
    EXPECT_EQ(alerts->shown[0].parentWindow, nullptr);
    EXPECT_EQ(log.entries().at(0),
              "Downgrading from 5 to 2 will lose information. Asking the user what to do...");
}

TEST_F(DocumentVersionsTest, leavesTheFileUntouchedAfterACancel) {
    document->setMinDowngradeVersion(4);
    alerts->answer = 0;
    const fs::file_time_type time = fs::last_write_time(file);
    convert(xmeml("5", "<color>1</color>"), "2");
    EXPECT_EQ(contents(), "the old contents");
    EXPECT_EQ(fs::last_write_time(file), time);
    EXPECT_EQ(codes(), platform::FileAttributes{});
    EXPECT_EQ(log.entries(), Strings{"Downgrading from 5 to 2 will lose information. Asking the "
                                     "user what to do..."});
}

TEST_F(DocumentVersionsTest, takesAQuestionThatNobodyCouldAnswerForNoAgreement) {
    document->setMinDowngradeVersion(4);
    QMAlert::setPanelFactory(nullptr);
    convert(xmeml("5", "<color>1</color>"), "2");
    EXPECT_EQ(contents(), "the old contents");
}

TEST_F(DocumentVersionsTest, removesTheElementsOfEveryHigherVersionAfterAnAgreement) {
    document->setMinDowngradeVersion(5);
    convert(xmeml("5",
                  "<color>1</color><itemhistory>2</itemhistory><uuid>3</uuid>"
                  "<multiclip>4</multiclip><name>5</name>"),
            "2");
    EXPECT_EQ(contents(), xmeml("2", "    <multiclip>4</multiclip>\n    <name>5</name>\n"));
    EXPECT_EQ(log.entries().back(), "Stripping unsupported tags from XML file...");
    expectConvertedCodes();
}

TEST_F(DocumentVersionsTest, doesNotStripInAnUpgradeBelowTheMinimum) {
    document->setMinDowngradeVersion(5);
    convert(xmeml("2", "    <color>1</color>\n"), "4");
    EXPECT_EQ(contents(), xmeml("4", "    <color>1</color>\n"));
    EXPECT_TRUE(alerts->shown.empty());
}

TEST_F(DocumentVersionsTest, doesNotStripWhenTheVersionStaysTheSame) {
    document->setMinDowngradeVersion(5);
    convert(xmeml("2", "    <color>1</color>\n"), "2");
    EXPECT_EQ(contents(), xmeml("2", "    <color>1</color>\n"));
    EXPECT_TRUE(alerts->shown.empty());
}

TEST_F(DocumentVersionsTest, takesANegativeTargetForAVeryHighOneAgainstTheMinimum) {
    document->setMinDowngradeVersion(5);
    convert(xmeml("2", "    <color>1</color>\n"), "-1");
    EXPECT_EQ(contents(), xmeml("-1", "    <color>1</color>\n"));
    EXPECT_TRUE(alerts->shown.empty());
}

TEST_F(DocumentVersionsTest, takesANegativeMinimumForAVeryHighOne) {
    document->setMinDowngradeVersion(-1);
    convert(xmeml("5", "<color>1</color>"), "4");
    EXPECT_EQ(alerts->shown.size(), 1U);
}

TEST_F(DocumentVersionsTest, readsVersionsUpToTheFirstOtherCharacter) {
    document->setMinDowngradeVersion(5);
    convert(xmeml(" 5.1", "<color>1</color>"), "4abc");
    EXPECT_EQ(log.entries().at(0),
              "Downgrading from 5 to 4 will lose information. Asking the user what to do...");
    // The text is set as given; as it is no key of the catalogue nothing is stripped.
    EXPECT_EQ(contents(), xmeml("4abc", "    <color>1</color>\n"));
}

TEST_F(DocumentVersionsTest, neverAsksWithoutAWindow) {
    document->setHasGUI(false);
    document->setMinDowngradeVersion(4);
    log.start(test::LogCapture::Printing::on);
    testing::internal::CaptureStdout();
    convert(xmeml("5", "<color>1</color><uuid>2</uuid>"), "3");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Downgrading XML file...\n");
    EXPECT_EQ(log.entries(),
              (Strings{"Downgrading XML file...", "Stripping unsupported tags from XML file..."}));
    EXPECT_TRUE(alerts->shown.empty());
    EXPECT_EQ(contents(), xmeml("3", "    <uuid>2</uuid>\n"));
}

TEST_F(DocumentVersionsTest, neverStripsBeforeAnAnalysisHasRun) {
    document->setHasGUI(false);
    document->setMinDowngradeVersion(0);
    convert(xmeml("5", "    <color>1</color>\n"), "1");
    EXPECT_EQ(contents(), xmeml("1", "    <color>1</color>\n"));
    EXPECT_EQ(log.entries(), Strings{});
}

TEST_F(DocumentVersionsTest, refusesAFinalCutProXDocument) {
    document->setXmlType(1);
    testing::internal::CaptureStderr();
    convert(xmeml("3", ""), "5");
    const std::string console = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(console.ends_with(
        " Cannot convert XMEML version. File is not a compatible XMEML document.\n"))
        << console;
    EXPECT_EQ(contents(), "the old contents");
    EXPECT_EQ(codes(), platform::FileAttributes{});
    EXPECT_EQ(log.entries(), Strings{});
}

TEST_F(DocumentVersionsTest, refusesADocumentWithoutVersion) {
    convert("<xmeml/>", "5");
    EXPECT_EQ(contents(), "the old contents");
    EXPECT_EQ(alerts->texts(),
              Strings{std::string("Unable to locate XML Interchange version information | ") +
                      kNotRecognized});
    EXPECT_EQ(alerts->shown.at(0).parentWindow, window);
    EXPECT_EQ(log.entries(),
              Strings{std::string("Unable to locate XML Interchange version information. ") +
                      kNotRecognized});
}

TEST_F(DocumentVersionsTest, refusesAnotherRootWithoutAnAlertWhenThereIsNoWindow) {
    document->setHasGUI(false);
    log.start(test::LogCapture::Printing::on);
    testing::internal::CaptureStdout();
    convert("<fcpxml version=\"1.8\"/>", "5");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              std::string("Unable to locate XML Interchange version information. ") +
                  kNotRecognized + "\n");
    EXPECT_EQ(contents(), "the old contents");
    EXPECT_TRUE(alerts->shown.empty());
}

TEST_F(DocumentVersionsTest, refusesWithoutADocument) {
    document->convertXMEMLVersion("5", nullptr, file);
    EXPECT_EQ(contents(), "the old contents");
    EXPECT_EQ(alerts->shown.size(), 1U);
}

TEST_F(DocumentVersionsTest, keepsModeAndLinkOfTheFile) {
    const std::string link = sandbox.path("Link.xml");
    fs::create_symlink("Cut.xml", link);
    ASSERT_EQ(chmod(file.c_str(), 0640), 0);
    document->convertXMEMLVersion("5", test::parsed(xmeml("3", "")), link);
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(contents(), xmeml("5", ""));
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
}

TEST_F(DocumentVersionsTest, reportsAFailedSaveTwice) {
    fs::permissions(sandbox.folder(), fs::perms::owner_write, fs::perm_options::remove);
    convert(xmeml("3", ""), "5");
    fs::permissions(sandbox.folder(), fs::perms::owner_write, fs::perm_options::add);
    EXPECT_EQ(contents(), "the old contents");
    EXPECT_EQ(codes(), platform::FileAttributes{});
    ASSERT_EQ(alerts->shown.size(), 1U);
    EXPECT_EQ(alerts->shown[0].contents.messageText, "Unable to save file");
    EXPECT_EQ(alerts->shown[0].parentWindow, nullptr);
    const std::string description = alerts->shown[0].contents.informativeText;
    EXPECT_NE(description, "");
    EXPECT_EQ(log.entries(),
              (Strings{"Unable to save file " + file + " - " + description,
                       "Unable to load attributes for file " + file + " - " + description}));
}

TEST_F(DocumentVersionsTest, printsAFailedSaveWithoutAWindow) {
    document->setHasGUI(false);
    file = sandbox.path("none/Cut.xml");
    log.start(test::LogCapture::Printing::on);
    testing::internal::CaptureStdout();
    convert(xmeml("3", ""), "5");
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(printed.starts_with("Unable to save file " + file + " - ")) << printed;
    EXPECT_NE(printed.find("\nUnable to load attributes for file " + file + " - "),
              std::string::npos)
        << printed;
    EXPECT_TRUE(alerts->shown.empty());
}

TEST_F(DocumentVersionsTest, writesNothingAfterAnExceptionInTheStripAndGoesOnWithTheCodes) {
    document->setMinDowngradeVersion(5);
    catalogue.remove();
    alerts->onShow = [](const AlertContents& alert) {
        if (alert.messageText != kQuestion) {
            throw platform::Exception("Test", "raised");
        }
    };
    convert(xmeml("5", "<color>1</color>"), "2");
    EXPECT_EQ(contents(), "the old contents");
    expectConvertedCodes();
    EXPECT_EQ(
        log.entries(),
        (Strings{"Downgrading from 5 to 2 will lose information. Asking the user what to "
                 "do...",
                 "Stripping unsupported tags from XML file...",
                 "Unable to load XML version information. Please reinstall Brindle Tools.",
                 "Exception in -[Document stripTagsFromXMLDoc:forVersion:]. Test - raised."}));
}

TEST_F(DocumentVersionsTest, reportsAFileThatIsGoneAfterAnExceptionInTheStripOnce) {
    document->setMinDowngradeVersion(5);
    catalogue.remove();
    fs::remove(file);
    alerts->onShow = [](const AlertContents& alert) {
        if (alert.messageText != kQuestion) {
            throw platform::Exception("Test", "raised");
        }
    };
    convert(xmeml("5", ""), "2");
    EXPECT_FALSE(test::exists(file));
    EXPECT_TRUE(
        log.entries().back().starts_with("Unable to load attributes for file " + file + " - "))
        << log.entries().back();
    for (const std::string& entry : log.entries()) {
        EXPECT_FALSE(entry.starts_with("Unable to save file")) << entry;
    }
}

TEST_F(DocumentVersionsTest, changesNothingButTheVersionWhenTheCatalogueIsMissing) {
    document->setMinDowngradeVersion(5);
    catalogue.remove();
    convert(xmeml("5", "    <color>1</color>\n"), "2");
    EXPECT_EQ(contents(), xmeml("2", "    <color>1</color>\n"));
    EXPECT_EQ(alerts->texts().back(),
              "Unable to load XML version information | Please reinstall Brindle Tools.");
}

TEST_F(DocumentVersionsTest, passesAnExceptionOfAnAlertOnToTheCaller) {
    alerts->onShow = [](const AlertContents&) { throw platform::Exception("Test", "raised"); };
    EXPECT_THROW(convert("<xmeml/>", "5"), platform::Exception);
}

/// A conversion on a volume that is full when the codes are written.
class ConversionWithoutRoomForCodes : public DocumentVersionsTest {
  public:
    void TestBody() override {
        SetUp();
        ASSERT_TRUE(test::failSystemCall(SYS_fsetxattr, ENOSPC));
        ASSERT_TRUE(test::failSystemCall(SYS_setxattr, ENOSPC));
        convert(xmeml("3", ""), "5");
        EXPECT_EQ(contents(), xmeml("5", ""));
        EXPECT_TRUE(alerts->shown.empty());
        const Strings entries = log.entries();
        ASSERT_EQ(entries.size(), 1U);
        const std::string beginning = "Unable to write file attributes to file " + file + " - ";
        EXPECT_TRUE(entries[0].starts_with(beginning)) << entries[0];
        EXPECT_GT(entries[0].size(), beginning.size());
    }
};

// Suites of this name run first, while there is no other thread that a child would lack.
TEST(DocumentVersionsDeathTest, reportsCodesThatCannotBeWritten) {
    EXPECT_TRUE(test::passesInChild([] { ConversionWithoutRoomForCodes().TestBody(); }));
}

/// A conversion on a volume that fails to store an attribute of the old file.
class ConversionThatLosesAnAttribute : public DocumentVersionsTest {
  public:
    void TestBody() override {
        SetUp();
        const std::string old = xmeml("3", "");
        file = sandbox.write("Cut.xml", old);
        ASSERT_EQ(setxattr(file.c_str(), "user.note", "second take", 11, 0), 0);
        ErrorSlot error;
        std::unique_ptr<XMLDocument> loaded = XMLDocument::load(file, XMLMode::tolerant, error);
        ASSERT_NE(loaded, nullptr);
        ASSERT_TRUE(test::failSystemCall(SYS_fsetxattr, EIO));
        document->convertXMEMLVersion("5", std::move(loaded), file);
        EXPECT_EQ(contents(), old);
        ASSERT_EQ(alerts->shown.size(), 1U);
        EXPECT_EQ(alerts->shown[0].contents.messageText, "Unable to save file");
    }
};

TEST(DocumentVersionsDeathTest, keepsTheOldFileWhenAnAttributeCannotBeStored) {
    EXPECT_TRUE(test::passesInChild([] { ConversionThatLosesAnAttribute().TestBody(); }));
}

class StripTagsTest : public test::DocumentTest {
  protected:
    [[nodiscard]] std::string strip(const std::string& text, const std::string& version) const {
        const std::unique_ptr<XMLDocument> stripped =
            document->stripTagsFromXMLDoc(test::parsed(text), version);
        EXPECT_NE(stripped, nullptr);
        return stripped ? stripped->xmlString() : std::string();
    }
};

TEST_F(StripTagsTest, removesTheWholeElementAtAnyDepth) {
    EXPECT_EQ(strip(xmeml("5",
                          "<clip><a><uuid id=\"1\">x<name>y</name></uuid></a>"
                          "<name>z</name></clip>"),
                    "2"),
              xmeml("5", "    <clip>\n        <a/>\n        <name>z</name>\n    </clip>\n"));
}

TEST_F(StripTagsTest, removesEmptyElementTagsToo) {
    EXPECT_EQ(strip(xmeml("5", "<uuid/><name>z</name>"), "2"), xmeml("5", "    <name>z</name>\n"));
}

TEST_F(StripTagsTest, keepsTheTargetsOwnElements) {
    EXPECT_EQ(strip(xmeml("5", "    <uuid>1</uuid>\n"), "3"), xmeml("5", "    <uuid>1</uuid>\n"));
}

TEST_F(StripTagsTest, distinguishesCapitalsFromSmallLetters) {
    EXPECT_EQ(strip(xmeml("5", "    <UUID>1</UUID>\n"), "2"), xmeml("5", "    <UUID>1</UUID>\n"));
}

TEST_F(StripTagsTest, takesElementsInsideOneAnother) {
    EXPECT_EQ(strip(xmeml("5",
                          "<uuid><uuid><metadata><uuid>1</uuid></metadata></uuid></uuid>"
                          "<metadata><uuid>1</uuid></metadata><name>z</name>"),
                    "2"),
              xmeml("5", "    <name>z</name>\n"));
}

TEST_F(StripTagsTest, changesNothingForTheLastOrAnUnknownVersion) {
    const std::string text = xmeml("5", "    <uuid>1</uuid>\n    <color>2</color>\n");
    EXPECT_EQ(strip(text, "5"), text);
    EXPECT_EQ(strip(text, "7"), text);
    EXPECT_EQ(strip(text, ""), text);
    EXPECT_TRUE(alerts->shown.empty());
    EXPECT_EQ(log.entries(), Strings(3, "Stripping unsupported tags from XML file..."));
}

TEST_F(StripTagsTest, goesByTheOrderOfTheKeysAsTexts) {
    catalogue.write({{"1", {"4", {}}}, {"2", {"5", {{"<b"}}}}, {"10", {"9", {{"<a"}}}}});
    EXPECT_EQ(strip(xmeml("2", "<a>1</a><b>2</b><c>3</c>"), "10"),
              xmeml("2", "    <a>1</a>\n    <c>3</c>\n"));
}

/// What the log says of a name that is no query.
std::string queryErrorFor(const std::string& name) {
    const std::unique_ptr<XMLDocument> parsed = test::parsed("<a/>");
    ErrorSlot error;
    EXPECT_TRUE(XMLDocument::nodesForXPath(".//" + name, parsed->documentNode(), error).empty());
    EXPECT_TRUE(error);
    return "Error getting XML elements: " + error.value_or(Error()).localizedDescription();
}

TEST_F(StripTagsTest, startsWithTheHighestVersionAndKeepsTheOrderOfEachList) {
    // Names that are no query, each wrong in another way, show the order in the log.
    catalogue.write(
        {{"1", {"4", {}}}, {"2", {"5", {{"<a[", "<a/@b()"}}}}, {"3", {"6", {{"<a\""}}}}});
    ASSERT_NE(queryErrorFor("a["), queryErrorFor("a/@b()"));
    ASSERT_NE(queryErrorFor("a["), queryErrorFor("a\""));
    ASSERT_NE(queryErrorFor("a/@b()"), queryErrorFor("a\""));
    static_cast<void>(strip(xmeml("3", ""), "1"));
    EXPECT_EQ(log.entries(),
              (Strings{"Stripping unsupported tags from XML file...", queryErrorFor("a\""),
                       queryErrorFor("a["), queryErrorFor("a/@b()")}));
}

TEST_F(StripTagsTest, dropsEveryAngleBracketFromAName) {
    catalogue.write({{"1", {"4", {}}}, {"2", {"5", {{"<<uuid>>"}}}}});
    EXPECT_EQ(strip(xmeml("2", "<uuid>1</uuid><name>2</name>"), "1"),
              xmeml("2", "    <name>2</name>\n"));
}

TEST_F(StripTagsTest, goesOnAfterANameThatIsNoQuery) {
    catalogue.write({{"1", {"4", {}}}, {"2", {"5", {{"<", "<uuid"}}}}});
    EXPECT_EQ(strip(xmeml("2", "<uuid>1</uuid><name>2</name>"), "1"),
              xmeml("2", "    <name>2</name>\n"));
    EXPECT_TRUE(log.entries().at(1).starts_with("Error getting XML elements: "));
}

TEST_F(StripTagsTest, reportsAMissingCatalogueAndChangesNothing) {
    catalogue.remove();
    const std::string text = xmeml("5", "    <uuid>1</uuid>\n");
    EXPECT_EQ(strip(text, "1"), text);
    EXPECT_EQ(alerts->texts(),
              Strings{"Unable to load XML version information | Please reinstall Brindle Tools."});
    EXPECT_EQ(log.entries().at(1),
              "Unable to load XML version information. Please reinstall Brindle Tools.");
}

TEST_F(StripTagsTest, reportsADocumentThatIsNoVersionedXMEML) {
    for (const std::string text :
         {"<xmeml><uuid>1</uuid></xmeml>", "<fcpxml version=\"1.8\"><uuid>1</uuid></fcpxml>"}) {
        EXPECT_NE(strip(text, "1").find("<uuid>"), std::string::npos);
    }
    EXPECT_EQ(alerts->texts(),
              Strings(2, std::string("Unable to locate XML Interchange version information | ") +
                             kNotRecognized));
    EXPECT_EQ(alerts->shown.at(0).parentWindow, nullptr);
    EXPECT_EQ(log.entries().at(1),
              std::string("Unable to load XML Interchange version information. ") + kNotRecognized);
}

TEST_F(StripTagsTest, yieldsNothingAfterAnException) {
    catalogue.remove();
    alerts->onShow = [](const AlertContents&) { throw platform::Exception("Test", "raised"); };
    EXPECT_EQ(document->stripTagsFromXMLDoc(test::parsed(xmeml("5", "")), "1"), nullptr);
    EXPECT_EQ(log.entries().back(),
              "Exception in -[Document stripTagsFromXMLDoc:forVersion:]. Test - raised.");
}

TEST_F(StripTagsTest, yieldsNothingForNothing) {
    EXPECT_EQ(document->stripTagsFromXMLDoc(nullptr, "1"), nullptr);
    EXPECT_EQ(log.entries(), Strings{});
}

}  // namespace
}  // namespace vornic
