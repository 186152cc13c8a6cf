#include "report/TextReportWriter.h"

#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include "base/FormatString.h"
#include "base/TerminalText.h"
#include "report/LeftOut.h"
#include "report/RuleTable.h"

namespace vornic {

namespace {

constexpr std::string_view kPlain = "\x1B[0m";
constexpr std::string_view kMendedColour = "\x1B[1;32m";

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

// What a copy is called: by its path where there are several.
std::string copyOf(const Report& report, const Finding& finding) {
    if (!report.copies || report.copies->size() < 2 || finding.copyIndex >= report.copies->size()) {
        return "the copy";
    }
    return escapedForTerminal((*report.copies)[finding.copyIndex]);
}

}  // namespace

std::string TextReportWriter::coloured(std::string_view colour, std::string text) const {
    return style_.isColoured ? std::string(colour).append(text).append(kPlain) : text;
}

void TextReportWriter::finding(const Report& report, const Finding& finding) {
    const std::string heading =
        formatString("%@(%@)", capitalNameOf(finding.severity), ruleOf(finding.rule).id);
    std::string lines = coloured(colourOf(finding.severity), heading) + ": " +
                        placeOf(report, finding.where) + ": " +
                        escapedForTerminal(finding.message()) + "\n";
    const Place& where = finding.where;
    std::string below;
    for (const std::string* part : {&where.path, &where.name, &where.timecode}) {
        if (!part->empty()) {
            below += (below.empty() ? "    " : "  ") + escapedForTerminal(*part);
        }
    }
    if (finding.inCopy) {
        below += (below.empty() ? "    " : "  ") +
                 formatString("in %@: %zu,%zu", copyOf(report, finding), finding.inCopy->line,
                              finding.inCopy->column);
    }
    if (!below.empty()) {
        lines += below + "\n";
    }
    sink_(lines);
}

void TextReportWriter::remainders(const Report& report) {
    for (const Remainder& remainder : remaindersOf(report, style_.least)) {
        sink_(formatString("    %llu more of %@ in %@\n", remainder.count,
                           ruleOf(remainder.rule).id, escapedForTerminal(report.path)));
    }
}

void TextReportWriter::mends(const Report& report) {
    for (const MendRecord& record : *report.mends) {
        if (record.isMade) {
            ++*mended_;
            const std::string heading = formatString("MENDED(%@)", ruleOf(record.finding.rule).id);
            sink_(coloured(kMendedColour, heading) + ": " + placeOf(report, record.finding.where) +
                  ": " + escapedForTerminal(record.finding.mend->description) + "\n");
        }
    }
}

// A line for each rule and reason. That there is no mend at all is not worth one.
void TextReportWriter::whatWasNotMended(const Report& report) {
    std::map<std::pair<RuleId, std::string_view>, std::uint64_t> reasons;
    for (const MendRecord& record : *report.mends) {
        if (!record.isMade && record.finding.mend) {
            ++reasons[{record.finding.rule, record.why}];
        }
    }
    for (const auto& [reason, count] : reasons) {
        sink_(formatString("    %llu of %@ not mended: %@\n", count, ruleOf(reason.first).id,
                           reason.second));
    }
}

void TextReportWriter::notRun(const Report& report) {
    for (const SkippedGroups& groups : skippedGroupsOf(report)) {
        sink_(formatString("    %@ did not run on %@: %@\n", groups.names,
                           escapedForTerminal(report.path), groups.why));
    }
}

void TextReportWriter::file(const Report& report) {
    if (report.mends) {
        mended_ = mended_.value_or(0);
        mends(report);
    }
    for (const Finding& finding : report.findings.kept()) {
        if (finding.severity >= style_.least) {
            this->finding(report, finding);
        }
    }
    remainders(report);
    if (report.mends) {
        whatWasNotMended(report);
    }
    notRun(report);
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
          (mended_ ? formatString(", %llu mended", *mended_) : "") + "\n");
}

}  // namespace vornic
