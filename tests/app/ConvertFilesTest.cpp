// What the converter makes of files of every kind, with their modes and attributes.

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/app/ProgramTest.h"
#include "tests/support/machine/FileState.h"

namespace vornic::test {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

constexpr const char* kNotRecognized =
    "Unable to locate XML Interchange version information. The file has not been recognized as a "
    "Final Cut Pro XML file. Please try repairing it before attempting conversion.";

std::string replaced(std::string text, const std::string& what, const std::string& with) {
    return text.replace(text.find(what), what.size(), with);
}

}  // namespace

class ConvertFilesTest : public ProgramTest {
  protected:
    ProgramResult toVersion3(const std::string& path) const {
        return files.convert({"-convertxmeml", "3", path});
    }

    /// Converts a file with these bytes to version 3. @return what it then holds.
    std::string converted(const std::string& bytes) const {
        const std::string path = files.write("cut.xml", bytes);
        const ProgramResult result = toVersion3(path);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, "");
        EXPECT_EQ(result.status, 0);
        return readBytes(path);
    }

    void expectUntouched(const std::string& bytes, const std::string& message) const {
        const FileState before = fileState(files.write("cut.xml", bytes));
        const ProgramResult result = toVersion3("cut.xml");
        EXPECT_EQ(result.output, message);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(fileState(files.path("cut.xml")), before);
        EXPECT_THAT(namesIn(files.folder()), ElementsAre("cut.xml"));
    }

    void expectNotLoaded(const std::string& path, const std::string& reason) const {
        const ProgramResult result = toVersion3(path);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, ::testing::EndsWith("] Unable to load XML file " + path + ": " +
                                                       reason + "\n"));
        EXPECT_EQ(result.status, 0);
    }
};

TEST_F(ConvertFilesTest, logsNothingWhenAllGoesWell) {
    EXPECT_EQ(converted(soundXMEML()), soundXMEML("3"));
    EXPECT_THAT(files.log(), IsEmpty());
}

TEST_F(ConvertFilesTest, keepsModeAndAttributesAndSetsTypeAndCreator) {
    const std::string path = files.writeSound("cut.xml");
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    std::string information(32, '\x5A');
    if (!setAttribute(path, "user.note", "second take") ||
        !setAttribute(path, kFinderInfo, information)) {
        GTEST_SKIP() << "the volume has no extended attributes";
    }
    FileState after = fileState(path);
    after.bytes = soundXMEML("3");
    after.attributes[kFinderInfo] = information.replace(0, 8, "XML KeyG");
    toVersion3(path);
    EXPECT_EQ(fileState(path), after);
}

TEST_F(ConvertFilesTest, givesAFileWithoutThemTypeAndCreator) {
    const std::string path = files.writeSound("cut.xml");
    if (!setAttribute(path, "user.note", "")) {
        GTEST_SKIP() << "the volume has no extended attributes";
    }
    toVersion3(path);
    EXPECT_EQ(fileState(path).attributes[kFinderInfo], xmemlFinderInfo());
}

TEST_F(ConvertFilesTest, rewritesAFileWithoutWritePermissionAndKeepsItsMode) {
    const std::string path = files.writeSound("cut.xml");
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    FileState after = fileState(path);
    after.bytes = soundXMEML("3");
    after.attributes[kFinderInfo] = xmemlFinderInfo();
    EXPECT_EQ(toVersion3(path).output, "");
    EXPECT_EQ(fileState(path), after);
}

TEST_F(ConvertFilesTest, rewritesALinksTargetAndKeepsTheLink) {
    fs::create_directory(files.path("reels"));
    const std::string target = files.writeSound("reels/target.xml");
    const std::string path = files.path("cut.xml");
    fs::create_symlink("reels/target.xml", path);
    EXPECT_EQ(toVersion3(path).output, "");
    EXPECT_EQ(fs::read_symlink(path), "reels/target.xml");
    EXPECT_EQ(readBytes(target), soundXMEML("3"));
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("cut.xml", "reels"));
    EXPECT_THAT(namesIn(files.path("reels")), ElementsAre("target.xml"));
}

