// Fixtures in pairs: a file named after what is wrong with it, the report that its repair makes
// ("{file}" and "{copy}" stand for its path and its working copy's) and, when it can be repaired,
// the repaired file. The folder is the list: a new fixture is a file there and what
// scripts/refresh-goldens writes for it.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/ProgramTest.h"
#include "tests/support/machine/FileState.h"

namespace vornic::test {

namespace {

namespace fs = std::filesystem;

enum class Outcome { sound, repaired, unable, stopped };

std::string replacing(std::string text, std::string_view what, const std::string& with) {
    for (std::size_t at = text.find(what); at != std::string::npos;
         at = text.find(what, at + with.size())) {
        text.replace(at, what.size(), with);
    }
    return text;
}

std::string stemOf(const std::string& file) {
    return fs::path(file).stem().string();
}

std::string repairedName(const std::string& file) {
    return stemOf(file) + ".repaired" + fs::path(file).extension().string();
}

bool isRepairedFile(const std::string& name) {
    return stemOf(name).ends_with(".repaired");
}

// The files in the folder that are to be repaired: every project file but the repaired ones.
std::vector<std::string> fixtureNames() {
    std::vector<std::string> names;
    for (const std::string& name : namesIn(VORNIC_FIXTURES)) {
        const std::string extension = fs::path(name).extension();
        if ((extension == ".xml" || extension == ".fcpxml") && !isRepairedFile(name)) {
            names.push_back(name);
        }
    }
    return names;
}

// What the last lines of a report say.
Outcome outcomeOf(const std::string& report) {
    if (report.find("\nNo repair was necessary. ") != std::string::npos) {
        return Outcome::sound;
    }
    if (report.find("\nThe file was repaired successfully. ") != std::string::npos) {
        return Outcome::repaired;
    }
    return report.find("\nUnable to repair file. ") != std::string::npos ? Outcome::unable
                                                                         : Outcome::stopped;
}

// Where new golden files are to be written instead of being compared with, or "".
std::string refreshFolder() {
    const char* const folder = std::getenv("VORNIC_REFRESH_GOLDENS");
    return folder == nullptr ? "" : folder;
}

std::string testName(const ::testing::TestParamInfo<std::string>& info) {
    std::string name = info.param;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '-' || c == '.'; }, '_');
    return name;
}

}  // namespace

class GoldenRepairTest : public ProgramTest, public ::testing::WithParamInterface<std::string> {
  protected:
    // Writes what the repair of a fixture makes today.
    void refresh(const std::string& folder, const std::string& report,
                 const std::string& file) const {
        const std::string name = GetParam();
        writeBytes(folder + "/" + stemOf(name) + ".report", report);
        if (outcomeOf(report) == Outcome::repaired) {
            writeBytes(folder + "/" + repairedName(name), readBytes(file));
        }
    }
    [[nodiscard]] std::string fixtureBytes(const std::string& name) const {
        return readBytes(material.fixture(name));
    }
};

TEST_P(GoldenRepairTest, endsAsItsReportSays) {
    const std::string name = GetParam();
    const std::string file = files.write(name, fixtureBytes(name));
    const std::string extension = fs::path(file).extension().string();
    const std::string copy =
        files.path(stemOf(name)) + (extension == ".fcpxml" ? "-backup.fcpxml" : "-backup.xml");
    const FileState before = fileState(file);

    const ProgramResult result = files.repair({file});

    if (const std::string folder = refreshFolder(); !folder.empty()) {
        refresh(folder, replacing(replacing(result.output, file, "{file}"), copy, "{copy}"), file);
        GTEST_SKIP() << "written anew";
    }
    std::string report = fixtureBytes(stemOf(name) + ".report");
    const Outcome outcome = outcomeOf(report);
    report = replacing(replacing(report, "{file}", file), "{copy}", copy);
    EXPECT_EQ(result.output, report);
    if (outcome == Outcome::repaired) {
        EXPECT_TRUE(tellsOriginal(result.errors, files.trash())) << result.errors;
    } else {
        EXPECT_EQ(result.errors, outcome == Outcome::stopped
                                     ? "vornic-repair: The repair of the file " + file +
                                           " was stopped by an error that the log describes.\n"
                                     : "");
    }
    EXPECT_EQ(result.status, outcome == Outcome::sound || outcome == Outcome::repaired ? 0 : 1);
    FileState after = before;
    if (outcome == Outcome::repaired) {
        after.bytes = fixtureBytes(repairedName(name));
        if (extension != ".fcpxml") {
            after.attributes[kFinderInfo] = xmemlFinderInfo();
        }
        EXPECT_EQ(namesIn(files.trash()), std::vector<std::string>{name});
        EXPECT_EQ(fileState(files.trash() + "/" + name), before);
    } else {
        EXPECT_FALSE(exists(files.trash()));
    }
    EXPECT_EQ(fileState(file), after);
    EXPECT_FALSE(exists(copy));
}

INSTANTIATE_TEST_SUITE_P(Fixtures, GoldenRepairTest, ::testing::ValuesIn(fixtureNames()), testName);

TEST(GoldenFixturesTest, everyFileOfTheFolderBelongsToAFixture) {
    const std::vector<std::string> fixtures = fixtureNames();
    EXPECT_GE(fixtures.size(), 60U);
    std::set<std::string> expected;
    for (const std::string& name : fixtures) {
        const std::string report = stemOf(name) + ".report";
        expected.insert({name, report});
        if (outcomeOf(readBytes(std::string(VORNIC_FIXTURES) + "/" + report)) ==
            Outcome::repaired) {
            expected.insert(repairedName(name));
        }
    }
    const std::vector<std::string> names = namesIn(VORNIC_FIXTURES);
    EXPECT_THAT(std::set<std::string>(names.begin(), names.end()),
                ::testing::ContainerEq(expected));
}

}  // namespace vornic::test
