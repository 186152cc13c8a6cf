// vornic-convert: what it writes, what it leaves, and what it says.

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/app/ProgramTest.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/texts/JSONSchema.h"

namespace vornic::test {

namespace {

namespace fs = std::filesystem;

using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr std::string_view kPlain =
    "<?xml version=\"1.0\"?>\n<fcpxml version=\"1.11\">\n  <event/>\n</fcpxml>\n";
constexpr std::string_view kLossy =
    "<fcpxml version=\"1.11\"><project><sequence format=\"r1\"><spine><live-drawing "
    "duration=\"5s\"/></spine></sequence></project></fcpxml>";

std::string withVersion(std::string_view text, const std::string& version) {
    std::string result(text);
    return result.replace(result.find("1.11"), 4, version);
}

class ConversionCommandLineTest : public ProgramTest {
  protected:
    ProgramResult convert(std::vector<std::string> arguments) const {
        ProgramSettings settings = files.repairer(std::move(arguments));
        settings.program = material.program("vornic-convert");
        return runProgram(settings);
    }
    void expectUsage(std::vector<std::string> arguments, const std::string& complaint) const {
        const ProgramResult result = convert(std::move(arguments));
        EXPECT_EQ(result.status, 2);
        EXPECT_THAT(result.errors, StartsWith("vornic-convert: " + complaint + "\nUsage: "));
        EXPECT_THAT(namesIn(files.folder()), ElementsAre("Cut.fcpxml"));
    }
    void rewrite(const std::string& name, std::string_view text) const {
        static_cast<void>(files.write(name, text));
    }
    std::string at(const std::string& name) const { return files.folder() + "/" + name; }

