// What the report writers make of real reports, held against the schemas.

#include <cstdint>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "report/JSONReportWriter.h"
#include "report/RuleTable.h"
#include "report/SARIFReportWriter.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/texts/JSONSchema.h"
#include "tests/support/texts/RuleFixtures.h"
#include "tests/support/texts/SampleFiles.h"

namespace vornic::test {

namespace {

using JSON = nlohmann::json;

JSON fileAt(const std::string& path) {
    std::ifstream stream(path);
    return JSON::parse(stream);
}

const JSON& reportSchema() {
    static const JSON schema = fileAt(VORNIC_SOURCE "/resources/schema/report-1.json");
    return schema;
}

const JSON& sarifSchema() {
    static const JSON schema = fileAt(VORNIC_SOURCE "/tests/report/sarif-2.1.0.json");
    return schema;
}

template <typename Writer>
JSON written(const Report& report) {
    std::string text;
    Writer writer([&text](std::string_view piece) { text += piece; }, "vornic-check", "0.1.0",
                  Severity::info);
    writer.file(report);
    writer.end();
    return JSON::parse(text);
}

// Offsets lie in the file, edits ascend and do not overlap: more than a schema can say.
void expectSoundPlaces(const JSON& file) {
    const auto bytes = file["bytes"].get<std::uint64_t>();
    for (const JSON& finding : file["findings"]) {
        EXPECT_LE(finding["offset"].get<std::uint64_t>() + finding["length"].get<std::uint64_t>(),
                  bytes);
        EXPECT_EQ(finding["line"] == 0, finding["column"] == 0);
        std::uint64_t end = 0;
        const JSON mend = finding.value("mend", JSON{{"edits", JSON::array()}});
        for (const JSON& edit : mend["edits"]) {
            EXPECT_GE(edit["offset"].get<std::uint64_t>(), end);
            end = edit["offset"].get<std::uint64_t>() + edit["length"].get<std::uint64_t>();
            EXPECT_LE(end, bytes);
        }
    }
}

void expectSoundCounts(const JSON& file) {
    std::uint64_t ofRules = 0;
    for (const auto& [rule, count] : file["rules"].items()) {
        ofRules += count.get<std::uint64_t>();
    }
    std::uint64_t ofWeights = 0;
    for (const auto& [weight, count] : file["counts"].items()) {
        ofWeights += count.get<std::uint64_t>();
    }
    EXPECT_EQ(ofRules, ofWeights);
    EXPECT_LE(file["findings"].size(), ofRules);
    for (std::size_t i = 0; i < kCheckedGroups.size(); ++i) {
        EXPECT_EQ(file["groups"][i]["id"], nameOf(kCheckedGroups[i]));
        EXPECT_EQ(file["groups"][i]["ran"], file["groups"][i]["why"] == "");
    }
}

void expectSoundReports(const std::string& path, std::string bytes, const CheckOptions& options) {
    SCOPED_TRACE(path);
    Report report = checkFile(std::move(bytes), options);
    report.path = path;
    const JSON json = written<JSONReportWriter>(report);
    EXPECT_EQ(schemaFaults(json, reportSchema()), std::vector<std::string>());
    expectSoundPlaces(json["files"][0]);
    expectSoundCounts(json["files"][0]);
}

void expectSoundSARIF(const RuleFixture& fixture) {
    SCOPED_TRACE(fixture.rule + "/" + fixture.name);
    Report report = checkFile(fixture.bytes, fixture.options);
    report.path = fixture.name;
    const JSON sarif = written<SARIFReportWriter>(report);
    EXPECT_EQ(schemaFaults(sarif, sarifSchema()), std::vector<std::string>());
    EXPECT_EQ(sarif["runs"][0]["results"].size(), report.findings.kept().size());
}

}  // namespace

TEST(ReportSchema, holdsForReportsOnFixtures) {
    for (const RuleFixture& fixture : ruleFixtures()) {
        expectSoundReports(fixture.rule + "/" + fixture.name, fixture.bytes, fixture.options);
        expectSoundSARIF(fixture);
    }
    expectSoundReports("empty.xml", "", {});
}

TEST(ReportSchema, holdsForReportsOnRealFiles) {
    const auto folder = samplesFolder();
    if (!folder) {
        GTEST_SKIP() << "VORNIC_SAMPLES is not set";
    }
    for (const std::string& path : filesBelow(*folder)) {
        if (path.ends_with("xml")) {
            expectSoundReports(path, readBytes(path), {});
        }
    }
}

TEST(JSONSchema, findsWhatIsWrong) {
    const JSON schema = JSON::parse(R"({"type":"object","required":["a"],
        "additionalProperties":false,"properties":{"a":{"type":"integer","minimum":1},
        "b":{"type":"array","maxItems":1,"items":{"enum":["x","y"]}},
        "c":{"$ref":"#/$defs/word"},"d":{"anyOf":[{"const":1},{"type":"null"}]}},
        "$defs":{"word":{"type":"string","minLength":2,"pattern":"^[a-z]"}}})");
    const auto faultsOf = [&](const char* text) {
        return schemaFaults(JSON::parse(text), schema).size();
    };
    EXPECT_EQ(faultsOf(R"({"a":1,"b":["x"],"c":"ab","d":null})"), 0U);
    EXPECT_EQ(faultsOf("[]"), 1U);
    EXPECT_EQ(faultsOf("{}"), 1U);
    EXPECT_EQ(faultsOf(R"({"a":0})"), 1U);
    EXPECT_EQ(faultsOf(R"({"a":1.5})"), 1U);
    EXPECT_EQ(faultsOf(R"({"a":1,"e":1})"), 1U);
    EXPECT_EQ(faultsOf(R"({"a":1,"b":["x","z"]})"), 2U);
    EXPECT_EQ(faultsOf(R"({"a":1,"c":"A"})"), 2U);
    EXPECT_EQ(faultsOf(R"({"a":1,"d":2})"), 1U);
    EXPECT_THROW((void)schemaFaults(JSON(1), JSON::parse(R"({"format":"uri"})")),
                 std::invalid_argument);
}

TEST(JSONSchema, ofAReportRefusesOneThatLacksAPart) {
    Report report = checkFile("<html>&</html>", {});
    report.path = "a.xml";
    const JSON sound = written<JSONReportWriter>(report);
    for (const auto& [name, content] : sound["files"][0].items()) {
        JSON lacking = sound;
        lacking["files"][0].erase(name);
        EXPECT_EQ(schemaFaults(lacking, reportSchema()).size(), 1U) << name;
    }
    JSON surplus = sound;
    surplus["files"][0]["findings"][1]["mend"]["confidence"] = "sure";
    EXPECT_EQ(schemaFaults(surplus, reportSchema()).size(), 1U);
}

}  // namespace vornic::test
