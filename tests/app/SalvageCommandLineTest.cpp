// vornic-repair --salvage: what it writes, what it leaves, and what it says.

#include <filesystem>
#include <memory>
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

constexpr std::string_view kSound =
    "<xmeml version=\"5\">\n  <bin>\n    <name>A</name>\n    <children/>\n  </bin>\n</xmeml>\n";
constexpr std::string_view kBroken =
    "<xmeml version=\"5\">\n  <bin>\n    <name>A\n    <children/>\n  </bin>\n</xmeml>\n";

class SalvageCommandLineTest : public ProgramTest {
  protected:
    // What a script gets, held against the schema.
    nlohmann::json reportOn(const std::string& name) const {
        nlohmann::json report =
            nlohmann::json::parse(salvage({"--format", "json", "--", name}).output);
        EXPECT_EQ(schemaFaults(report, nlohmann::json::parse(readBytes(
                                           VORNIC_SOURCE "/resources/schema/report-1.json"))),
                  std::vector<std::string>());
        return report;
    }
    ProgramResult salvage(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "--salvage");
        return runProgram(files.repairer(std::move(arguments)));
    }
    std::string write(const std::string& name, std::string_view bytes) const {
        return files.write(name, bytes);
    }

    std::string path = write("Cut.xml", kBroken);
};

}  // namespace

TEST_F(SalvageCommandLineTest, writesACopyBesideTheFileAndSaysEachGuess) {
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    const FileState before = fileState(path);
    const ProgramResult result = salvage({"Cut.xml"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output,
              "WARNING(salvage-end-tag-lost): Cut.xml(3,12): <name> was never closed; </name> was "
              "put here\n    /xmeml[1]/bin[1]/name[1]  A  in the copy: 3,12\n"
              "0 errors, 1 warning, 0 notes in 1 file\n");
    EXPECT_EQ(result.errors, "The salvaged copy is Cut-salvaged.xml\n");
    EXPECT_EQ(fileState(path), before);
    const FileState copy = fileState(files.folder() + "/Cut-salvaged.xml");
    EXPECT_EQ(copy.bytes, kSound);
    EXPECT_EQ(copy.mode, before.mode);
}

TEST_F(SalvageCommandLineTest, numbersACopyWhoseNameIsTaken) {
    EXPECT_EQ(salvage({"Cut.xml"}).status, 1);
    EXPECT_EQ(salvage({"--quiet", "Cut.xml"}).status, 1);
    EXPECT_THAT(namesIn(files.folder()),
                ElementsAre("Cut-salvaged 2.xml", "Cut-salvaged.xml", "Cut.xml"));
}

TEST_F(SalvageCommandLineTest, numbersACopyWhoseNameALinkOrAFolderHas) {
    std::filesystem::create_symlink("nowhere", files.path("Cut-salvaged.xml"));
    std::filesystem::create_directory(files.path("Cut-salvaged 2.xml"));
    EXPECT_EQ(salvage({"Cut.xml"}).status, 1);
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("Cut-salvaged 2.xml", "Cut-salvaged 3.xml",
                                                     "Cut-salvaged.xml", "Cut.xml"));
    EXPECT_EQ(readBytes(files.path("Cut-salvaged 3.xml")), kSound);
    EXPECT_THAT(namesIn(files.path("Cut-salvaged 2.xml")), ::testing::IsEmpty());
}

TEST_F(SalvageCommandLineTest, givesRunsAtOnceACopyEach) {
    constexpr std::size_t kRuns = 6;
    std::vector<std::unique_ptr<RunningProgram>> runs;
    for (std::size_t i = 0; i < kRuns; ++i) {
        runs.push_back(
            std::make_unique<RunningProgram>(files.repairer({"--salvage", "--quiet", "Cut.xml"})));
    }
    for (const auto& run : runs) {
        EXPECT_EQ(run->finish().status, 1);
    }
    const std::vector<std::string> names = namesIn(files.folder());
    EXPECT_EQ(names.size(), kRuns + 1);
    for (const std::string& name : names) {
        EXPECT_EQ(readBytes(files.path(name)), name == "Cut.xml" ? kBroken : kSound) << name;
    }
}

TEST_F(SalvageCommandLineTest, leavesNothingInAFolderThatCannotBeWritten) {
    ASSERT_EQ(chmod(files.folder().c_str(), 0555), 0);
    const ProgramResult result = salvage({"Cut.xml"});
    ASSERT_EQ(chmod(files.folder().c_str(), 0755), 0);
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.errors, HasSubstr("The file Cut-salvaged.xml cannot be written: "));
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("Cut.xml"));
}

