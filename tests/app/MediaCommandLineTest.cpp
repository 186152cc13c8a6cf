// vornic-media: what it lists, and how it takes its options.

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/app/ProgramTest.h"
#include "tests/support/texts/JSONSchema.h"

namespace vornic::test {

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

const std::string kProject =
    "<?xml version=\"1.0\"?>\n<fcpxml version=\"1.10\"><resources>\n"
    "<asset id=\"r1\" name=\"=A\" duration=\"10s\" hasVideo=\"1\">"
    "<media-rep src=\"file:///V/a%20b.mov\"/></asset>\n"
    "<asset id=\"r2\" name=\"B\"><media-rep src=\"file:///V/b.mov\"/></asset></resources>\n"
    "<library><event><project><sequence format=\"r9\"><spine>"
    "<asset-clip ref=\"r1\" name=\"One\" start=\"1s\" duration=\"2s\"/>"
    "</spine></sequence></project></event></library></fcpxml>\n";

nlohmann::json schema() {
    return nlohmann::json::parse(readBytes(VORNIC_SOURCE "/resources/schema/report-1.json"));
}

class MediaCommandLineTest : public ProgramTest {
  protected:
    ProgramResult media(std::vector<std::string> arguments) const {
        ProgramSettings settings = files.repairer(std::move(arguments));
        settings.program = material.program("vornic-media");
        return runProgram(settings);
    }
    void expectUsage(std::vector<std::string> arguments, const std::string& complaint) const {
        const ProgramResult result = media(std::move(arguments));
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, StartsWith("vornic-media: " + complaint + "\n"));
    }

    std::string write(const std::string& name, std::string_view bytes) const {
        return files.write(name, bytes);
    }

    std::string path = files.write("Cut.fcpxml", kProject);
};

TEST_F(MediaCommandLineTest, listsMediaForPeople) {
    const ProgramResult result = media({"list", "Cut.fcpxml"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output,
              "Cut.fcpxml: 2 media files\n"
              "    /V/a b.mov\n"
              "        1 clip: \"One\"; 1 s to 3 s of 10 s; 1 video; triple-slash\n"
              "    /V/b.mov\n"
              "        no clip; triple-slash\n");
}

TEST_F(MediaCommandLineTest, listsThoseThatNoSequenceUses) {
    EXPECT_THAT(media({"list", "--unused", "Cut.fcpxml"}).output,
                StartsWith("Cut.fcpxml: 1 media file\n    /V/b.mov\n"));
}

TEST_F(MediaCommandLineTest, writesJSONAsTheSchemaSays) {
    const ProgramResult result = media({"list", "--format=json", "Cut.fcpxml"});
    const auto json = nlohmann::json::parse(result.output);
    EXPECT_EQ(schemaFaults(json, schema()), std::vector<std::string>());
    const auto& medium = json["files"][0]["media"][0];
    EXPECT_EQ(medium["path"], "/V/a b.mov");
    EXPECT_EQ(medium["line"], 3);
    EXPECT_EQ(kProject.substr(medium["offset"], medium["length"]), "file:///V/a%20b.mov");
    EXPECT_EQ(medium["element"], "/fcpxml[1]/resources[1]/asset[1]/media-rep[1]");
    EXPECT_EQ(medium["usedEnd"], "3s");
    EXPECT_TRUE(medium["audioTracks"].is_null());
}

TEST_F(MediaCommandLineTest, writesATableWhoseCellsAreNoFormulas) {
    EXPECT_THAT(media({"list", "--format", "csv", "Cut.fcpxml"}).output,
                HasSubstr("\r\nCut.fcpxml,/V/a b.mov,file:///V/a%20b.mov,triple-slash,\"=A\",,1,0,"
                          "One,1,3,0,10,,1,,unknown,,\r\n"));
}

TEST_F(MediaCommandLineTest, reportsThatADamagedFileWasNotReadToItsEnd) {
    write("Cut.fcpxml", kProject.substr(0, kProject.find("<library>")));
    const ProgramResult result = media({"list", "Cut.fcpxml"});
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.output, HasSubstr("/V/b.mov"));
    EXPECT_THAT(result.errors, HasSubstr(" What follows was not read.\n"));
}

