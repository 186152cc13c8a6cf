// Which rules have which mends, and that each of them takes its finding away and brings no other:
// in every file that breaks a rule.

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "job/MendedBytes.h"
#include "report/RuleTable.h"
#include "tests/support/texts/RuleFixtures.h"

namespace vornic {

namespace {

using test::RuleFixture;
using Rules = std::set<std::string_view>;

// Nothing is dropped and nothing guessed.
const Rules kSafe = {
    "characters-forbidden-reference",
    "characters-half-pair",
    "references-file-repeated",
    "structure-element-order",
    "structure-version-form",
    "structure-value-not-listed",
    "timing-malformed-time",
    "timing-number-with-fraction",
    "timing-timebase",
    "values-boolean-case",
    "values-mod-date",
    "values-pathurl-not-absolute",
    "values-pathurl-not-encoded",
    "values-pathurl-windows-path",
    "values-src-not-absolute",
    "values-src-not-encoded",
    "values-src-windows-path",
    "values-standalone",
    "values-word",
    "xml-attribute-without-value",
    "xml-cdata-end-in-text",
    "xml-declared-encoding",
    "xml-double-hyphen-in-comment",
    "xml-forbidden-character",
    "xml-less-than-in-value",
    "xml-malformed-declaration",
    "xml-misplaced-byte-order-mark",
    "xml-misplaced-declaration",
    "xml-missing-space",
    "xml-stray-ampersand",
    "xml-stray-less-than",
    "xml-undefined-entity",
    "xml-unquoted-value",
};

const Rules kAsking = {
    "characters-control",
    "characters-half-pair",
    "characters-long-reference",
    "references-clip-item-repeated",
    "references-dangling-link",
    "references-file-redefined",
    "references-link-numbers",
    "references-uid-clash",
    "structure-attribute-of-other-version",
    "structure-element-of-other-version",
    "structure-repeated-id",
    "timing-lane-in-spine",
    "timing-length",
    "timing-ntsc",
    "timing-off-frame-grid",
    "timing-out-beyond-media",
    "timing-sequence-duration",
    "timing-sequence-too-short",
    "timing-timebase-cut-off",
    "timing-timecode-frame",
    "values-audio-swapped",
    "values-boolean",
    "values-channels-swapped",
    "values-mod-date",
    "versions-not-declared",
    "xml-declared-encoding",
};

CheckOptions optionsOf(const RuleFixture& fixture) {
    CheckOptions options = fixture.options;
    const bool isXMEML = fixture.bytes.find("<xmeml") != std::string::npos;
    options.missingVersion = isXMEML ? "5" : "1.10";
    return options;
}

std::vector<const Finding*> mendableOf(const Report& report, const RuleFixture& fixture) {
    std::vector<const Finding*> findings;
    for (const Finding& finding : report.findings.kept()) {
        if (finding.mend && ruleOf(finding.rule).id == fixture.rule) {
            findings.push_back(&finding);
        }
    }
    return findings;
}

std::vector<std::uint64_t> countsOf(const Report& report) {
    std::vector<std::uint64_t> counts;
    for (std::size_t index = 0; index < kRuleCount; ++index) {
        counts.push_back(report.findings.count({static_cast<std::uint16_t>(index)}));
    }
    return counts;
}

class MendedFixturesTest : public ::testing::Test {
  protected:
    static std::vector<RuleFixture> broken() {
        std::vector<RuleFixture> fixtures = test::ruleFixtures();
        std::erase_if(fixtures, [](const RuleFixture& each) { return !each.breaks(); });
        return fixtures;
    }
};

TEST_F(MendedFixturesTest, haveSafeMendsAndThoseThatAskByTheirRules) {
    Rules safe;
    Rules asking;
    const std::vector<RuleFixture> fixtures = broken();
    for (const RuleFixture& fixture : fixtures) {
        const Report report = checkFile(fixture.bytes, optionsOf(fixture));
        for (const Finding* const finding : mendableOf(report, fixture)) {
            (finding->mend->confidence == Confidence::safe ? safe : asking)
                .insert(ruleOf(finding->rule).id);
        }
    }
    EXPECT_EQ(safe, kSafe);
    EXPECT_EQ(asking, kAsking);
}

TEST_F(MendedFixturesTest, areMendedWhereNothingHasToBeAsked) {
    for (const RuleFixture& fixture : broken()) {
        const std::string name = fixture.rule + "/" + fixture.name;
        MendRequest request;
        request.check = optionsOf(fixture);
        const Report report = checkFile(fixture.bytes, request.check);
        const MendedBytes mended = MendedBytes::of(fixture.bytes, request);
        EXPECT_EQ(mended.refusal, "") << name;
        for (const MendRecord& record : mended.records) {
            const bool isSafe =
                record.finding.mend && record.finding.mend->confidence == Confidence::safe;
            EXPECT_EQ(record.isMade, isSafe) << name;
            EXPECT_EQ(record.why.empty(), isSafe) << name;
            if (record.finding.mend && !isSafe) {
                EXPECT_TRUE(record.why.starts_with("it is made only with --fix=")) << name;
            }
        }
        EXPECT_EQ(applyEdits(fixture.bytes, mended.edits), mended.bytes) << name;
    }
}

TEST_F(MendedFixturesTest, loseTheirFindingAndGetNoOther) {
    for (const RuleFixture& fixture : broken()) {
        const std::string name = fixture.rule + "/" + fixture.name;
        MendRequest request;
        request.check = optionsOf(fixture);
        request.asked = {*findRule(fixture.rule)};
        const Report report = checkFile(fixture.bytes, request.check);
        const std::size_t mendable = mendableOf(report, fixture).size();
        const MendedBytes mended = MendedBytes::of(fixture.bytes, request);
        EXPECT_EQ(mended.refusal, "") << name;
        const std::vector<std::uint64_t> before = countsOf(report);
        const std::vector<std::uint64_t> after = countsOf(mended.report);
        const std::size_t own = request.asked.front().index;
        EXPECT_EQ(after[own] + mendable, before[own]) << name;
        for (std::size_t index = 0; index < kRuleCount; ++index) {
            EXPECT_LE(after[index], before[index])
                << name << " " << ruleOf({static_cast<std::uint16_t>(index)}).id;
        }
        EXPECT_TRUE(MendedBytes::of(mended.bytes, request).edits.empty()) << name;
    }
}

}  // namespace

}  // namespace vornic
