#include <string>

#include <gtest/gtest.h>

#include "report/TextReportWriter.h"

namespace vornic {
namespace {

Report reportOn(const std::string& path, std::size_t limit = Findings::kNoLimit) {
    Report report;
    report.path = path;
    report.findings = Findings(limit);
    return report;
}

Finding& addTo(Report& report, RuleId rule, std::size_t line, std::size_t column) {
    Finding* const finding = report.findings.add(rule, {line, 1}, {{"name", "clip"}});
    finding->where.line = line;
    finding->where.column = column;
    return *finding;
}

std::string textOf(std::initializer_list<const Report*> reports,
                   TextReportWriter::Style style = {}) {
    std::string text;
    TextReportWriter writer([&text](std::string_view piece) { text += piece; }, style);
    for (const Report* report : reports) {
        writer.file(*report);
    }
    writer.end();
    return text;
}

TEST(TextReportWriter, saysThatThereIsNothingToSay) {
    const Report report = reportOn("Cut.xml");
    EXPECT_EQ(textOf({&report}), "0 errors, 0 warnings, 0 notes in 1 file\n");
}

TEST(TextReportWriter, givesALineToEachFindingAndOneToItsPlace) {
    Report report = reportOn("Cut.xml");
    Place& where = addTo(report, "xml-unclosed-tag"_rule, 17, 9).where;
    where.path = "/xmeml[1]/clip[2]";
    where.name = "Harbour";
    where.timecode = "01:00:04:12";
    addTo(report, "xml-missing-space"_rule, 20, 1);
    EXPECT_EQ(textOf({&report}),
              "ERROR(xml-unclosed-tag): Cut.xml(17,9): the tag <clip> is never closed; > should "
              "end it\n"
              "    /xmeml[1]/clip[2]  Harbour  01:00:04:12\n"
              "ERROR(xml-missing-space): Cut.xml(20,1): two attributes stand without white space "
              "between them; a blank should part them\n"
              "2 errors, 0 warnings, 0 notes in 1 file\n");
}

TEST(TextReportWriter, namesNoPlaceForTheFileAsAWhole) {
    Report report = reportOn("Cut.xml");
    addTo(report, "xml-missing-space"_rule, 0, 0);
    EXPECT_TRUE(textOf({&report}).starts_with("ERROR(xml-missing-space): Cut.xml: two "));
}

TEST(TextReportWriter, sumsTheFilesUp) {
    Report first = reportOn("a.xml");
    addTo(first, "xml-missing-space"_rule, 1, 1);
    Report second = reportOn("b.xml");
    second.findings.add("xml-missing-space"_rule, Severity::warning, {0, 1});
    EXPECT_TRUE(textOf({&first, &second}).ends_with("\n1 error, 1 warning, 0 notes in 2 files\n"));
}

TEST(TextReportWriter, hidesWhatWeighsLessAndCountsIt) {
    Report report = reportOn("a.xml", 1);
    report.findings.add("xml-missing-space"_rule, Severity::info, {0, 1});
    report.findings.add("xml-missing-space"_rule, Severity::info, {1, 1});
    EXPECT_EQ(textOf({&report}), "0 errors, 0 warnings, 2 notes in 1 file\n");
}

TEST(TextReportWriter, reportsMendsAndWhyOthersWereNotMade) {
    Report report = reportOn("a.xml");
    Finding finding = addTo(report, "xml-missing-space"_rule, 4, 7);
    finding.mend = Mend{Confidence::safe, "write a blank", {{3, 0, " "}}};
    report.mends.emplace();
    report.mends->push_back({finding, true, ""});
    report.mends->push_back({finding, false, "it is made only with --fix=xml-missing-space"});
    report.mends->push_back({finding, false, "it is made only with --fix=xml-missing-space"});
    finding.mend.reset();
    report.mends->push_back({finding, false, "no mend is known"});
    report.findings = Findings();
    EXPECT_EQ(textOf({&report}),
              "MENDED(xml-missing-space): a.xml(4,7): write a blank\n"
              "    2 of xml-missing-space not mended: it is made only with "
              "--fix=xml-missing-space\n"
              "0 errors, 0 warnings, 0 notes in 1 file, 1 mended\n");
}

TEST(TextReportWriter, saysHowManyMoreThereAreOfARule) {
    Report report = reportOn("a.xml", 1);
    for (std::size_t offset = 0; offset < 6'000'000; ++offset) {
        report.findings.add("xml-missing-space"_rule, {offset, 1});
    }
    EXPECT_TRUE(
        textOf({&report}).ends_with("\n    5999999 more of xml-missing-space in a.xml\n"
                                    "6000000 errors, 0 warnings, 0 notes in 1 file\n"));
}

TEST(TextReportWriter, reportsWhichGroupsDidNotRunAndWhy) {
    Report report = reportOn("a.xml");
    report.groups = {{RuleGroup::xml, true, ""},
                     {RuleGroup::structure, false, "no definition of this version is known"},
                     {RuleGroup::timing, false, "the file is too deep"},
                     {RuleGroup::versions, false, "no definition of this version is known"},
                     {RuleGroup::media, false, "not asked for"}};
    EXPECT_EQ(textOf({&report}),
              "    structure, versions did not run on a.xml: no definition of this version is "
              "known\n"
              "    timing did not run on a.xml: the file is too deep\n"
              "0 errors, 0 warnings, 0 notes in 1 file\n");
}

TEST(TextReportWriter, escapesWhatComesFromFilesAndPaths) {
    Report report = reportOn("a\x1B[2J.xml");
    Finding* const finding =
        report.findings.add("xml-unclosed-tag"_rule, {0, 1}, {{"name", "c\xE2\x80\xAE"}});
    finding->where.name = "x\ny";
    EXPECT_EQ(textOf({&report}),
              "ERROR(xml-unclosed-tag): a<U+001B>[2J.xml: the tag <c<U+202E>> is never closed; > "
              "should end it\n    x<U+000A>y\n1 error, 0 warnings, 0 notes in 1 file\n");
}

TEST(TextReportWriter, coloursTheHeadOfALineWhenAsked) {
    Report report = reportOn("a.xml");
    addTo(report, "xml-missing-space"_rule, 1, 1);
    EXPECT_TRUE(textOf({&report}, {.isColoured = true, .least = Severity::warning})
                    .starts_with("\x1B[1;31mERROR(xml-missing-space)\x1B[0m: a.xml(1,1): "));
}

}  // namespace
}  // namespace vornic
