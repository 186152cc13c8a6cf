#include "report/TextReportWriter.h"

#include <algorithm>
#include <string_view>

#include "foundation/FormatString.h"
#include "foundation/TerminalText.h"
#include "report/RuleTable.h"

namespace vornic {

namespace {

constexpr std::string_view kPlain = "\x1B[0m";

std::string_view capitalNameOf(Severity severity) {
    switch (severity) {
        case Severity::error:
            return "ERROR";
        case Severity::warning:
            return "WARNING";
        default:
            return "INFO";
    }
}

std::string_view colourOf(Severity severity) {
    switch (severity) {
        case Severity::error:
            return "\x1B[1;31m";
        case Severity::warning:
            return "\x1B[1;33m";
        default:
            return "\x1B[1;36m";
    }
}

std::string counted(std::uint64_t count, std::string_view one, std::string_view many) {
    return formatString("%llu %@", count, count == 1 ? one : many);
}

// "Cut.fcpxml(17,9)", without a place for the file as a whole.
std::string placeOf(const Report& report, const Place& place) {
    const std::string path = escapedForTerminal(report.path);
    return place.line == 0 ? path : formatString("%@(%zu,%zu)", path, place.line, place.column);
}

}  // namespace

std::string TextReportWriter::heading(const Finding& finding) const {
    const std::string plain =
        formatString("%@(%@)", capitalNameOf(finding.severity), ruleOf(finding.rule).id);
    if (!style_.isColoured) {
        return plain;
    }
    return std::string(colourOf(finding.severity)).append(plain).append(kPlain);
}

void TextReportWriter::finding(const Report& report, const Finding& finding) {
    std::string lines = heading(finding) + ": " + placeOf(report, finding.where) + ": " +
                        escapedForTerminal(finding.message()) + "\n";
    const Place& where = finding.where;
    std::string below;
    for (const std::string* part : {&where.path, &where.name, &where.timecode}) {
        if (!part->empty()) {
            below += (below.empty() ? "    " : "  ") + escapedForTerminal(*part);
        }
    }
    if (!below.empty()) {
        lines += below + "\n";
    }
    sink_(lines);
}

// A finding of a rule is kept or counted whatever its weight, so what is not shown is told by rule.
void TextReportWriter::remainders(const Report& report) {
    std::array<std::uint64_t, kRuleCount> kept{};
    std::array<bool, kRuleCount> isShown{};
    for (const Finding& finding : report.findings.kept()) {
        ++kept[finding.rule.index];
        isShown[finding.rule.index] |= finding.severity >= style_.least;
    }
    for (std::size_t index = 0; index < kRuleCount; ++index) {
        const RuleId rule{static_cast<std::uint16_t>(index)};
        const std::uint64_t more = report.findings.count(rule) - kept[index];
        const bool isHidden =
            !isShown[index] && (kept[index] != 0 || ruleOf(rule).severity < style_.least);
        if (more != 0 && !isHidden) {
            sink_(formatString("    %llu more of %@ in %@\n", more, ruleOf(rule).id,
                               escapedForTerminal(report.path)));
        }
    }
}

void TextReportWriter::file(const Report& report) {
    for (const Finding& finding : report.findings.kept()) {
        if (finding.severity >= style_.least) {
            this->finding(report, finding);
        }
    }
    remainders(report);
    for (const Severity severity : {Severity::info, Severity::warning, Severity::error}) {
        counts_[static_cast<std::size_t>(severity)] += report.findings.count(severity);
    }
    ++files_;
}

void TextReportWriter::end() {
    const auto of = [this](Severity severity) {
        return counts_[static_cast<std::size_t>(severity)];
    };
    sink_(counted(of(Severity::error), "error", "errors") + ", " +
          counted(of(Severity::warning), "warning", "warnings") + ", " +
          counted(of(Severity::info), "note", "notes") + " in " + counted(files_, "file", "files") +
          "\n");
}

}  // namespace vornic
