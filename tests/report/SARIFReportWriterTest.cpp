#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "report/SARIFReportWriter.h"
#include "tests/support/texts/JSONSchema.h"

namespace vornic {
namespace {

using JSON = nlohmann::json;

struct Refusal {
    std::string path;
    std::string reason;
};

// The parsed text, after it was held against the schema.
JSON written(const std::vector<const Report*>& reports, const std::vector<Refusal>& refusals = {},
             Severity least = Severity::info) {
    std::string text;
    SARIFReportWriter writer([&text](std::string_view piece) { text += piece; }, "vornic-check",
                             "0.1.0", least);
    for (const Report* report : reports) {
        writer.file(*report);
    }
    for (const Refusal& refusal : refusals) {
        writer.refused(refusal.path, refusal.reason);
    }
    writer.end();
    JSON log = JSON::parse(text);
    std::ifstream schema(VORNIC_SARIF_SCHEMA);
    EXPECT_EQ(test::schemaFaults(log, JSON::parse(schema)), std::vector<std::string>());
    return log["runs"][0];
}

Report sampleReport(const std::string& path = "Day 1/Cut.fcpxml") {
    Report report;
    report.path = path;
    report.kind = "fcpxml";
    report.encoding = "UTF-8";
    report.bytes = 123;
    report.groups = {{RuleGroup::xml, true, ""}, {RuleGroup::media, false, "not asked for"}};
    return report;
}

Finding& addTo(Report& report, Severity severity = Severity::error) {
    Finding* const finding =
        report.findings.add("xml-undefined-entity"_rule, severity, {40, 6}, {{"name", "nbsp"}});
    finding->where = {40, 6, 3, 4, "/fcpxml[1]", "Cut", ""};
    return *finding;
}

TEST(SARIFReportWriter, describesEveryRuleOfACheck) {
    const JSON rules = written({})["tool"]["driver"]["rules"];
    std::size_t index = 0;
    for (const Rule& rule : kRuleTable) {
        if (!isOfACheck(rule.group)) {
            continue;
        }
        ASSERT_LT(index, rules.size());
        EXPECT_EQ(rules[index]["id"], rule.id);
        for (const char* part : {"shortDescription", "fullDescription", "help"}) {
            EXPECT_GT(rules[index][part]["text"].get<std::string>().size(), 10U) << rule.id;
        }
        EXPECT_EQ(rules[index]["properties"]["tags"][0], nameOf(rule.group));
        ++index;
    }
    EXPECT_EQ(index, rules.size());
}

TEST(SARIFReportWriter, writesAFindingWithItsRuleAndItsPlace) {
    Report report = sampleReport();
    addTo(report);
    const JSON run = written({&report});
    const JSON& result = run["results"][0];
    EXPECT_EQ(result["ruleId"], "xml-undefined-entity");
    EXPECT_EQ(run["tool"]["driver"]["rules"][result["ruleIndex"].get<std::size_t>()]["id"],
              "xml-undefined-entity");
    EXPECT_EQ(result["level"], "error");
    EXPECT_EQ(result["message"]["text"], report.findings.kept()[0].message());
    EXPECT_EQ(result["locations"], JSON::parse(R"([{"physicalLocation":{
        "artifactLocation":{"uri":"Day%201/Cut.fcpxml"},
        "region":{"startLine":3,"startColumn":4,"byteOffset":40,"byteLength":6}},
        "logicalLocations":[{"name":"Cut","fullyQualifiedName":"/fcpxml[1]","kind":"element"}]}])"));
    EXPECT_EQ(run["columnKind"], "unicodeCodePoints");
}

TEST(SARIFReportWriter, callsInfosNotesAndLeavesOutWhatWeighsLess) {
    Report report = sampleReport();
    addTo(report, Severity::info);
    EXPECT_EQ(written({&report})["results"][0]["level"], "note");
    EXPECT_TRUE(written({&report}, {}, Severity::warning)["results"].empty());
}

TEST(SARIFReportWriter, givesNoRegionToAFindingAboutTheFileAsAWhole) {
    Report report = sampleReport();
    addTo(report).where = {};
    const JSON location = written({&report})["results"][0]["locations"][0];
    EXPECT_FALSE(location["physicalLocation"].contains("region"));
    EXPECT_FALSE(location.contains("logicalLocations"));
}