TEST_F(ConvertFilesTest, rewritesTheLastTargetOfAChainOfLinks) {
    const std::string target = files.writeSound("target.xml");
    fs::create_symlink("target.xml", files.path("second.xml"));
    fs::create_symlink(files.path("second.xml"), files.path("first.xml"));
    EXPECT_EQ(toVersion3("first.xml").output, "");
    EXPECT_EQ(fs::read_symlink(files.path("first.xml")), files.path("second.xml"));
    EXPECT_EQ(fs::read_symlink(files.path("second.xml")), "target.xml");
    EXPECT_EQ(readBytes(target), soundXMEML("3"));
}

TEST_F(ConvertFilesTest, makesNoBackup) {
    converted(soundXMEML());
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("cut.xml"));
    EXPECT_FALSE(exists(files.trash()));
}

TEST_F(ConvertFilesTest, reportsThatItCannotSaveInAFolderThatItMayNotWrite) {
    const std::string path = files.writeSound("cut.xml");
    fs::permissions(files.folder(), fs::perms::owner_read | fs::perms::owner_exec);
    const FileState before = fileState(path);
    const ProgramResult result = toVersion3(path);
    const std::string reason = " - The file " + path + " cannot be written: permission denied.\n";
    EXPECT_EQ(result.output, "Unable to save file " + path + reason +
                                 "Unable to load attributes for file " + path + reason);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(fileState(path), before);
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("cut.xml"));
}

TEST_F(ConvertFilesTest, doublesPercentSignsInPrintedMessagesAndNotInTheLog) {
    const std::string path = files.writeSound("100%@ cut%.xml");
    fs::permissions(files.folder(), fs::perms::owner_read | fs::perms::owner_exec);
    const std::string printed = files.path("100 cut%%.xml");
    const ProgramResult result = toVersion3(path);
    EXPECT_THAT(result.output,
                ::testing::StartsWith("Unable to save file " + printed + " - The file " + printed +
                                      " cannot be written: permission denied.\n"));
    EXPECT_EQ(files.log().front(), "Unable to save file " + path + " - The file " + path +
                                       " cannot be written: permission denied.");
}

TEST_F(ConvertFilesTest, refusesAFolder) {
    const std::string path = files.path("folder.xml");
    fs::create_directory(path);
    expectNotLoaded(path, "The file " + path + " cannot be opened: it is a folder.");
}

TEST_F(ConvertFilesTest, refusesANamedPipeWithoutWaitingForIt) {
    const std::string path = files.path("pipe.xml");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    expectNotLoaded(path, "The file " + path + " cannot be opened: it is no ordinary file.");
}

TEST_F(ConvertFilesTest, refusesAFileThatItMayNotRead) {
    const std::string path = files.writeSound("cut.xml");
    fs::permissions(path, fs::perms::none);
    expectNotLoaded(path, "The file " + path + " cannot be opened: permission denied.");
}

TEST_F(ConvertFilesTest, refusesAnEmptyFile) {
    const std::string path = files.write("cut.xml", "");
    expectNotLoaded(path, "Line 1, column 1: the file ends without a root element.");
    EXPECT_EQ(readBytes(path), "");
}

TEST_F(ConvertFilesTest, refusesAFileThatIsCutOff) {
    const std::string text = soundXMEML().substr(0, 100);
    const std::string path = files.write("cut.xml", text);
    expectNotLoaded(path,
                    "Line 4, column 18: the attribute value that begins here is never closed.");
    EXPECT_EQ(readBytes(path), text);
}

TEST_F(ConvertFilesTest, leavesAnFCPXMLFileAlone) {
    expectUntouched("<!DOCTYPE fcpxml>\n<fcpxml version=\"1.10\"/>\n",
                    std::string(kNotRecognized) + "\n");
    EXPECT_THAT(files.log(), ElementsAre(kNotRecognized));
}

TEST_F(ConvertFilesTest, convertsByTheRootElementWhateverTheExtension) {
    const std::string path = files.writeSound("cut.fcpxml");
    EXPECT_EQ(toVersion3(path).output, "");
    EXPECT_EQ(readBytes(path), soundXMEML("3"));
}

TEST_F(ConvertFilesTest, leavesAFileWithoutAVersionAlone) {
    expectUntouched(replaced(soundXMEML(), " version=\"5\"", ""),
                    std::string(kNotRecognized) + "\n");
}

TEST_F(ConvertFilesTest, leavesAFileWithAnotherRootElementAlone) {
    expectUntouched("<project version=\"5\"><xmeml version=\"5\"/></project>",
                    std::string(kNotRecognized) + "\n");
}

