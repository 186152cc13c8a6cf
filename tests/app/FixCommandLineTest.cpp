// vornic-check --fix: what it writes, what it leaves, and what it says.

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/app/ProgramTest.h"
#include "tests/support/machine/FileState.h"

namespace vornic::test {

namespace {

using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr std::string_view kDamaged =
    "<?xml version=\"1.0\"?>\r\n<xmeml version=\"5\">\r\n"
    "\t<bin><name>Tom & Ann \xEF\xBC\x81 \xF0\x9F\x98\x80</name></bin>\r\n</xmeml>\r\n";

std::string mended() {
    std::string text(kDamaged);
    return text.replace(text.find('&'), 1, "&amp;");
}

class FixCommandLineTest : public ProgramTest {
  protected:
    ProgramResult check(std::vector<std::string> arguments) const {
        ProgramSettings settings = files.repairer(std::move(arguments));
        settings.program = material.program("vornic-check");
        return runProgram(settings);
    }
    void expectUsage(std::vector<std::string> arguments, const std::string& complaint) const {
        const ProgramResult result = check(std::move(arguments));
        EXPECT_EQ(result.status, 2);
        EXPECT_THAT(result.errors, StartsWith("vornic-check: " + complaint + "\n"));
        EXPECT_EQ(readBytes(path), kDamaged);
    }

    std::string write(const std::string& name, std::string_view bytes) const {
        return files.write(name, bytes);
    }

