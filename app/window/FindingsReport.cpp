#include "app/window/FindingsReport.h"

#include <array>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string_view>
#include <utility>

#include "app/window/HeaderText.h"
#include "base/FormatString.h"
#include "base/HTMLText.h"
#include "base/TerminalText.h"
#include "platform/files/Digest.h"
#include "platform/files/FileSystem.h"
#include "report/JSONReportWriter.h"
#include "report/JSONText.h"
#include "report/RuleTable.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

namespace vornic {

namespace {

constexpr std::string_view kProgram = "Vornic";

std::string localDate() {
    const std::time_t now = std::time(nullptr);
    struct tm parts {};
    std::array<char, 32> text{};
    localtime_r(&now, &parts);
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts)};
}

std::string digestOf(const InspectedFile& file) {
    ErrorSlot ignored;
    const std::optional<std::string> bytes = platform::readFile(file.path, ignored);
    std::optional<platform::Digest> digest = platform::Digest::create(platform::DigestKind::sha256);
    if (!bytes || !digest || platform::ContentDigest::of(*bytes) != file.digest) {
        return "";
    }
    digest->update(bytes->data(), bytes->size());
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    for (const char byte : digest->value().value_or("")) {
        const auto value = static_cast<unsigned char>(byte);
        text += kDigits[value >> 4U];
        text += kDigits[value & 0xFU];
    }
    return text;
}

// Pairs of a name and what it tells, in the order of a report's head.
using Facts = std::vector<std::pair<std::string, std::string>>;

Facts factsOf(const FindingsTable& table, const FindingsReportHead& head) {
    const Inspection& inspection = table.inspection();
    const Findings& findings = inspection.file.report.findings;
    Facts facts{{"File", inspection.file.path}};
    if (!head.digest.empty()) {
        facts.emplace_back("SHA-256", head.digest);
    }
    if (inspection.original) {
        facts.emplace_back("Original", inspection.original->path);
        if (!head.originalDigest.empty()) {
            facts.emplace_back("SHA-256 of the original", head.originalDigest);
        }
    }
    facts.emplace_back("Checked", head.date);
    facts.emplace_back("Program", std::string(kProgram) + " " + head.version);
    facts.emplace_back("The file now",
                       counted(findings.count(Severity::error), "error", "errors") + ", " +
                           counted(findings.count(Severity::warning), "warning", "warnings") +
                           ", " + counted(findings.count(Severity::info), "note", "notes"));
    return facts;
}

// Rules of which more was found than is listed.
std::string remainders(const Report& report, std::string_view what) {
    std::string lines;
    for (std::size_t index = 0; index < kRuleCount; ++index) {
        const RuleId rule{static_cast<std::uint16_t>(index)};
        const std::uint64_t count = report.findings.count(rule);
        if (count > kMostListedOfARule) {
            lines += formatString("%@ more of %@ in %@\n",
                                  withThousands(count - kMostListedOfARule), ruleOf(rule).id, what);
        }
    }
    return lines;
}

std::string allRemainders(const FindingsTable& table) {
    const Inspection& inspection = table.inspection();
    return remainders(inspection.file.report, "the file") +
           (inspection.original ? remainders(inspection.original->report, "the original") : "");
}

std::string remaindersInHTML(const FindingsTable& table) {
    std::string html;
    for (const char byte : allRemainders(table)) {
        byte == '\n' ? html += "<br>\n" : html += byte;
    }
    return html;
}

std::string fileAsJSON(const InspectedFile& file, const std::string& digest) {
    JSONText head;
    head.beginObject().member("path", file.path).member("sha256", digest).endObject();
    std::string json = head.take();
    json.pop_back();
    json += ",\"report\":";
    JSONReportWriter writer([&json](std::string_view part) { json += part; }, kProgram,
                            VORNIC_VERSION);
    writer.file(file.report);
    writer.end();
    while (json.ends_with('\n')) {
        json.pop_back();
    }
    return json + "}";
}

}  // namespace

FindingsReportHead reportHeadFor(const FindingsTable& table, std::string version) {
    const Inspection& inspection = table.inspection();
    return {.version = std::move(version),
            .date = localDate(),
            .digest = digestOf(inspection.file),
            .originalDigest = inspection.original ? digestOf(*inspection.original) : ""};
}

std::string findingsAsText(const FindingsTable& table, const FindingsReportHead& head) {
    std::string text;
    for (const auto& [name, value] : factsOf(table, head)) {
        text += name + ": " + escapedForTerminal(value) + "\n";
    }
    for (const ListedFinding& listed : table.findings()) {
        const Finding& finding = *listed.finding;
        text += "\n" + std::string(nameOf(finding.severity)) + " (" +
                std::string(ruleOf(finding.rule).id) + "), " + std::string(nameOf(listed.state)) +
                ": " + escapedForTerminal(finding.message()) + "\n    " +
                escapedForTerminal(table.placeOf(listed)) + "\n";
        const std::string after = table.after(listed);
        if (const std::string before = table.before(listed); !before.empty()) {
            text += "    " + std::string(after.empty() ? "  " : "- ") + escapedForTerminal(before) +
                    "\n";
        }
        if (!after.empty()) {
            text += "    + " + escapedForTerminal(after) + "\n";
        }
    }
    const std::string more = allRemainders(table);
    return more.empty() ? text : text + "\n" + more;
}

std::string findingsAsHTML(const FindingsTable& table, const FindingsReportHead& head) {
    std::string html =
        "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>Findings</title>\n"
        "<style>body{font-family:sans-serif}table{border-collapse:collapse}"
        "td,th{border:1px solid #888;padding:4px;text-align:left;vertical-align:top}"
        "code{font-family:monospace}</style></head>\n<body>\n<h1>Findings</h1>\n<p>";
    for (const auto& [name, value] : factsOf(table, head)) {
        html += "<b>" + name + ":</b> " + escapedForHTML(value) + "<br>\n";
    }
    html +=
        "</p>\n<table><tr><th>Severity</th><th>State</th><th>What</th><th>Where</th>"
        "<th>Before</th><th>After</th></tr>\n";
    for (const ListedFinding& listed : table.findings()) {
        const Finding& finding = *listed.finding;
        html += "<tr><td>" + std::string(nameOf(finding.severity)) + "</td><td>" +
                std::string(nameOf(listed.state)) + "</td><td>" +
                escapedForHTML(finding.message()) + "<br><small>" +
                std::string(ruleOf(finding.rule).id) + "</small></td><td>" +
                escapedForHTML(table.placeOf(listed)) + "</td><td><code>" +
                escapedForHTML(table.before(listed)) + "</code></td><td><code>" +
                escapedForHTML(table.after(listed)) + "</code></td></tr>\n";
    }
    return html + "</table>\n<p>" + remaindersInHTML(table) + "</p>\n</body></html>\n";
}

std::string findingsAsJSON(const FindingsTable& table, const FindingsReportHead& head) {
    const Inspection& inspection = table.inspection();
    JSONText facts;
    facts.beginObject().member("program", kProgram).member("version", head.version);
    facts.member("date", head.date).endObject();
    std::string json = facts.take();
    json.pop_back();
    json += ",\"file\":" + fileAsJSON(inspection.file, head.digest);
    if (inspection.original) {
        json += ",\"original\":" + fileAsJSON(*inspection.original, head.originalDigest);
    }
    return json + "}\n";
}

}  // namespace vornic