TEST(SARIFReportWriter, writesAMendAsTheBytesThatReplaceOthers) {
    Report report = sampleReport();
    addTo(report).mend =
        Mend{Confidence::safe, "write them", {{40, 1, "&amp;"}, {44, 0, "\""}, {45, 1, ""}}};
    const JSON fix = written({&report})["results"][0]["fixes"][0];
    EXPECT_EQ(fix["description"]["text"], "write them");
    EXPECT_EQ(fix["properties"]["confidence"], "safe");
    EXPECT_EQ(fix["artifactChanges"], JSON::parse(R"([{
        "artifactLocation":{"uri":"Day%201/Cut.fcpxml"},"replacements":[
        {"deletedRegion":{"byteOffset":40,"byteLength":1},"insertedContent":{"binary":"JmFtcDs="}},
        {"deletedRegion":{"byteOffset":44,"byteLength":0},"insertedContent":{"binary":"Ig=="}},
        {"deletedRegion":{"byteOffset":45,"byteLength":1},"insertedContent":{"binary":""}}]}])"));
}

TEST(SARIFReportWriter, offersNoBytesForAFileOfAnotherEncoding) {
    Report report = sampleReport();
    report.encoding = "UTF-16LE";
    addTo(report).mend = Mend{Confidence::safe, "write it", {{40, 1, "&amp;"}}};
    EXPECT_FALSE(written({&report})["results"][0].contains("fixes"));
}

TEST(SARIFReportWriter, reportsForFilesWhatWasNotLookedAtAndWhatCouldNotBeRead) {
    const Report report = sampleReport();
    JSON run = written({&report});
    EXPECT_EQ(run["artifacts"], JSON::parse(R"([{"location":{"uri":"Day%201/Cut.fcpxml"},
        "length":123,"mimeType":"application/xml","encoding":"UTF-8",
        "properties":{"notRun":{"media":"not asked for"}}}])"));
    EXPECT_EQ(run["invocations"][0]["executionSuccessful"], true);
    run = written({}, {{"a.xml", "It is gone."}});
    EXPECT_EQ(run["invocations"][0]["executionSuccessful"], false);
    const JSON notification = run["invocations"][0]["toolExecutionNotifications"][0];
    EXPECT_EQ(notification["message"]["text"], "It is gone.");
    EXPECT_EQ(notification["locations"][0]["physicalLocation"]["artifactLocation"]["uri"], "a.xml");
}

TEST(SARIFReportWriter, saysHowManyFindingsAreNotShownAndWhichGroupsAreMissed) {
    Report report = sampleReport();
    report.findings = Findings(1);
    addTo(report);
    report.findings.add("xml-undefined-entity"_rule, {50, 6}, {{"name", "nbsp"}});
    report.groups.push_back({RuleGroup::structure, false, "the file declares no version"});
    const JSON run = written({&report});
    EXPECT_EQ(run["results"].size(), 1U);
    EXPECT_EQ(run["invocations"][0]["executionSuccessful"], true);
    const JSON& notes = run["invocations"][0]["toolExecutionNotifications"];
    ASSERT_EQ(notes.size(), 2U);
    EXPECT_EQ(notes[0]["level"], "note");
    EXPECT_EQ(notes[0]["message"]["text"], "Not shown: 1 more of xml-undefined-entity.");
    EXPECT_EQ(notes[0]["associatedRule"]["id"], "xml-undefined-entity");
    EXPECT_EQ(notes[0]["associatedRule"]["index"], run["results"][0]["ruleIndex"]);
    EXPECT_EQ(notes[1]["message"]["text"],
              "The rules of structure did not run: the file declares no version.");
}

TEST(SARIFReportWriter, writesPathsAsURIs) {
    EXPECT_EQ(SARIFReportWriter::uriOf("/a b/c.xml"), "file:///a%20b/c.xml");
    EXPECT_EQ(SARIFReportWriter::uriOf("a:b/\xC3\xA9#?.xml"), "a%3Ab/%C3%A9%23%3F.xml");
    EXPECT_EQ(SARIFReportWriter::uriOf("../\xFF.xml"), "../%FF.xml");
    Report report = sampleReport("-");
    addTo(report);
    const JSON location = written({&report})["results"][0]["locations"][0]["physicalLocation"];
    EXPECT_EQ(location["artifactLocation"]["description"]["text"], "standard input");
}

TEST(SARIFReportWriter, doublesBracesAndKeepsTextFromBecomingALink) {
    Report report = sampleReport();
    report.findings.add("xml-unclosed-tag"_rule, {0, 1}, {{"name", "{0}[a](b)\xFF"}});
    EXPECT_EQ(written({&report})["results"][0]["message"]["text"],
              "the tag <{{0}}\\[a\\](b)\xEF\xBF\xBD> is never closed; > should end it");
}

}  // namespace
}  // namespace vornic
