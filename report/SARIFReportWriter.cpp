#include "report/SARIFReportWriter.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "base/FormatString.h"
#include "base/PercentEncoding.h"
#include "report/LeftOut.h"
#include "report/RuleTable.h"

namespace vornic {

namespace {

constexpr std::string_view kSchema =
    "https://docs.oasis-open.org/sarif/sarif/v2.1.0/errata01/os/schemas/sarif-schema-2.1.0.json";

bool isDescribed(const Rule& rule) {
    return isOfACheck(rule.group);
}

// The place of a rule among those that are described.
std::size_t indexOf(RuleId id) {
    return static_cast<std::size_t>(
        std::count_if(kRuleTable.begin(), kRuleTable.begin() + id.index, isDescribed));
}

std::string_view levelOf(Severity severity) {
    return severity == Severity::info ? "note" : nameOf(severity);
}

// Braces are placeholders in a message and are doubled when meant as such (section 3.11.5); a
// bracket that could begin a link has a backslash (section 3.11.6).
std::string messageText(std::string_view text) {
    const bool hasLink = text.find("](") != std::string_view::npos;
    std::string result;
    for (const char character : text) {
        if (character == '{' || character == '}') {
            result += character;
        } else if (hasLink && (character == '[' || character == ']')) {
            result += '\\';
        }
        result += character;
    }
    return result;
}

void writeText(JSONText& json, std::string_view name, std::string_view text) {
    json.key(name).beginObject().member("text", messageText(text)).endObject();
}

std::string base64(std::string_view bytes) {
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        std::uint32_t group = 0;
        for (std::size_t i = at; i < at + 3; ++i) {
            group = group << 8 | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U);
        }
        for (std::size_t digit = 0; digit < 4; ++digit) {
            const bool isFilled = at + digit <= bytes.size();
            text += isFilled ? kDigits[group >> (18 - 6 * digit) & 0x3FU] : '=';
        }
    }
    return text;
}

std::string_view firstSentence(std::string_view text) {
    const std::size_t end = text.find(". ");
    return end == std::string_view::npos ? text : text.substr(0, end + 1);
}

}  // namespace

SARIFReportWriter::SARIFReportWriter(ReportSink sink, std::string_view tool,
                                     std::string_view version, Severity least)
    : sink_(std::move(sink)), least_(least) {
    json_.beginObject().member("$schema", kSchema).member("version", "2.1.0");
    json_.key("runs").beginArray().beginObject().key("tool").beginObject();
    json_.key("driver").beginObject().member("name", tool).member("version", version);
    describeRules();
    json_.endObject().endObject().member("columnKind", "unicodeCodePoints");
    json_.key("results").beginArray();
}

void SARIFReportWriter::describeRules() {
    json_.key("rules").beginArray();
    for (const Rule& rule : kRuleTable) {
        if (!isDescribed(rule)) {
            continue;
        }
        json_.newLine().beginObject().member("id", rule.id);
        writeText(json_, "shortDescription", firstSentence(rule.meaning));
        writeText(json_, "fullDescription",
                  std::string(rule.meaning).append(" ").append(rule.effect));
        writeText(json_, "help",
                  std::string(rule.remedy).append(" (").append(rule.source).append(")"));
        json_.key("defaultConfiguration").beginObject();
        json_.member("level", levelOf(rule.severity)).endObject();
        json_.key("properties").beginObject().key("tags").beginArray();
        json_.value(nameOf(rule.group)).endArray().endObject().endObject();
    }
    json_.endArray();
}

void SARIFReportWriter::file(const Report& report) {
    for (const Finding& finding : report.findings.kept()) {
        if (finding.severity >= least_) {
            result(report, finding);
            pass();
        }
    }
    Artifact& artifact =
        artifacts_.emplace_back(Artifact{report.path, report.bytes, report.encoding, {}});
    for (const GroupRun& run : report.groups) {
        if (!run.ran) {
            artifact.notRun.push_back(run);
        }
    }
    for (const Remainder& remainder : remaindersOf(report, least_)) {
        notifications_.push_back({report.path, "note",
                                  formatString("Not shown: %llu more of %@.", remainder.count,
                                               ruleOf(remainder.rule).id),
                                  remainder.rule});
    }
    for (const SkippedGroups& groups : skippedGroupsOf(report)) {
        notifications_.push_back(
            {report.path, "note",
             formatString("The rules of %@ did not run: %@.", groups.names, groups.why),
             std::nullopt});
    }
}

