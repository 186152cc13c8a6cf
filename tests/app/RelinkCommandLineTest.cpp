// vornic-media relink: what it writes, what it leaves, and what it says.

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

#include "tests/app/ProgramTest.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/texts/JSONSchema.h"

namespace vornic::test {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

const std::string kProject =
    "<?xml version=\"1.0\"?>\r\n<fcpxml version=\"1.10\"><resources>\r\n"
    "<asset id='r1' name='caf\u00E9 & x'><media-rep src='file:///V/R1/a%20b%23.mov'>\r\n"
    "\t<bookmark>Ym9v</bookmark>\r\n</media-rep></asset>\r\n"
    "<asset id=\"r2\"><media-rep src=\"file:///W/b.mov\"><bookmark/></media-rep></asset>\r\n"
    "</resources></fcpxml>\r\n";

std::string replaced(std::string text, const std::string& old, const std::string& with) {
    const std::size_t at = text.find(old);
    EXPECT_NE(at, std::string::npos) << old;
    return at == std::string::npos ? text : text.replace(at, old.size(), with);
}

class RelinkCommandLineTest : public ProgramTest {
  protected:
    ProgramResult relink(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "relink");
        ProgramSettings settings = files.repairer(std::move(arguments));
        settings.program = material.program("vornic-media");
        return runProgram(settings);
    }
    void expectUsage(std::vector<std::string> arguments, const std::string& complaint) const {
        const ProgramResult result = relink(std::move(arguments));
        EXPECT_EQ(result.status, 2);
        EXPECT_THAT(result.errors, StartsWith("vornic-media: " + complaint + "\n"));
        EXPECT_EQ(readBytes(path), kProject);
    }
    std::string write(const std::string& name, std::string_view bytes) const {
        return files.write(name, bytes);
    }
    [[nodiscard]] std::string read(const std::string& name) const {
        return readBytes(files.path(name));
    }
    void put(const std::string& name) const {
        std::filesystem::create_directories(std::filesystem::path(files.path(name)).parent_path());
        write(name, "");
    }

    std::string path = write("Cut.fcpxml", kProject);
};

