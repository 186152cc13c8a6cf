// What vornic-check --fix says of a file whose mends it takes back.

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/cli/FileMending.h"
#include "report/RuleTable.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic {

namespace {

constexpr std::string_view kDamaged =
    "<xmeml version=\"5\"><bin><name>a & b</name><children/></bin></xmeml>";

class FileMendingTest : public test::SandboxTest {
  protected:
    // With a rule besides whose mend brings what another rule reports.
    FixedFile fix(const FixSettings& settings) {
        CheckOptions options;
        options.media = [](const ElementIndex& index, bool, Findings& findings) {
            const ElementNumber bin = index.childOf(0, "bin");
            if (index.childOf(bin, "file") != kNoElement) {
                return;
            }
            const std::size_t at = index.spanOf(bin).end() - std::string_view("</bin>").size();
            Finding* const finding = findings.add("media-folder"_rule, {at, 0});
            finding->mend = Mend{Confidence::safe, "add a file", {{at, 0, "<file id=\"none\"/>"}}};
        };
        return fixFile(path, options, settings);
    }

    std::string path = sandbox.write("Cut.xml", kDamaged);
};

TEST_F(FileMendingTest, takesAllMendsBackWhenOneBringsAFinding) {
    const test::FileState before = test::fileState(path);
    FixSettings toCopy;
    toCopy.output = sandbox.path("Copy.xml");
    FixSettings dryRun;
    dryRun.isDryRun = true;
    for (const FixSettings& settings : {FixSettings(), toCopy, dryRun}) {
        const FixedFile fixed = fix(settings);
        EXPECT_EQ(fixed.refusal, "The file " + path +
                                     " was not mended: the mends would leave or bring what the "
                                     "rule references-file-undefined tells.");
        EXPECT_EQ(fixed.report.findings.count("xml-stray-ampersand"_rule), 1U);
        EXPECT_EQ(fixed.report.findings.count("references-file-undefined"_rule), 0U);
        ASSERT_TRUE(fixed.report.mends);
        EXPECT_GE(fixed.report.mends->size(), 2U);
        for (const MendRecord& record : *fixed.report.mends) {
            EXPECT_FALSE(record.isMade);
            EXPECT_NE(record.why, "");
        }
        EXPECT_EQ(fixed.difference, "");
        EXPECT_EQ(test::fileState(path), before);
        EXPECT_THAT(test::namesIn(sandbox.folder()), ::testing::ElementsAre("Cut.xml"));
    }
}

}  // namespace

}  // namespace vornic