TEST_F(SalvageCommandLineTest, neverWritesOverItsInput) {
    EXPECT_EQ(salvage({"-o", "Cut.xml", "Cut.xml"}).status, 1);
    EXPECT_EQ(readBytes(path), kBroken);
    EXPECT_EQ(readBytes(files.folder() + "/Cut 2.xml"), kSound);
}

TEST_F(SalvageCommandLineTest, saysThatASoundFileIsSoundAndWritesNothing) {
    write("Sound.xml", kSound);
    const ProgramResult result = salvage({"Sound.xml"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "The file Sound.xml is sound; there is nothing to salvage.\n");
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("Cut.xml", "Sound.xml"));
}

TEST_F(SalvageCommandLineTest, refusesWhatIsNoProjectAndGoesOn) {
    write("Letter.xml", "Dear Anna");
    const ProgramResult result = salvage({"Letter.xml", "missing.xml", "Cut.xml"});
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.errors,
                HasSubstr("The file Letter.xml was not salvaged. Nothing in the file "
                          "looks like a Final Cut Pro project"));
    EXPECT_THAT(result.errors, HasSubstr("missing.xml"));
    EXPECT_THAT(result.errors, HasSubstr("The salvaged copy is Cut-salvaged.xml"));
}

TEST_F(SalvageCommandLineTest, writesSeveralCopiesIntoAFolder) {
    std::filesystem::create_directory(files.folder() + "/out");
    write("Two.xml", std::string(kSound) + std::string(kSound));
    EXPECT_EQ(salvage({"-o", "out", "Cut.xml", "Two.xml"}).status, 1);
    EXPECT_THAT(namesIn(files.folder() + "/out"),
                ElementsAre("Cut-salvaged.xml", "Two-salvaged 2.xml", "Two-salvaged.xml"));
}

TEST_F(SalvageCommandLineTest, givesScriptsThePlacesInBothFiles) {
    const nlohmann::json file = reportOn("Cut.xml")["files"][0];
    EXPECT_EQ(file["copies"], nlohmann::json({"Cut-salvaged.xml"}));
    EXPECT_EQ(file["rules"], nlohmann::json({{"salvage-end-tag-lost", 1}}));
    EXPECT_EQ(file["findings"][0]["offset"], kBroken.find("A\n") + 1);
    EXPECT_EQ(file["findings"][0]["copy"],
              nlohmann::json(
                  {{"index", 0}, {"line", 3}, {"column", 12}, {"offset", kSound.find("</name>")}}));
}

TEST_F(SalvageCommandLineTest, reportsEveryKindOfFileByTheSchema) {
    write("Sound.xml", kSound);
    write("Letter.xml", "Dear Anna");
    write("Odd\xFF.xml", std::string(kBroken) + "</x>\xFF" + std::string(30, '\0') + "&<a b='");
    write("Tail.xml", std::string(kBroken).substr(0, 60));
    EXPECT_EQ(reportOn("Sound.xml")["files"][0]["copies"], nlohmann::json::array());
    EXPECT_EQ(reportOn("Letter.xml")["files"], nlohmann::json::array());
    EXPECT_EQ(reportOn("Odd\xFF.xml")["files"][0]["copies"].size(), 1U);
    EXPECT_EQ(reportOn("Tail.xml")["files"][0]["rules"]["salvage-cut-off"], 1);
}

TEST_F(SalvageCommandLineTest, reportsWhichOfSeveralCopiesAFindingIsAbout) {
    write("Two.xml", std::string(kSound) + std::string(kBroken));
    EXPECT_THAT(salvage({"Two.xml"}).output, HasSubstr("  in Two-salvaged 2.xml: 4,12\n"));
    const nlohmann::json file = reportOn("Two.xml")["files"][0];
    ASSERT_EQ(file["copies"], nlohmann::json({"Two-salvaged 3.xml", "Two-salvaged 4.xml"}));
    for (const nlohmann::json& finding : file["findings"]) {
        EXPECT_EQ(finding["copy"]["index"], 1);
    }
}

TEST_F(SalvageCommandLineTest, refusesWrongUsage) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{},
                                                      {"--undo", "Cut.xml"},
                                                      {"--format", "sarif", "Cut.xml"},
                                                      {"-o", "none", "Cut.xml", "Cut.xml"},
                                                      {"-"},
                                                      {"-o"}}) {
        const ProgramResult result = salvage(arguments);
        EXPECT_EQ(result.status, 2) << result.errors;
        EXPECT_THAT(result.errors, StartsWith("vornic-repair: "));
    }
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("Cut.xml"));
}

}  // namespace vornic::test