    std::string path = write("Cut.xml", kDamaged);
};

TEST_F(FixCommandLineTest, mendsInPlaceAndReportsWhereTheOriginalIs) {
    const ProgramResult result = check({"--fix", "Cut.xml"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, StartsWith("MENDED(xml-stray-ampersand): Cut.xml(3,17): "));
    EXPECT_THAT(result.output, HasSubstr(" in 1 file, 1 mended\n"));
    EXPECT_THAT(result.errors, ContainsRegex("^The original is .*/Cut.xml; vornic-repair --undo "
                                             "brings it back.\n$"));
    EXPECT_EQ(readBytes(path), mended());
    EXPECT_EQ(readBytes(files.trash() + "/Cut.xml"), kDamaged);
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("Cut.xml"));
}

TEST_F(FixCommandLineTest, isTakenBackByAnUndo) {
    ASSERT_EQ(check({"--fix", "Cut.xml"}).status, 0);
    const ProgramResult listed = runProgram(files.repairer({"--undo", "--list"}));
    EXPECT_THAT(listed.output, HasSubstr("  mended     " + path));
    EXPECT_EQ(runProgram(files.repairer({"--undo", "Cut.xml"})).status, 0);
    EXPECT_EQ(readBytes(path), kDamaged);
}

TEST_F(FixCommandLineTest, aDryRunShowsTheDifferenceAndWritesNothing) {
    const FileState before = fileState(path);
    const ProgramResult result = check({"--fix", "--dry-run", "Cut.xml"});
    EXPECT_EQ(result.status, 1) << "the file as it is has an error";
    EXPECT_EQ(result.output,
              "--- Cut.xml\n+++ Cut.xml\n@@ -1,4 +1,4 @@\n <?xml version=\"1.0\"?>\r\n"
              " <xmeml version=\"5\">\r\n"
              "-\t<bin><name>Tom & Ann \xEF\xBC\x81 \xF0\x9F\x98\x80</name></bin>\r\n"
              "+\t<bin><name>Tom &amp; Ann \xEF\xBC\x81 \xF0\x9F\x98\x80</name></bin>\r\n"
              " </xmeml>\r\n");
    EXPECT_EQ(fileState(path), before);
    EXPECT_FALSE(exists(files.trash()));
}

TEST_F(FixCommandLineTest, writesACopyAndLeavesTheFile) {
    ASSERT_EQ(chmod(path.c_str(), 0600), 0);
    const FileState before = fileState(path);
    const ProgramResult result = check({"--fix", "-o", "New.xml", "Cut.xml"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "The mended file is New.xml\n");
    EXPECT_EQ(fileState(path), before);
    const FileState copy = fileState(files.folder() + "/New.xml");
    EXPECT_EQ(copy.bytes, mended());
    EXPECT_EQ(copy.mode, before.mode);
    check({"--fix", "-o", "Cut.xml", "Cut.xml"});
    EXPECT_EQ(fileState(path), before) << "the result of a run is never its input";
    EXPECT_EQ(readBytes(files.folder() + "/Cut 2.xml"), mended());
}

TEST_F(FixCommandLineTest, writesCopiesOfSeveralFilesIntoAFolder) {
    write("Other.xml", kDamaged);
    std::filesystem::create_directory(files.folder() + "/out");
    EXPECT_EQ(check({"--fix", "-o", "out", "Cut.xml", "Other.xml"}).status, 0);
    EXPECT_THAT(namesIn(files.folder() + "/out"), ElementsAre("Cut.xml", "Other.xml"));
    expectUsage({"--fix", "-o", "none", "Cut.xml", "Other.xml"},
                "-o wants a folder for more than one file");
}

TEST_F(FixCommandLineTest, mendsTheFileOfABundleAndNamesItsCopyAfterIt) {
    const std::string project =
        "<fcpxml version=\"1.10\"><resources/><event name=\"a & b\"/></fcpxml>";
    std::filesystem::create_directory(files.folder() + "/Day 1.FCPXMLD");
    std::filesystem::create_directory(files.folder() + "/out");
    const std::string inside = write("Day 1.FCPXMLD/Info.fcpxml", project);
    EXPECT_EQ(check({"--fix", "-o", "out", "Day 1.FCPXMLD"}).status, 0);
    EXPECT_THAT(namesIn(files.folder() + "/out"), ElementsAre("Day 1.fcpxml"));
    EXPECT_EQ(readBytes(inside), project);
    EXPECT_EQ(check({"--fix", "Day 1.FCPXMLD"}).status, 0);
    EXPECT_THAT(readBytes(inside), HasSubstr("a &amp; b"));
    EXPECT_THAT(namesIn(files.folder() + "/Day 1.FCPXMLD"), ElementsAre("Info.fcpxml"));
}

TEST_F(FixCommandLineTest, takesNoUsageThatWouldDoNothing) {
    expectUsage({"--dry-run", "Cut.xml"}, "--dry-run, --set-version and -o go with --fix");
    expectUsage({"-o", "x", "Cut.xml"}, "--dry-run, --set-version and -o go with --fix");
    expectUsage({"--set-version", "1.10", "Cut.xml"},
                "--dry-run, --set-version and -o go with --fix");
    expectUsage({"--fix", "--set-version", "1.15", "Cut.xml"},
                "--set-version wants a version of FCPXML (1.0 to 1.14) or of XMEML (1 to 5), not "
                "1.15");
    expectUsage({"--fix", "-"}, "--fix wants files, and standard input is none");
    expectUsage({"--fix=no-such-rule", "Cut.xml"}, "there is no rule or group no-such-rule");
}

TEST_F(FixCommandLineTest, reportsWhichMendsWereMadeAndWhyOthersWereNot) {
    write("Cut.xml", "<xmeml version=\"5\"><bin><name>a & b</name></bin>");
    const ProgramResult result = check({"--fix", "--format", "json", "Cut.xml"});
    EXPECT_EQ(result.status, 1) << "the root element is still open";
    const auto report = nlohmann::json::parse(result.output);
    const auto& mends = report["files"][0]["mends"];
    std::vector<std::string> told;
    for (const auto& mend : mends) {
        told.push_back(mend["rule"].get<std::string>() +
                       (mend["made"].get<bool>() ? " made" : ": ") +
                       mend["why"].get<std::string>());
    }
    EXPECT_THAT(told, ::testing::IsSupersetOf(
                          {"xml-stray-ampersand made", "xml-unclosed-element: no mend is known"}));
    EXPECT_EQ(report["files"][0]["counts"]["error"], 1);
    EXPECT_EQ(report["files"][0]["rules"].count("xml-stray-ampersand"), 0U);
}

TEST_F(FixCommandLineTest, reportsWhatWasNotMendedInAFileThatWasNotWritten) {
    const std::string project = "<xmeml version=\"5\"><bin><name>a & b</name></bin></xmeml>";
    write("Cut.xml", project);
    std::filesystem::permissions(files.folder(), std::filesystem::perms(0555));
    const ProgramResult result = check({"--fix", "--format", "json", "Cut.xml"});
    std::filesystem::permissions(files.folder(), std::filesystem::perms(0755));
    EXPECT_EQ(result.status, 3);
    const auto report = nlohmann::json::parse(result.output);
    ASSERT_EQ(report["files"].size(), 1U);
    const auto& mends = report["files"][0]["mends"];
    ASSERT_EQ(mends.size(), 1U);
    EXPECT_EQ(mends[0]["rule"], "xml-stray-ampersand");
    EXPECT_EQ(mends[0]["made"], false);
    EXPECT_EQ(mends[0]["why"], "the file was not written");
    EXPECT_EQ(report["files"][0]["counts"]["error"], 1);
    EXPECT_EQ(readBytes(path), project);
}

TEST_F(FixCommandLineTest, writesACopyWithTheRightEnding) {
    const std::string project = "<fcpxml version=\"1.10\"><resources/></fcpxml>";
    write("Cut.xml", project);
    const ProgramResult result = check({"--fix=extension", "Cut.xml"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "The mended file is Cut.fcpxml\n");
    EXPECT_THAT(result.output, HasSubstr("MENDED(values-extension): Cut.xml"));
    EXPECT_EQ(readBytes(path), project);
    EXPECT_EQ(readBytes(files.folder() + "/Cut.fcpxml"), project);
    check({"--fix=extension", "Cut.fcpxml"});
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("Cut.fcpxml", "Cut.xml"));
}

TEST_F(FixCommandLineTest, writesUTF8InPlace) {
    write("Cut.xml",
          "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<xmeml version=\"5\">"
          "<bin><name>caf\xE9</name></bin></xmeml>");
    EXPECT_EQ(check({"--fix", "Cut.xml"}).errors, "") << "only when it is named";
    EXPECT_THAT(check({"--fix=encoding", "Cut.xml"}).output, HasSubstr("MENDED(values-encoding)"));
    EXPECT_THAT(readBytes(path), HasSubstr("encoding=\"UTF-8\"?>\n<xmeml version=\"5\"><bin><name>"
                                           "caf\xC3\xA9</name>"));
}

TEST_F(FixCommandLineTest, setsTheVersionThatIsMissing) {
    const std::string project = "<fcpxml><resources/></fcpxml>";
    write("Project.fcpxml", project);
    write("Cut.xml", "<xmeml version=\"\"><bin><name>A</name></bin></xmeml>");
    const ProgramResult left = check({"--fix", "Project.fcpxml"});
    EXPECT_EQ(left.status, 1);
    EXPECT_THAT(left.errors, "");
    const ProgramResult result =
        check({"--fix", "--set-version", "1.10", "Project.fcpxml", "Cut.xml"});
    EXPECT_EQ(result.status, 0) << "of XMEML there is a warning";
    EXPECT_THAT(result.output, HasSubstr("MENDED(versions-not-declared): Project.fcpxml(1,1): "
                                         "write version=\"1.10\"\n"));
    EXPECT_EQ(readBytes(files.folder() + "/Project.fcpxml"),
              "<fcpxml version=\"1.10\"><resources/></fcpxml>");
    EXPECT_THAT(readBytes(path), HasSubstr("version=\"\"")) << "1.10 is no version of XMEML";
    EXPECT_EQ(check({"--fix", "--set-version", "4", "Cut.xml"}).status, 0);
    EXPECT_THAT(readBytes(path), StartsWith("<xmeml version=\"4\">"));
}

TEST_F(FixCommandLineTest, leavesASoundFileAlone) {
    write("Cut.xml", mended());
    const FileState before = fileState(path);
    const ProgramResult result = check({"--fix", "Cut.xml"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, HasSubstr(", 0 mended\n"));
    EXPECT_EQ(fileState(path), before);
}

TEST_F(FixCommandLineTest, refusesAFileWhoseOriginalCannotGoToTheTrash) {
    std::filesystem::remove_all(files.trash());
    std::filesystem::create_directories(std::filesystem::path(files.trash()).parent_path());
    write("no folder", "");
    std::filesystem::copy_file(files.folder() + "/no folder", files.trash());
    const ProgramResult result = check({"--fix", "Cut.xml"});
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(readBytes(path), kDamaged);
    EXPECT_THAT(result.errors, HasSubstr("vornic-check: "));
    EXPECT_THAT(result.output, Not(HasSubstr("MENDED")));
}

TEST_F(FixCommandLineTest, putsTheMendedFileInThePlaceOfALinkAndNeverWritesWhatItNames) {
    ASSERT_EQ(symlink("Cut.xml", (files.folder() + "/Link.xml").c_str()), 0);
    const FileState before = fileState(path);
    const ProgramResult result = check({"--fix", "Link.xml"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(fileState(path), before);
    EXPECT_FALSE(std::filesystem::is_symlink(files.folder() + "/Link.xml"));
    EXPECT_EQ(readBytes(files.folder() + "/Link.xml"), mended());
    EXPECT_TRUE(std::filesystem::is_symlink(files.trash() + "/Link.xml"));
    EXPECT_EQ(runProgram(files.repairer({"--undo", "Link.xml"})).status, 0);
    EXPECT_EQ(std::filesystem::read_symlink(files.folder() + "/Link.xml"), "Cut.xml");
}

TEST_F(FixCommandLineTest, leavesAFileAloneInAFolderThatCannotBeWritten) {
    const FileState before = fileState(path);
    std::filesystem::permissions(files.folder(), std::filesystem::perms(0555));
    const ProgramResult result = check({"--fix", "Cut.xml"});
    const ProgramResult shown = check({"--fix", "--dry-run", "--quiet", "Cut.xml"});
    std::filesystem::permissions(files.folder(), std::filesystem::perms(0755));
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.errors, StartsWith("vornic-check: "));
    EXPECT_THAT(result.errors, HasSubstr("Cut.xml"));
    EXPECT_EQ(shown.status, 1) << "a dry run needs no place to write";
    EXPECT_EQ(fileState(path), before);
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("Cut.xml"));
}

TEST_F(FixCommandLineTest, mendsAllFilesAlthoughNobodyReadsTheReport) {
    write("Other.xml", kDamaged);
    ProgramSettings settings = files.repairer({"--fix", "Cut.xml", "Other.xml"});
    settings.program = material.program("vornic-check");
    settings.output = ProgramStream::brokenPipe;
    EXPECT_EQ(runProgram(settings).status, 1);
    EXPECT_EQ(readBytes(path), mended());
    EXPECT_EQ(readBytes(files.folder() + "/Other.xml"), mended());
}

TEST_F(FixCommandLineTest, keepsWhatAClassicRepairTakesOut) {
    const std::string kept =
        "<!-- <clip> & \"markup\" -->\r\n<xmeml version=\"5\"><bin><name>\xEF\xBC\x81\xE3\x80\x8C"
        "\xF0\x9F\x98\x80 ";
    write("Cut.xml", kept + "a & b</name></bin></xmeml>");
    EXPECT_EQ(check({"--fix", "Cut.xml"}).status, 0);
    EXPECT_EQ(readBytes(path), kept + "a &amp; b</name></bin></xmeml>");
}

TEST_F(FixCommandLineTest, asksBeforeItDropsOrGuesses) {
    const auto project = [](const std::string& date) {
        return "<fcpxml version=\"1.10\"><resources/><event name=\"E\"><project name=\"P\"" + date +
               "/></event></fcpxml>";
    };
    const std::string file = write("P.fcpxml", project(" modDate=\"yesterday\""));
    const ProgramResult left = check({"--fix", "P.fcpxml"});
    EXPECT_THAT(left.output, HasSubstr("1 of values-mod-date not mended: it is made only with "
                                       "--fix=values-mod-date\n"));
    EXPECT_EQ(readBytes(file), project(" modDate=\"yesterday\""));
    const ProgramResult result = check({"--fix=values-uid,values-mod-date", "P.fcpxml"});
    EXPECT_EQ(result.status, 2) << "one of the names is none";
    check({"--fix=references,values-mod-date", "P.fcpxml"});
    EXPECT_EQ(readBytes(file), project(""));
}

TEST_F(FixCommandLineTest, mendsWhatTwoNamesLeadToOnce) {
    ASSERT_EQ(symlink("Cut.xml", (files.folder() + "/Link.xml").c_str()), 0);
    const ProgramResult result = check({"--fix", "Cut.xml", "Link.xml"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr(" in 2 files, 1 mended\n"));
    EXPECT_EQ(readBytes(path), mended());
}

}  // namespace

}  // namespace vornic::test
