#include "report/JSONReportWriter.h"

#include <utility>

#include <nlohmann/json.hpp>

#include "foundation/Utf8.h"
#include "report/RuleTable.h"

namespace vornic {

namespace {

using JSON = nlohmann::ordered_json;

std::string written(const JSON& value) {
    return value.dump(-1, ' ', false, JSON::error_handler_t::replace);
}

std::string validText(std::string_view text) {
    std::string result;
    appendAsValidUtf8(result, text);
    return result;
}

JSON groupsOf(const Report& report) {
    JSON groups = JSON::array();
    for (const GroupRun& run : report.groups) {
        groups.push_back({{"id", nameOf(run.group)}, {"ran", run.ran}, {"why", run.why}});
    }
    return groups;
}

JSON countsOf(const Findings& findings) {
    JSON counts = JSON::object();
    for (const Severity severity : {Severity::error, Severity::warning, Severity::info}) {
        counts[std::string(nameOf(severity))] = findings.count(severity);
    }
    return counts;
}

// Rules of which nothing was found are left out.
JSON rulesOf(const Findings& findings) {
    JSON rules = JSON::object();
    for (std::size_t index = 0; index < kRuleCount; ++index) {
        const RuleId rule{static_cast<std::uint16_t>(index)};
        if (const std::uint64_t count = findings.count(rule); count != 0) {
            rules[std::string(ruleOf(rule).id)] = count;
        }
    }
    return rules;
}

JSON mendOf(const Mend& mend) {
    JSON edits = JSON::array();
    for (const Edit& edit : mend.edits) {
        edits.push_back(
            {{"offset", edit.offset}, {"length", edit.length}, {"text", validText(edit.text)}});
    }
    return {{"confidence", nameOf(mend.confidence)},
            {"description", validText(mend.description)},
            {"edits", std::move(edits)}};
}

JSON findingOf(const Finding& finding) {
    const Rule& rule = ruleOf(finding.rule);
    const Place& where = finding.where;
    JSON object = {{"rule", rule.id},
                   {"severity", nameOf(finding.severity)},
                   {"line", where.line},
                   {"column", where.column},
                   {"offset", where.offset},
                   {"length", where.length},
                   {"path", validText(where.path)},
                   {"name", validText(where.name)},
                   {"timecode", where.timecode},
                   {"message", validText(finding.message())},
                   {"help", rule.remedy}};
    if (finding.mend) {
        object["mend"] = mendOf(*finding.mend);
    }
    return object;
}

// What stands in front of a file's findings, without the closing brace.
std::string headOf(const Report& report) {
    JSON definition = {{"name", report.definition}, {"valid", nullptr}};
    if (report.valid) {
        definition["valid"] = *report.valid;
    }
    const JSON head = {{"path", validText(report.path)},
                       {"kind", report.kind},
                       {"version", validText(report.version)},
                       {"encoding", report.encoding},
                       {"bytes", report.bytes},
                       {"definition", std::move(definition)},
                       {"groups", groupsOf(report)},
                       {"counts", countsOf(report.findings)},
                       {"rules", rulesOf(report.findings)}};
    std::string text = written(head);
    text.pop_back();
    return text;
}

}  // namespace

JSONReportWriter::JSONReportWriter(ReportSink sink, std::string_view tool, std::string_view version,
                                   Severity least)
    : sink_(std::move(sink)), least_(least) {
    sink_("{\"report\":1,\"tool\":" + written({{"name", tool}, {"version", version}}) +
          ",\"files\":[");
}

void JSONReportWriter::file(const Report& report) {
    sink_((hasFiles_ ? ",\n" : "\n") + headOf(report) + ",\"findings\":[");
    hasFiles_ = true;
    const char* separator = "\n";
    for (const Finding& finding : report.findings.kept()) {
        if (finding.severity >= least_) {
            sink_(separator + written(findingOf(finding)));
            separator = ",\n";
        }
    }
    sink_("]}");
}

void JSONReportWriter::end() {
    sink_("\n]}\n");
}

}  // namespace vornic
