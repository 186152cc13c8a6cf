#include <algorithm>
#include <cstddef>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "report/JSONReportWriter.h"

namespace vornic {
namespace {

using JSON = nlohmann::ordered_json;

std::string textOf(std::initializer_list<const Report*> reports, Severity least = Severity::info) {
    std::string text;
    JSONReportWriter writer([&text](std::string_view piece) { text += piece; }, "vornic-check",
                            "0.1", least);
    for (const Report* report : reports) {
        writer.file(*report);
    }
    writer.end();
    return text;
}

Report sampleReport() {
    Report report;
    report.path = "/a/Cut.fcpxml";
    report.kind = "fcpxml";
    report.version = "1.10";
    report.encoding = "UTF-8";
    report.bytes = 123;
    report.definition = "fcpxml 1.10";
    report.valid = false;
    report.groups = {{RuleGroup::xml, true, ""}, {RuleGroup::media, false, "not asked for"}};
    return report;
}

TEST(JSONReportWriter, writesAReportOfNoFiles) {
    EXPECT_EQ(JSON::parse(textOf({})),
              JSON::parse(R"({"report":1,"tool":{"name":"vornic-check","version":"0.1"},
                              "files":[]})"));
}

TEST(JSONReportWriter, writesWhatIsKnownOfAFile) {
    const Report report = sampleReport();
    EXPECT_EQ(JSON::parse(textOf({&report}))["files"],
              JSON::parse(R"([{"path":"/a/Cut.fcpxml","kind":"fcpxml","version":"1.10",
                "encoding":"UTF-8","bytes":123,"definition":{"name":"fcpxml 1.10","valid":false},
                "groups":[{"id":"xml","ran":true,"why":""},
                          {"id":"media","ran":false,"why":"not asked for"}],
                "counts":{"error":0,"warning":0,"info":0},"rules":{},"findings":[]}])"));
}

TEST(JSONReportWriter, leavesOpenWhetherAFileIsValidWhereThatCannotBeSaid) {
    Report report = sampleReport();
    report.valid.reset();
    EXPECT_TRUE(JSON::parse(textOf({&report}))["files"][0]["definition"]["valid"].is_null());
}

TEST(JSONReportWriter, writesAFindingWithItsPlaceAndItsMend) {
    Report report = sampleReport();
    Finding* const finding =
        report.findings.add("xml-undefined-entity"_rule, {40, 1}, {{"name", "nbsp"}});
    finding->where = {41, 2, 3, 4, "/fcpxml[1]", "Cut", "01:00:00:00"};
    finding->mend = Mend{Confidence::safe, "write &amp; in its place", {{41, 1, "&amp;"}}};
    const JSON file = JSON::parse(textOf({&report}))["files"][0];
    EXPECT_EQ(file["counts"], JSON::parse(R"({"error":1,"warning":0,"info":0})"));
    EXPECT_EQ(file["rules"], JSON::parse(R"({"xml-undefined-entity":1})"));
    JSON expected = JSON::parse(R"([{"rule":"xml-undefined-entity","severity":"error","line":3,
        "column":4,"offset":41,"length":2,"path":"/fcpxml[1]","name":"Cut",
        "timecode":"01:00:00:00","message":"","help":"",
        "mend":{"confidence":"safe","description":"write &amp; in its place",
                "edits":[{"offset":41,"length":1,"text":"&amp;"}]}}])");
    expected[0]["message"] = finding->message();
    expected[0]["help"] = ruleOf("xml-undefined-entity"_rule).remedy;
    EXPECT_EQ(file["findings"], expected);
}

TEST(JSONReportWriter, escapesWhatJSONAsksForAndReplacesWhatIsNoText) {
    Report report = sampleReport();
    report.path = "a\"\\\n\x1B\xFF";
    report.findings.add("xml-unclosed-tag"_rule, {0, 1}, {{"name", "\xC3"}});
    const JSON file = JSON::parse(textOf({&report}))["files"][0];
    EXPECT_EQ(file["path"], "a\"\\\n\x1B\xEF\xBF\xBD");
    EXPECT_EQ(file["findings"][0]["message"],
              "the tag <\xEF\xBF\xBD> is never closed; > should end it");
}

TEST(JSONReportWriter, leavesOutFindingsOfLessWeightAndCountsThem) {
    Report report = sampleReport();
    report.findings.add("xml-unclosed-tag"_rule, Severity::info, {0, 1});
    const JSON file = JSON::parse(textOf({&report}, Severity::warning))["files"][0];
    EXPECT_TRUE(file["findings"].empty());
    EXPECT_EQ(file["counts"]["info"], 1);
    EXPECT_EQ(file["rules"]["xml-unclosed-tag"], 1);
}

TEST(JSONReportWriter, partsFilesAndFindings) {
    Report report = sampleReport();
    report.findings.add("xml-unclosed-tag"_rule, {0, 1});
    report.findings.add("xml-unclosed-tag"_rule, {1, 1});
    const JSON files = JSON::parse(textOf({&report, &report}))["files"];
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(files[1]["findings"].size(), 2U);
}

TEST(JSONReportWriter, writesAHugeReportInSmallPieces) {
    Report report = sampleReport();
    for (std::size_t offset = 0; offset < 20000; ++offset) {
        report.findings.add("xml-unclosed-tag"_rule, {offset, 1}, {{"name", "clip"}});
    }
    std::size_t longest = 0;
    JSONReportWriter writer(
        [&longest](std::string_view piece) { longest = std::max(longest, piece.size()); }, "t",
        "1");
    writer.file(report);
    writer.end();
    EXPECT_LT(longest, 2000U);
}

}  // namespace
}  // namespace vornic
