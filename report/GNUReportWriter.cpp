#include "report/GNUReportWriter.h"

#include <algorithm>

#include "base/FormatString.h"
#include "base/TerminalText.h"
#include "report/LeftOut.h"
#include "report/RuleTable.h"

namespace vornic {

void GNUReportWriter::file(const Report& report) {
    for (const MendRecord& record : report.mends.value_or(std::vector<MendRecord>())) {
        if (record.isMade) {
            const Place& where = record.finding.where;
            sink_(formatString(
                "%@:%zu:%zu: note: mended: %@ [%@]\n", escapedForTerminal(report.path),
                std::max<std::size_t>(where.line, 1), std::max<std::size_t>(where.column, 1),
                escapedForTerminal(record.finding.mend->description),
                ruleOf(record.finding.rule).id));
        }
    }
    for (const Finding& finding : report.findings.kept()) {
        if (finding.severity >= least_) {
            const Place& where = finding.where;
            sink_(formatString("%@:%zu:%zu: %@: %@ [%@]\n", escapedForTerminal(report.path),
                               std::max<std::size_t>(where.line, 1),
                               std::max<std::size_t>(where.column, 1), nameOf(finding.severity),
                               escapedForTerminal(finding.message()), ruleOf(finding.rule).id));
        }
    }
    for (const Remainder& remainder : remaindersOf(report, least_)) {
        aboutTheFile(report, formatString("not shown: %llu more [%@]", remainder.count,
                                          ruleOf(remainder.rule).id));
    }
    for (const SkippedGroups& groups : skippedGroupsOf(report)) {
        aboutTheFile(report, formatString("%@ did not run: %@", groups.names, groups.why));
    }
}

void GNUReportWriter::aboutTheFile(const Report& report, std::string_view note) {
    sink_(formatString("%@:1:1: note: %@\n", escapedForTerminal(report.path), note));
}

}  // namespace vornic