TEST_F(RelinkCommandLineTest, changesThePathAndNoOtherByte) {
    const FileState before = fileState(path);
    const ProgramResult result = relink({"--map", "/V=/srv/new media", "Cut.fcpxml"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "The relinked file is Cut (relinked).fcpxml\n");
    EXPECT_EQ(fileState(path), before);
    EXPECT_EQ(read("Cut (relinked).fcpxml"),
              replaced(replaced(kProject, "/V/R1", "/srv/new%20media/R1"),
                       "\r\n\t<bookmark>Ym9v</bookmark>", ""));
    EXPECT_THAT(result.output, HasSubstr("to /srv/new media/R1/a b#.mov\n"));
    EXPECT_THAT(result.output, HasSubstr("1 bookmark dropped"));
    relink({"--map", "/V=/srv", "Cut.fcpxml"});
    EXPECT_THAT(namesIn(files.folder()),
                ElementsAre("Cut (relinked) 2.fcpxml", "Cut (relinked).fcpxml", "Cut.fcpxml"));
}

TEST_F(RelinkCommandLineTest, aDryRunReportsTheSameAndWritesNothing) {
    const ProgramResult result = relink({"--dry-run", "--in-place", "--map=/V=/N", "Cut.fcpxml"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, HasSubstr("to /N/R1/a b#.mov\n"));
    EXPECT_EQ(readBytes(path), kProject);
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("Cut.fcpxml"));
    EXPECT_FALSE(exists(files.trash()));
}

TEST_F(RelinkCommandLineTest, isTakenBackByAnUndo) {
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    const ProgramResult result = relink({"--in-place", "--map", "/V=/N", "Cut.fcpxml"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors, HasSubstr("; vornic-repair --undo brings it back.\n"));
    EXPECT_THAT(readBytes(path), HasSubstr("'file:///N/R1/a%20b%23.mov'"));
    EXPECT_EQ(fileState(path).mode & 0777U, 0640U);
    EXPECT_EQ(readBytes(files.trash() + "/Cut.fcpxml"), kProject);
    const ProgramResult listed = runProgram(files.repairer({"--undo", "--list"}));
    EXPECT_THAT(listed.output, HasSubstr("  relinked   " + path));
    EXPECT_EQ(runProgram(files.repairer({"--undo", "Cut.fcpxml"})).status, 0);
    EXPECT_EQ(readBytes(path), kProject);
}

TEST_F(RelinkCommandLineTest, clearsWhatAKilledRunHasLeftThoughNothingIsToBeRelinked) {
    write(".Cut.fcpxml.vornic-relink", "half");
    EXPECT_EQ(relink({"--dry-run", "--in-place", "--map", "/X=/N", "Cut.fcpxml"}).status, 0);
    EXPECT_EQ(relink({"--map", "/X=/N", "Cut.fcpxml"}).status, 0);
    EXPECT_EQ(read(".Cut.fcpxml.vornic-relink"), "half");
    EXPECT_EQ(relink({"--in-place", "--map", "/X=/N", "Cut.fcpxml"}).status, 0);
    EXPECT_EQ(readBytes(path), kProject);
    EXPECT_FALSE(std::filesystem::exists(files.path(".Cut.fcpxml.vornic-relink")));
}

TEST_F(RelinkCommandLineTest, keepsTheEncodingOfTheFile) {
    const std::string utf8 =
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<xmeml version=\"4\"><clip><name>caf%"
        "</name><file id=\"f\"><pathurl><![CDATA[file://localhost/V/caf%C3%A9.mov]]></pathurl>"
        "</file></clip></xmeml>";
    const std::string latin1 = replaced(utf8, "caf%<", "caf\xE9<");
    write("Cut.xml", latin1);
    EXPECT_EQ(relink({"--map", "/V=C:\\N\u00FC", "-o", "out.xml", "Cut.xml"}).status, 0);
    EXPECT_EQ(read("out.xml"), replaced(latin1, "<![CDATA[file://localhost/V/caf%C3%A9.mov]]>",
                                        "file://localhost/C:/N%C3%BC/caf%C3%A9.mov"));
}

TEST_F(RelinkCommandLineTest, keepsUTF16) {
    const std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n<fcpxml version=\"1.8\"><resources>"
        "<asset id=\"r1\" src=\"file:///V/a.mov\"/></resources></fcpxml>";
    const auto wide = [](const std::string& narrow) {
        std::string bytes = "\xFF\xFE";
        for (const char c : narrow) {
            bytes += c;
            bytes += '\0';
        }
        return bytes;
    };
    write("Wide.fcpxml", wide(text));
    EXPECT_EQ(relink({"--map", "/V=/N", "-o", "out.fcpxml", "Wide.fcpxml"}).status, 0);
    EXPECT_EQ(read("out.fcpxml"), wide(replaced(text, "/V/", "/N/")));
}

TEST_F(RelinkCommandLineTest, escapesTheQuotesThatStandAroundAValueAlone) {
    write("Cut.fcpxml",
          "<fcpxml version=\"1.8\"><resources><asset id=\"r1\" src=\"/V/a'&amp;b.mov\"/>"
          "<asset id=\"r2\" src='/V/a&apos;\"b.mov'/></resources></fcpxml>");
    EXPECT_EQ(relink({"--map", "/V=/N", "Cut.fcpxml"}).status, 0);
    EXPECT_THAT(read("Cut (relinked).fcpxml"), HasSubstr("src=\"/N/a'&amp;b.mov\""));
    EXPECT_THAT(read("Cut (relinked).fcpxml"), HasSubstr("src='/N/a&apos;\"b.mov'"));
}

TEST_F(RelinkCommandLineTest, findsWhatHasMoved) {
    put("media/x/a b#.mov");
    put("media/R1/B.MOV");
    const ProgramResult result = relink({"--search", "media", "Cut.fcpxml"});
    EXPECT_EQ(result.status, 0) << result.output;
    const std::string relinked = read("Cut (relinked).fcpxml");
    EXPECT_THAT(relinked, HasSubstr("'file://" + files.folder() + "/media/x/a%20b%23.mov'"));
    EXPECT_THAT(relinked, HasSubstr("/media/R1/B.MOV\""));
    EXPECT_EQ(relinked.find("bookmark"), std::string::npos);
    const ProgramResult again = relink({"--search", "media", "Cut (relinked).fcpxml"});
    EXPECT_EQ(again.status, 0);
    EXPECT_THAT(again.output, StartsWith("Cut (relinked).fcpxml: 0 media files\n"));
}

TEST_F(RelinkCommandLineTest, newPathsLeadThroughNoFolderAboveAndBack) {
    put("media/b.mov");
    put("x/y");
    relink({"--search", "x/../media/.", "Cut.fcpxml"});
    EXPECT_THAT(read("Cut (relinked).fcpxml"),
                HasSubstr(std::filesystem::canonical(files.folder()).string() + "/media/b.mov\""));
}

TEST_F(RelinkCommandLineTest, listsWhatMayBeOneOfSeveral) {
    put("media/1/b.mov");
    put("media/2/b.mov");
    const std::vector<std::string> arguments = {"--search", "media", "--format", "json",
                                                "Cut.fcpxml"};
    const ProgramResult result = relink(arguments);
    EXPECT_EQ(result.status, 1);
    const auto json = nlohmann::json::parse(result.output);
    EXPECT_EQ(schemaFaults(json, nlohmann::json::parse(
                                     readBytes(VORNIC_SOURCE "/resources/schema/report-1.json"))),
              std::vector<std::string>());
    const auto& media = json["files"][0]["media"];
    EXPECT_EQ(media[0]["why"], "no file of this name was found");
    EXPECT_THAT(media[1]["candidates"].get<std::vector<std::string>>(),
                ElementsAre(files.folder() + "/media/1/b.mov", files.folder() + "/media/2/b.mov"));
    EXPECT_EQ(media[1]["newPath"], "");
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("Cut.fcpxml", "media"));
    std::filesystem::last_write_time(
        files.path("media/2/b.mov"),
        std::filesystem::file_time_type::clock::now() + std::chrono::hours(1));
    relink({"--search", "media", "--pick", "newest", "Cut.fcpxml"});
    EXPECT_THAT(read("Cut (relinked).fcpxml"), HasSubstr("/media/2/b.mov\""));
}

TEST_F(RelinkCommandLineTest, oneFileIsNotTakenForTwo) {
    write("Cut.fcpxml",
          "<fcpxml version=\"1.8\"><resources><asset id=\"r1\" src=\"file:///V/1/a.mov\"/>"
          "<asset id=\"r2\" src=\"file:///V/2/a.mov\"/></resources></fcpxml>");
    put("media/a.mov");
    const ProgramResult result = relink({"--search", "media", "Cut.fcpxml"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr("would be that of another media file"));
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("Cut.fcpxml", "media"));
}

TEST_F(RelinkCommandLineTest, writesAllPathsInAForm) {
    EXPECT_EQ(relink({"--form", "localhost", "-o", "out.fcpxml", "Cut.fcpxml"}).status, 0);
    EXPECT_EQ(read("out.fcpxml"), replaced(replaced(kProject, "file:///V", "file://localhost/V"),
                                           "file:///W", "file://localhost/W"))
        << "the bookmarks still lead there";
}

TEST_F(RelinkCommandLineTest, putsTheResultOfABundleBesideIt) {
    put("Cut.fcpxmld/x");
    write("Cut.fcpxmld/Info.fcpxml", kProject);
    EXPECT_EQ(relink({"--map", "/V=/N", "Cut.fcpxmld"}).status, 0);
    EXPECT_THAT(read("Cut (relinked).fcpxml"), HasSubstr("file:///N/R1"));
}

TEST_F(RelinkCommandLineTest, leavesADamagedFile) {
    write("Cut.fcpxml", kProject.substr(0, kProject.size() - 12));
    const ProgramResult result = relink({"--map", "/V=/N", "Cut.fcpxml"});
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.errors, HasSubstr("Nothing was relinked; repair the file first.\n"));
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("Cut.fcpxml"));
}