void SARIFReportWriter::result(const Report& report, const Finding& finding) {
    json_.newLine().beginObject().member("ruleId", ruleOf(finding.rule).id);
    json_.member("ruleIndex", indexOf(finding.rule));
    json_.member("level", levelOf(finding.severity));
    writeText(json_, "message", finding.message());
    location(report, finding.where);
    // A fix holds bytes of the file, and edits are UTF-8.
    if (finding.mend && !finding.mend->edits.empty() && report.encoding == "UTF-8") {
        fix(report, *finding.mend);
    }
    json_.endObject();
}

void SARIFReportWriter::location(const Report& report, const Place& place) {
    json_.key("locations").beginArray().beginObject().key("physicalLocation").beginObject();
    artifactLocation(report.path);
    if (place.line != 0) {
        json_.key("region").beginObject().member("startLine", place.line);
        json_.member("startColumn", std::max<std::size_t>(place.column, 1));
        json_.member("byteOffset", place.offset).member("byteLength", place.length).endObject();
    }
    json_.endObject();
    if (!place.path.empty()) {
        json_.key("logicalLocations").beginArray().beginObject();
        if (!place.name.empty()) {
            json_.member("name", place.name);
        }
        json_.member("fullyQualifiedName", place.path).member("kind", "element");
        json_.endObject().endArray();
    }
    json_.endObject().endArray();
}

void SARIFReportWriter::fix(const Report& report, const Mend& mend) {
    json_.key("fixes").beginArray().beginObject();
    writeText(json_, "description", mend.description);
    json_.key("artifactChanges").beginArray().beginObject();
    artifactLocation(report.path);
    json_.key("replacements").beginArray();
    for (const Edit& edit : mend.edits) {
        json_.beginObject().key("deletedRegion").beginObject();
        json_.member("byteOffset", edit.offset).member("byteLength", edit.length).endObject();
        json_.key("insertedContent").beginObject().member("binary", base64(edit.text)).endObject();
        json_.endObject();
    }
    json_.endArray().endObject().endArray();
    json_.key("properties").beginObject();
    json_.member("confidence", nameOf(mend.confidence)).endObject().endObject().endArray();
}

void SARIFReportWriter::refused(std::string_view path, std::string_view reason) {
    notifications_.push_back({std::string(path), "error", std::string(reason), std::nullopt});
    isWhole_ = false;
}

void SARIFReportWriter::end() {
    json_.endArray().key("artifacts").beginArray();
    for (const Artifact& artifact : artifacts_) {
        describeArtifact(artifact);
    }
    json_.endArray().key("invocations").beginArray().beginObject();
    json_.member("executionSuccessful", isWhole_);
    json_.key("toolExecutionNotifications").beginArray();
    for (const Notification& notification : notifications_) {
        notify(notification);
    }
    json_.endArray().endObject().endArray().endObject().endArray().endObject();
    sink_(json_.take() + "\n");
}

void SARIFReportWriter::artifactLocation(std::string_view path, std::string_view name) {
    json_.key(name).beginObject();
    if (path == "-") {
        writeText(json_, "description", "standard input");
    } else {
        json_.member("uri", uriOf(path));
    }
    json_.endObject();
}

void SARIFReportWriter::describeArtifact(const Artifact& artifact) {
    json_.newLine().beginObject();
    artifactLocation(artifact.path, "location");
    json_.member("length", artifact.bytes).member("mimeType", "application/xml");
    if (!artifact.encoding.empty()) {
        json_.member("encoding", artifact.encoding);
    }
    json_.key("properties").beginObject().key("notRun").beginObject();
    for (const GroupRun& run : artifact.notRun) {
        json_.member(nameOf(run.group), run.why);
    }
    json_.endObject().endObject().endObject();
}

void SARIFReportWriter::notify(const Notification& notification) {
    json_.beginObject().member("level", notification.level);
    writeText(json_, "message", notification.text);
    if (notification.rule) {
        json_.key("associatedRule").beginObject().member("id", ruleOf(*notification.rule).id);
        json_.member("index", indexOf(*notification.rule)).endObject();
    }
    json_.key("locations").beginArray().beginObject().key("physicalLocation").beginObject();
    artifactLocation(notification.path);
    json_.endObject().endObject().endArray().endObject();
}

std::string SARIFReportWriter::uriOf(std::string_view path) {
    return (path.starts_with('/') ? "file://" : "") + platform::percentEncoded(path, "/");
}

}  // namespace vornic