TEST_F(ConvertFilesTest, givesAVersionThatIsNoNumberTheTarget) {
    EXPECT_EQ(converted(soundXMEML("five")), soundXMEML("3"));
}

TEST_F(ConvertFilesTest, neverStripsElementsThatTheTargetDoesNotKnow) {
    const std::string added =
        "        <keycode>\n            <prefix>KU</prefix>\n        </keycode>\n"
        "        <uuid>A-1</uuid>\n        <itemhistory/>\n        <anchoroffset/>\n";
    const auto withElements = [&](const char* version) {
        std::string text = soundXMEML(version);
        return text.insert(text.find("    </sequence>"), added);
    };
    const std::string path = files.write("cut.xml", withElements("5"));
    const ProgramResult result = files.convert({"-convertxmeml", "1", path});
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(readBytes(path), withElements("1"));
    EXPECT_THAT(files.log(), IsEmpty());
}

TEST_F(ConvertFilesTest, changesNothingButTheVersionOnceAFileIsFormatted) {
    const std::string text =
        "<?xml version='1.0' standalone='yes'?><!DOCTYPE xmeml SYSTEM \"xmeml.dtd\"><!-- top -->"
        "<xmeml other='1' version='5' more=\"'\"><?edit keep?><sequence><name>a &lt; b &amp; c "
        "&#233;</name><note></note><note/><text>one <b>two</b> three</text><script><![CDATA[a < "
        "b]]>"
        "</script><blank>  </blank></sequence></xmeml><!-- end -->";
    const std::string three = converted(text);
    EXPECT_THAT(three, HasSubstr("version=\"3\""));
    for (const char* kept : {"standalone=\"yes\"", "<!DOCTYPE xmeml SYSTEM \"xmeml.dtd\">",
                             "<!-- top -->", "<xmeml other=\"1\" version=\"3\" more=\"'\">",
                             "<?edit keep?>", "<name>a &lt; b &amp; c \u00e9</name>",
                             "<note></note>", "<note/>", "<text>one <b>two</b> three</text>",
                             "<![CDATA[a < b]]>", "<blank>  </blank>", "<!-- end -->"}) {
        EXPECT_THAT(three, HasSubstr(kept));
    }
    EXPECT_EQ(converted(three), three);
    const std::string path = files.path("cut.xml");
    EXPECT_EQ(files.convert({"-convertxmeml", "4", path}).status, 0);
    EXPECT_EQ(readBytes(path), replaced(three, "version=\"3\"", "version=\"4\""));
}

TEST_F(ConvertFilesTest, mendsWhatTheParserMends) {
    const std::string path = files.path("cut.xml");
    EXPECT_EQ(converted(replaced(soundXMEML(), "Harbour", "Sand & Sea")),
              replaced(soundXMEML("3"), "Harbour", "Sand &amp; Sea"));
    EXPECT_THAT(files.log(), ElementsAre(path + ": line 5, column 20: an ampersand that begins no "
                                                "entity was read as text"));
}

TEST_F(ConvertFilesTest, dropsTheCharactersThatXMLForbids) {
    EXPECT_EQ(converted(damagedXMEML()), soundXMEML("3"));
}

TEST_F(ConvertFilesTest, keepsCharactersBeyondTheBasicPlane) {
    const std::string ship = "Harbour \U0001F6A2";
    EXPECT_EQ(converted(replaced(soundXMEML(), "Harbour", ship)),
              replaced(soundXMEML("3"), "Harbour", ship));
}

TEST_F(ConvertFilesTest, dropsAByteOrderMark) {
    EXPECT_EQ(converted("\xEF\xBB\xBF" + soundXMEML()), soundXMEML("3"));
}

TEST_F(ConvertFilesTest, writesALatin1FileAsUTF8) {
    std::string text = replaced(soundXMEML(), "UTF-8", "ISO-8859-1");
    EXPECT_EQ(converted(replaced(text, "Harbour", "Caf\xE9")),
              replaced(soundXMEML("3"), "Harbour", "Café"));
}

TEST_F(ConvertFilesTest, writesAUTF16FileAsUTF8) {
    std::string wide = "\xFF\xFE";
    for (const char c : replaced(soundXMEML(), "UTF-8", "UTF-16")) {
        wide += c;
        wide += '\0';
    }
    EXPECT_EQ(converted(wide), soundXMEML("3"));
}

}  // namespace vornic::test