TEST_F(RelinkCommandLineTest, writesNothingWhereNothingChanges) {
    const ProgramResult result = relink({"--map", "/X=/N", "--in-place", "Cut.fcpxml"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(readBytes(path), kProject);
    EXPECT_FALSE(exists(files.trash() + "/Cut.fcpxml"));
}

TEST_F(RelinkCommandLineTest, takesNoUsageThatWouldDoNothing) {
    expectUsage({"Cut.fcpxml"}, "relink wants --map, --search or --form");
    expectUsage({"--map", "/V", "Cut.fcpxml"}, "--map wants OLD=NEW, not /V");
    expectUsage({"--search", "none", "Cut.fcpxml"}, "--search wants a folder, and none is none");
    expectUsage({"--map", "/V=/N", "--pick", "newest", "Cut.fcpxml"}, "--pick goes with --search");
    expectUsage({"--map", "/V=/N", "--form", "mac", "Cut.fcpxml"},
                "--form wants localhost, triple-slash or windows, not mac");
    expectUsage({"--map", "/V=/N", "--in-place", "-o", "x", "Cut.fcpxml"},
                "--in-place and -o do not go together");
    expectUsage({"--map", "/V=/N", "-"}, "relink wants files, and standard input is none");
    expectUsage({"--map", "/V=/N", "-o", "x", "Cut.fcpxml", "Cut.fcpxml"},
                "-o wants a folder for more than one file");
}

}  // namespace

}  // namespace vornic::test
