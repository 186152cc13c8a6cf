// Fixtures in pairs: a file named after what is wrong with it, the report that its repair makes
// ("{file}" and "{copy}" stand for its path and its working copy's) and, when it can be repaired,
// the repaired file.

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/ProgramTest.h"
#include "tests/support/FileState.h"

namespace vornic::test {

namespace {

namespace fs = std::filesystem;

enum class Outcome { sound, repaired, unable, stopped };

struct Fixture {
    const char* file;
    Outcome outcome;
};

void PrintTo(const Fixture& fixture, std::ostream* stream) {
    *stream << fixture.file;
}

constexpr Fixture kFixtures[] = {
    {"sound.xml", Outcome::sound},
    {"stray-ampersand.xml", Outcome::repaired},
    {"less-than-in-attribute-value.xml", Outcome::repaired},
    {"cdata-end-in-text.xml", Outcome::repaired},
    {"forbidden-characters-in-text.xml", Outcome::repaired},
    {"forbidden-character-in-attribute.xml", Outcome::repaired},
    {"forbidden-character-in-element-name.xml", Outcome::repaired},
    {"nul-character.xml", Outcome::repaired},
    {"emoji.xml", Outcome::repaired},
    {"byte-order-mark-and-private-character-in-text.xml", Outcome::repaired},
    {"byte-order-mark.xml", Outcome::sound},
    {"byte-order-mark-and-forbidden-character.xml", Outcome::repaired},
    {"missing-document-type.xml", Outcome::repaired},
    {"document-type-of-another-name.xml", Outcome::repaired},
    {"root-element-of-another-name.xml", Outcome::unable},
    {"no-sequence.xml", Outcome::unable},
    {"no-version.xml", Outcome::unable},
    {"unknown-version.xml", Outcome::unable},
    {"version-with-a-blank.xml", Outcome::unable},
    {"elements-of-newer-versions.xml", Outcome::sound},
    {"element-of-the-newest-version.xml", Outcome::sound},
    {"empty-newer-element-with-end-tag.xml", Outcome::sound},
    {"empty-newer-element-without-end-tag.xml", Outcome::sound},
    {"newer-element-with-attribute.xml", Outcome::sound},
    {"missing-end-tag.xml", Outcome::unable},
    {"missing-end-tag-and-forbidden-character.xml", Outcome::unable},
    {"crossed-tags.xml", Outcome::unable},
    {"cut-off.xml", Outcome::unable},
    {"repeated-attribute.xml", Outcome::unable},
    {"second-root-element.xml", Outcome::unable},
    {"text-after-the-root-element.xml", Outcome::unable},
    {"attribute-value-without-quotes.xml", Outcome::unable},
    {"attribute-without-value.xml", Outcome::unable},
    {"no-blank-between-attributes.xml", Outcome::unable},
    {"double-hyphen-in-comment.xml", Outcome::unable},
    {"blank-line-before-the-declaration.xml", Outcome::unable},
    {"declaration-in-the-wrong-order.xml", Outcome::unable},
    {"undefined-entity-of-a-short-name.xml", Outcome::unable},
    {"undefined-entity-of-a-long-name.xml", Outcome::repaired},
    {"entity-declaration.xml", Outcome::unable},
    {"text-beyond-ascii.xml", Outcome::sound},
    {"text-beyond-ascii-and-missing-document-type.xml", Outcome::repaired},
    {"element-name-beyond-ascii.xml", Outcome::unable},
    {"long-character-reference.xml", Outcome::repaired},
    {"everything-kept-but-the-document-type.xml", Outcome::repaired},
    {"line-ends-of-another-system.xml", Outcome::repaired},
    {"three-faults.xml", Outcome::repaired},
    {"latin-1.xml", Outcome::repaired},
    {"utf-16.xml", Outcome::repaired},
    {"empty.xml", Outcome::unable},
    {"one-byte.xml", Outcome::unable},
    {"less-than-and-greater-than-first.xml", Outcome::stopped},
    {"sound-library.fcpxml", Outcome::sound},
    {"audio-without-reference.fcpxml", Outcome::repaired},
    {"no-audio-has-a-reference.fcpxml", Outcome::sound},
    {"missing-document-type-in-a-library.fcpxml", Outcome::repaired},
    {"no-project.fcpxml", Outcome::unable},
    {"no-resources.fcpxml", Outcome::unable},
    {"no-project-and-no-resources.fcpxml", Outcome::unable},
    {"contents-of-the-other-kind.fcpxml", Outcome::unable},
    {"attribute-value-without-quotes-in-a-library.fcpxml", Outcome::unable},
};

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

std::string testName(const ::testing::TestParamInfo<Fixture>& info) {
    std::string name = info.param.file;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '-' || c == '.'; }, '_');
    return name;
}

}  // namespace

class GoldenRepairTest : public ProgramTest, public ::testing::WithParamInterface<Fixture> {
  protected:
    [[nodiscard]] std::string fixtureBytes(const std::string& name) const {
        return readBytes(material.fixture(name));
    }
};

TEST_P(GoldenRepairTest, endsAsItsReportSays) {
    const std::string name = GetParam().file;
    const Outcome outcome = GetParam().outcome;
    const std::string file = files.write(name, fixtureBytes(name));
    const std::string extension = fs::path(file).extension().string();
    const std::string copy =
        files.path(stemOf(name)) + (extension == ".fcpxml" ? "-backup.fcpxml" : "-backup.xml");
    const FileState before = fileState(file);

    const ProgramResult result = files.repair({file});

    std::string report = fixtureBytes(stemOf(name) + ".report");
    report = replacing(replacing(report, "{file}", file), "{copy}", copy);
    EXPECT_EQ(result.output, report);
    EXPECT_EQ(result.errors, outcome == Outcome::stopped
                                 ? "vornic-repair: The repair of the file " + file +
                                       " was stopped by an error that the log describes.\n"
                                 : "");
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
    EXPECT_EQ(exists(copy), outcome == Outcome::stopped);
}

INSTANTIATE_TEST_SUITE_P(Fixtures, GoldenRepairTest, ::testing::ValuesIn(kFixtures), testName);

TEST(GoldenFixturesTest, everyFixtureIsTested) {
    std::set<std::string> expected;
    for (const Fixture& fixture : kFixtures) {
        expected.insert(fixture.file);
        expected.insert(stemOf(fixture.file) + ".report");
        if (fixture.outcome == Outcome::repaired) {
            expected.insert(repairedName(fixture.file));
        }
    }
    const std::vector<std::string> names = namesIn(VORNIC_FIXTURES);
    EXPECT_THAT(std::set<std::string>(names.begin(), names.end()),
                ::testing::ContainerEq(expected));
}

}  // namespace vornic::test
