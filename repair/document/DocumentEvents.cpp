#include "repair/document/DocumentEvents.h"

#include "foundation/log/QMLog.h"
#include "repair/document/Document.h"
#include "report/RuleTable.h"

namespace vornic {

void DocumentEvents::line(const ReportLine& line) {
    if (line.rule == "repair-start"_rule) {
        document_.clearInfoText();
    }
    document_.appendInfoText(line.text, line.isError, line.isBold);
}

void DocumentEvents::logLine(std::string_view text) {
    QMLog::appendLog("%@", text);
}

void DocumentEvents::label(std::string_view text) {
    document_.setProgressLabel(text);
}

void DocumentEvents::progressMaximum(std::int64_t maximum) {
    document_.setProgressMax(maximum);
}

void DocumentEvents::progressValue(std::int64_t value) {
    document_.setProgressValue(value);
}

void DocumentEvents::progressIsBusy() {
    document_.setIndeterminateProgress();
}

void DocumentEvents::verdict(const Verdict& verdict) {
    document_.setFileHasErrs(verdict.hasErrors);
    document_.setFileWasRepaired(verdict.wasRepaired);
}

}  // namespace vornic
