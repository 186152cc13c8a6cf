#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "convert/ProjectConversion.h"
#include "report/RuleTable.h"

namespace vornic::test {

namespace {

using Strings = std::vector<std::string>;

// A text that is long enough for a thread of its own.
std::string repeated(const std::string& part, const std::string& before, const std::string& after) {
    constexpr std::size_t kLength = 3U << 20U;
    std::string text = before;
    while (text.size() < kLength) {
        text += part;
    }
    return text + after;
}

// With mends of the markup, faults of the structure and losses, also at one place.
std::string faultyProject() {
    return repeated(
        "<asset-clip ref=\"r9\" duration=\"1s\" wrong=\"1\"><conform-rate "
        "srcFrameRate=\"90\"/><hidden-clip-marker/><hidden-clip-marker x=\"1\"/>"
        "<note>a & b</note></asset-clip>\n",
        "<fcpxml version=\"1.13\">\n<resources>\n<format id=\"r1\" heroEye=\"left\"/>\n"
        "<format id=\"r1\"/>\n</resources>\n<project>\n<sequence format=\"r1\">\n<spine>\n",
        "</spine>\n</sequence>\n</project>\n</fcpxml>\n");
}

Strings told(const ProjectConversion& conversion) {
    Strings lines;
    for (const Finding& finding : conversion.report.findings.kept()) {
        lines.push_back(std::string(ruleOf(finding.rule).id) + " " +
                        std::to_string(finding.where.line) + "," +
                        std::to_string(finding.where.column) + ": " + finding.message());
    }
    return lines;
}

std::string resultOf(const ProjectConversion& conversion) {
    std::string bytes;
    EXPECT_TRUE(conversion.write([&bytes](std::string_view piece) {
        bytes += piece;
        return true;
    }));
    return bytes;
}

}  // namespace

TEST(ProjectConversion, saysTheSameOnTwoThreads) {
    for (const std::size_t limit : {std::size_t{100}, Findings::kNoLimit}) {
        const ConversionRequest alone{.to = "1.12", .assumed = {}, .mostOfARule = limit};
        ConversionRequest beside = alone;
        beside.usesThreads = true;
        const auto one = ProjectConversion::of(faultyProject(), alone);
        const auto two = ProjectConversion::of(faultyProject(), beside);
        EXPECT_NE(one.losses, 0U);
        EXPECT_EQ(one.losses, two.losses);
        EXPECT_EQ(told(one), told(two));
        EXPECT_EQ(resultOf(one), resultOf(two));
        EXPECT_EQ(one.report.valid, false);
        EXPECT_EQ(one.report.valid, two.report.valid);
        for (const Severity severity : {Severity::error, Severity::warning}) {
            EXPECT_NE(one.report.findings.count(severity), 0U);
            EXPECT_EQ(one.report.findings.count(severity), two.report.findings.count(severity));
        }
    }
}

TEST(ProjectConversion, canBeMovedAndWrittenBeforeItsReportIsComplete) {
    const ConversionRequest request{.to = "1.12", .usesThreads = true};
    const auto whole = ProjectConversion::of(faultyProject(), request);
    ProjectConversion moved = ProjectConversion::begin(faultyProject(), request);
    ProjectConversion begun = std::move(moved);
    EXPECT_EQ(begun.losses, whole.losses);
    EXPECT_EQ(resultOf(begun), resultOf(whole));
    EXPECT_LT(begun.report.findings.kept().size(), whole.report.findings.kept().size());
    begun.finish();
    EXPECT_EQ(told(begun), told(whole));
    EXPECT_EQ(begun.report.valid, whole.report.valid);
}

// What is wrong with the structure is told when nothing can be converted, too.
TEST(ProjectConversion, saysWhatIsWrongWhereItEndsEarly) {
    const std::string cut = faultyProject().substr(0, 2U << 20U);
    const auto one = ProjectConversion::of(cut, {.to = "1.12"});
    const auto two = ProjectConversion::of(cut, {.to = "1.12", .usesThreads = true});
    EXPECT_NE(one.refusal, "");
    EXPECT_EQ(one.refusal, two.refusal);
    EXPECT_EQ(one.report.valid, false);
    EXPECT_EQ(two.report.valid, false);
    EXPECT_GT(two.report.findings.count("structure-unknown-attribute"_rule), 0U);
    EXPECT_EQ(told(one), told(two));
}

TEST(ProjectConversion, holdsASoundFileToBeValidOnTwoThreads) {
    const std::string text =
        repeated("<asset-clip ref=\"a\" duration=\"1s\"/>\n",
                 "<fcpxml version=\"1.13\">\n<resources>\n<format id=\"r1\"/>\n<asset id=\"a\">"
                 "<media-rep src=\"file:///a.mov\"/></asset>\n</resources>\n<project>\n"
                 "<sequence format=\"r1\">\n<spine>\n",
                 "</spine>\n</sequence>\n</project>\n</fcpxml>\n");
    const auto conversion = ProjectConversion::of(text, {.to = "1.9", .usesThreads = true});
    EXPECT_EQ(conversion.report.valid, true);
    EXPECT_EQ(told(conversion), Strings());
    EXPECT_EQ(conversion.report.definition, "fcpxml 1.13");
}

}  // namespace vornic::test