TEST_F(MediaCommandLineTest, goesOnBehindAFileThatItCannotRead) {
    write("Text.xml", "<html/>");
    const ProgramResult result = media({"list", "None.xml", "Text.xml", "Cut.fcpxml"});
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.output, StartsWith("Cut.fcpxml: 2 media files\n"));
    EXPECT_THAT(result.errors, HasSubstr("None.xml"));
    EXPECT_THAT(result.errors, HasSubstr("Text.xml: It is neither XMEML nor FCPXML.\n"));
}

TEST_F(MediaCommandLineTest, reportsWhatIsMissing) {
    write("a b.mov", "");
    const std::string other = write("Caf\u00E9.mov", "");
    write("Cut.fcpxml",
          "<fcpxml version=\"1.8\"><resources>"
          "<asset id=\"r1\" src=\"file://" +
              files.folder() +
              "/a%20b.mov\"/>"
              "<asset id=\"r2\" src=\"file://" +
              files.folder() +
              "/cafe%CC%81.MOV\"/>"
              "<asset id=\"r3\" src=\"file:///V/b.mov\"/>"
              "<asset id=\"r4\" src=\"file://localhost/C%3a/b.mov\"/>"
              "<asset id=\"r5\" src=\"a%20b.mov\"/></resources></fcpxml>");
    const ProgramResult result = media({"missing", "Cut.fcpxml"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, StartsWith("Cut.fcpxml: 3 media files, 3 not there\n"));
    EXPECT_THAT(result.output, HasSubstr("    other name  " + files.folder()));
    EXPECT_THAT(result.output, HasSubstr("        is there as " + other + "\n"));
    EXPECT_THAT(result.output, HasSubstr("    missing     /V/b.mov\n"));
    EXPECT_THAT(result.output, HasSubstr("    elsewhere   C:/b.mov\n"));
    EXPECT_EQ(media({"missing", "--quiet", "Cut.fcpxml"}).output, "");
    const auto json =
        nlohmann::json::parse(media({"missing", "--format", "json", "Cut.fcpxml"}).output);
    EXPECT_EQ(schemaFaults(json, schema()), std::vector<std::string>());
    EXPECT_EQ(json["files"][0]["media"][1]["state"], "missing");
    EXPECT_EQ(json["files"][0]["rules"]["media-missing"], 1);
}

TEST_F(MediaCommandLineTest, hasNothingToSayWhenAllIsThere) {
    write("b.mov", "");
    write("Cut.fcpxml",
          "<fcpxml version=\"1.8\"><resources><asset id=\"r1\" src=\"b.mov\"/>"
          "</resources></fcpxml>");
    const ProgramResult result = media({"missing", "Cut.fcpxml"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "Cut.fcpxml: 0 media files\n");
}

TEST_F(MediaCommandLineTest, aCheckReportsMissingMediaWhenItIsAskedTo) {
    ProgramSettings settings = files.repairer({"--media", "--only", "media", "Cut.fcpxml"});
    settings.program = material.program("vornic-check");
    const ProgramResult result = runProgram(settings);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output,
                StartsWith("ERROR(media-missing): Cut.fcpxml(3,70): the media file /V/a b.mov, "
                           "which 1 clip uses, is not there; it should be, or the project should "
                           "say where it is\n    /fcpxml[1]/resources[1]/asset[1]/media-rep[1]"));
    settings.arguments[0] = "--quiet";
    EXPECT_EQ(runProgram(settings).status, 0);
}

TEST_F(MediaCommandLineTest, takesNoUsageThatItDoesNotKnow) {
    expectUsage({}, "nothing to do is named");
    expectUsage({"lsit", "Cut.fcpxml"}, "there is no command lsit; list, missing and relink are");
    expectUsage({"list"}, "no file named");
    expectUsage({"list", "--format", "xml", "Cut.fcpxml"}, "there is no format xml");
    expectUsage({"list", "--report", "Cut.fcpxml", "Cut.fcpxml"},
                "the report would take the place of a file that is read");
}

TEST_F(MediaCommandLineTest, aClosedPipeIsReportedByTheStatusAlone) {
    ProgramSettings settings = files.repairer({"list", "Cut.fcpxml"});
    settings.program = material.program("vornic-media");
    settings.output = ProgramStream::brokenPipe;
    EXPECT_EQ(runProgram(settings).status, 1);
}

}  // namespace

}  // namespace vornic::test