    std::string path = files.write("Cut.fcpxml", kPlain);
};

}  // namespace

TEST_F(ConversionCommandLineTest, writesTheResultBesideTheFile) {
    const FileState before = fileState(path);
    const ProgramResult result = convert({"--to", "1.9", "Cut.fcpxml"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "The converted file is Cut (1.9).fcpxml\n");
    EXPECT_EQ(result.output, "0 errors, 0 warnings, 0 notes in 1 file\n");
    EXPECT_EQ(readBytes(at("Cut (1.9).fcpxml")), withVersion(kPlain, "1.9"));
    EXPECT_EQ(fileState(path), before);
    EXPECT_EQ(convert({"--to", "1.9", "Cut.fcpxml"}).errors,
              "The converted file is Cut (1.9) 2.fcpxml\n");
}

TEST_F(ConversionCommandLineTest, reportsLossesByStatusAndReport) {
    rewrite("Cut.fcpxml", kLossy);
    const ProgramResult result = convert({"--to=1.10", "Cut.fcpxml"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(
        result.output,
        HasSubstr("WARNING(conversion-gap): Cut.fcpxml(1,62): <live-drawing> becomes a gap"));
    EXPECT_THAT(readBytes(at("Cut (1.10).fcpxml")), HasSubstr("<gap duration=\"5s\"/>"));
}

TEST_F(ConversionCommandLineTest, strictAndDryRunsWriteNothing) {
    rewrite("Cut.fcpxml", kLossy);
    EXPECT_EQ(convert({"--to", "1.10", "--strict", "Cut.fcpxml"}).status, 3);
    EXPECT_EQ(convert({"--to", "1.10", "--dry-run", "Cut.fcpxml"}).status, 1);
    EXPECT_EQ(convert({"--to", "1.11", "--dry-run", "Cut.fcpxml"}).status, 0);
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("Cut.fcpxml"));
    EXPECT_EQ(readBytes(path), kLossy);
    EXPECT_EQ(convert({"--to", "1.12", "--strict", "Cut.fcpxml"}).status, 0);
}

TEST_F(ConversionCommandLineTest, namesTheLowestVersion) {
    rewrite("Two.fcpxml", kLossy);
    const ProgramResult result = convert({"--lowest", "Cut.fcpxml", "Two.fcpxml"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "Cut.fcpxml: 1.6\nTwo.fcpxml: 1.11\n");
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("Cut.fcpxml", "Two.fcpxml"));
}

TEST_F(ConversionCommandLineTest, replacesTheFileSoThatItCanBeUndone) {
    const ProgramResult result = convert({"--to", "1.9", "--in-place", "Cut.fcpxml"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(
        result.errors,
        ContainsRegex("The original is .*/Cut.fcpxml; vornic-repair --undo brings it back"));
    EXPECT_EQ(readBytes(path), withVersion(kPlain, "1.9"));
    EXPECT_EQ(readBytes(files.trash() + "/Cut.fcpxml"), kPlain);
    EXPECT_THAT(runProgram(files.repairer({"--undo", "--list"})).output,
                HasSubstr("  converted  " + path));
    EXPECT_EQ(runProgram(files.repairer({"--undo", "Cut.fcpxml"})).status, 0);
    EXPECT_EQ(readBytes(path), kPlain);
    EXPECT_EQ(convert({"--to", "1.11", "--in-place", "Cut.fcpxml"}).errors,
              "The file Cut.fcpxml is in version 1.11 already.\n");
}

TEST_F(ConversionCommandLineTest, writesBundlesAndReadsThem) {
    EXPECT_EQ(convert({"--to", "1.10", "--bundle", "Cut.fcpxml"}).status, 0);
    const std::string bundle = at("Cut (1.10).fcpxmld");
    EXPECT_EQ(readBytes(bundle + "/Info.fcpxml"), withVersion(kPlain, "1.10"));
    fs::create_directory(bundle + "/Data");
    const ProgramResult copied = convert({"--to", "1.13", "-o", "New.fcpxmld", bundle});
    EXPECT_EQ(copied.status, 0) << copied.errors;
    EXPECT_THAT(namesIn(at("New.fcpxmld")), ElementsAre("Data", "Info.fcpxml"));
    EXPECT_EQ(readBytes(at("New.fcpxmld/Info.fcpxml")), withVersion(kPlain, "1.13"));
    EXPECT_EQ(convert({"--to", "1.8", bundle}).status, 0);
    EXPECT_EQ(readBytes(at("Cut (1.10) (1.8).fcpxml")), withVersion(kPlain, "1.8"));
    EXPECT_EQ(convert({"--to", "1.12", "--no-bundle", bundle}).status, 0);
    EXPECT_TRUE(fs::is_regular_file(at("Cut (1.10) (1.12).fcpxml")));
    EXPECT_EQ(convert({"--to", "1.8", "--bundle", "Cut.fcpxml"}).status, 3);
    const ProgramResult named = convert({"--to", "1.8", "-o", "Old.fcpxmld", "Cut.fcpxml"});
    EXPECT_EQ(named.status, 3);
    EXPECT_THAT(named.errors,
                HasSubstr("Old.fcpxmld is the name of a bundle, and the result is a file."));
    EXPECT_FALSE(exists(at("Old.fcpxmld")));
    EXPECT_EQ(convert({"--to", "1.8", "--in-place", bundle}).status, 3);
    EXPECT_EQ(convert({"--to", "1.14", "--in-place", bundle}).status, 0);
    EXPECT_EQ(readBytes(bundle + "/Info.fcpxml"), withVersion(kPlain, "1.14"));
}

// The programs of these tests run without root's rights.
TEST_F(ConversionCommandLineTest, copiesABundleThatNobodyMayChange) {
    const std::string bundle = at("Cut.fcpxmld");
    fs::create_directories(bundle + "/Data");
    rewrite("Cut.fcpxmld/Info.fcpxml", kPlain);
    fs::permissions(bundle + "/Data", fs::perms(0555));
    fs::permissions(bundle, fs::perms(0555));
    const ProgramResult result = convert({"--to", "1.10", bundle});
    EXPECT_EQ(result.status, 0) << result.errors;
    const std::string copy = at("Cut (1.10).fcpxmld");
    EXPECT_EQ(readBytes(copy + "/Info.fcpxml"), withVersion(kPlain, "1.10"));
    EXPECT_EQ(readBytes(bundle + "/Info.fcpxml"), kPlain);
    EXPECT_EQ(fs::status(copy).permissions(), fs::perms(0555));
    EXPECT_THAT(namesIn(files.folder()),
                ElementsAre("Cut (1.10).fcpxmld", "Cut.fcpxml", "Cut.fcpxmld"));
    for (const std::string& folder : {bundle, copy}) {
        fs::permissions(folder, fs::perms(0755));
    }
}

TEST_F(ConversionCommandLineTest, keepsTheVersionInANameThatIsTooLong) {
    const std::string stem(244, 'x');
    rewrite(stem + ".fcpxml", kPlain);
    fs::create_directory(at(stem + ".fcpxmld"));
    rewrite(stem + ".fcpxmld/Info.fcpxml", kPlain);
    EXPECT_EQ(convert({"--to", "1.10", at(stem + ".fcpxml")}).status, 0);
    EXPECT_EQ(convert({"--to", "1.10", at(stem + ".fcpxmld")}).status, 0);
    EXPECT_TRUE(exists(at(stem.substr(0, 241) + " (1.10).fcpxml")));
    EXPECT_TRUE(exists(at(stem.substr(0, 240) + " (1.10).fcpxmld")));
}

// A link is replaced, not what it leads to, as in a repair.
TEST_F(ConversionCommandLineTest, leavesWhatALinkLeadsTo) {
    rewrite("Real.fcpxml", kPlain);
    fs::create_directory(at("Cut.fcpxmld"));
    fs::create_symlink("../Real.fcpxml", at("Cut.fcpxmld/Info.fcpxml"));
    EXPECT_EQ(convert({"--to", "1.10", "Cut.fcpxmld"}).status, 0);
    const std::string copied = at("Cut (1.10).fcpxmld/Info.fcpxml");
    EXPECT_FALSE(fs::is_symlink(copied));
    EXPECT_EQ(readBytes(copied), withVersion(kPlain, "1.10"));
    EXPECT_EQ(convert({"--to", "1.10", "--in-place", "Cut.fcpxmld"}).status, 0);
    EXPECT_FALSE(fs::is_symlink(at("Cut.fcpxmld/Info.fcpxml")));
    EXPECT_EQ(readBytes(at("Cut.fcpxmld/Info.fcpxml")), withVersion(kPlain, "1.10"));
    EXPECT_EQ(readBytes(at("Real.fcpxml")), kPlain);
}

TEST_F(ConversionCommandLineTest, goesOnAfterAFileThatItRefuses) {
    rewrite("Old.xml", "<xmeml version=\"5\"/>");
    fs::create_directory(at("out"));
    const ProgramResult result =
        convert({"--to", "1.9", "-o", "out", "none.fcpxml", "Old.xml", "Cut.fcpxml"});
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(
        result.errors,
        HasSubstr("vornic-convert: The file Old.xml was not converted: It is XMEML, which is "
                  "not converted to FCPXML 1.9.\n"));
    EXPECT_THAT(namesIn(at("out")), ElementsAre("Cut (1.9).fcpxml"));
    const ProgramResult missing = convert({"--to", "1.9", "-o", "none/", "Cut.fcpxml"});
    EXPECT_EQ(missing.status, 3);
    EXPECT_EQ(missing.errors,
              "vornic-convert: The file Cut.fcpxml was not converted: there is no folder none/.\n");
    EXPECT_FALSE(exists(at("none")));
}

TEST_F(ConversionCommandLineTest, reportsAsJSONByTheSchema) {
    rewrite("Cut.fcpxml", kLossy);
    const ProgramResult result =
        convert({"--to", "1.10", "--format", "json", "Cut.fcpxml", "none.fcpxml"});
    const auto report = nlohmann::json::parse(result.output);
    const auto& file = report["files"][0];
    EXPECT_EQ(file["conversion"]["from"], "1.11");
    EXPECT_EQ(file["conversion"]["to"], "1.10");
    EXPECT_EQ(file["conversion"]["result"], "Cut (1.10).fcpxml");
    EXPECT_EQ(file["rules"]["conversion-gap"], 1);
    const auto schema =
        nlohmann::json::parse(readBytes(VORNIC_SOURCE "/resources/schema/report-1.json"));
    EXPECT_THAT(schemaFaults(report, schema), ::testing::IsEmpty());
}

TEST_F(ConversionCommandLineTest, refusesWrongUsage) {
    expectUsage({"Cut.fcpxml"}, "no version is named; --to VERSION does");
    expectUsage({"--to", "1.5", "Cut.fcpxml"},
                "--to wants FCPXML 1.6 to 1.14 or XMEML 1 to 5, not 1.5");
    expectUsage({"--to", "1.9", "--lowest", "Cut.fcpxml"}, "--to and --lowest exclude each other");
    expectUsage({"--to", "1.9"}, "no file named");
    expectUsage({"--to", "1.9", "-"}, "standard input cannot be converted; name a file");
    expectUsage({"--to", "1.10", "--in-place", "--bundle", "Cut.fcpxml"},
                "--in-place excludes -o, --bundle and --no-bundle");
    expectUsage({"--to", "1.9", "-o", "x", "Cut.fcpxml", "Cut.fcpxml"},
                "-o wants a folder for more than one file");
    expectUsage({"--to", "1.9", "--assume", "2", "--max", "0", "Cut.fcpxml"},
                "--max wants a number from 1 on, not 0");
}

}  // namespace vornic::test
