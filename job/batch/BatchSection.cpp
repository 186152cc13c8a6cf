#include "job/batch/BatchSection.h"

#include "base/FormatString.h"
#include "base/HTMLText.h"
#include "report/LeftOut.h"
#include "report/RuleTable.h"

namespace vornic {

namespace {

std::string paragraph(const std::string& text) {
    return text.empty() ? "" : "<p>" + escapedForHTML(text) + "</p>\n";
}

std::string listOf(const std::vector<std::string>& lines) {
    std::string html;
    for (const std::string& line : lines) {
        html += "<li>" + escapedForHTML(line) + "</li>\n";
    }
    return html.empty() ? "" : "<ul>\n" + html + "</ul>\n";
}

std::string cell(std::string_view text) {
    return "<td>" + escapedForHTML(text) + "</td>";
}

std::string whereOf(const Place& where) {
    std::string text =
        where.line == 0 ? "" : formatString("line %zu, column %zu", where.line, where.column);
    for (const std::string* part : {&where.path, &where.name, &where.timecode}) {
        if (!part->empty()) {
            text += (text.empty() ? "" : "  ") + *part;
        }
    }
    return text;
}

std::string lineAbout(const Finding& finding, std::string_view state) {
    return "<tr>" + cell(nameOf(finding.severity)) + cell(state) + "<td>" +
           escapedForHTML(finding.message()) + "<br/><small>" +
           escapedForHTML(ruleOf(finding.rule).id) + "</small></td>" +
           cell(whereOf(finding.where)) + "</tr>\n";
}

std::string findingsOf(const Report& report) {
    std::string lines;
    for (const Finding& finding : report.findings.kept()) {
        lines += lineAbout(finding, "");
    }
    if (report.mends) {
        for (const MendRecord& record : *report.mends) {
            if (record.isMade) {
                lines += lineAbout(record.finding, "mended");
            }
        }
    }
    std::string html;
    if (!lines.empty()) {
        html = "<table><tr><th>Severity</th><th>State</th><th>What</th><th>Where</th></tr>\n" +
               lines + "</table>\n";
    }
    for (const Remainder& rest : remaindersOf(report, Severity::info)) {
        html += paragraph(formatString("%llu more of %@.", rest.count, ruleOf(rest.rule).id));
    }
    return html;
}

}  // namespace

std::string sectionAbout(const std::string& path, const BatchOutcome& outcome) {
    std::string html = paragraph(path) + paragraph(outcome.reason) + listOf(outcome.notes);
    if (!outcome.replaced.empty()) {
        html += paragraph("What stood there before is " + outcome.replaced);
    }
    if (!outcome.written.empty()) {
        html += paragraph("The new file is " + outcome.written);
    }
    if (outcome.report) {
        html += findingsOf(*outcome.report);
    }
    return html + listOf(outcome.lines);
}

std::string htmlHead(const std::string& title, const std::string& sentence) {
    return "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"/><title>" +
           escapedForHTML(title) +
           "</title>\n<style>body{font-family:sans-serif}table{border-collapse:collapse}"
           "td,th{border:1px solid #888;padding:4px;text-align:left;vertical-align:top}"
           "</style></head>\n<body>\n<h1>" +
           escapedForHTML(title) + "</h1>\n" + paragraph(sentence) +
           "<table><tr><th>File</th><th>Folder</th><th>Kind</th><th>Result</th>"
           "<th>Problems</th><th>Why</th></tr>\n";
}

std::string htmlRow(const BatchRow& row, std::size_t number, bool hasSection) {
    const std::string name = escapedForHTML(row.name);
    return "<tr><td>" +
           (hasSection ? formatString("<a href=\"#file-%zu\">%@</a>", number, name) : name) +
           "</td>" + cell(row.folder) + cell(nameOf(row.kind)) + cell(nameOf(row.result)) +
           cell(formatString("%llu", row.problems())) + cell(row.reason) + "</tr>\n";
}

std::string htmlMiddle() {
    return "</table>\n";
}

std::string htmlSection(const BatchRow& row, std::size_t number, const std::string& section) {
    return formatString("<div id=\"file-%zu\">\n<h2>%@</h2>\n", number, escapedForHTML(row.name)) +
           section + "</div>\n";
}

std::string htmlEnd() {
    return "</body></html>\n";
}

}  // namespace vornic
