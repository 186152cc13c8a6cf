#include "repair/pipeline/SwapReport.h"

#include "report/RuleTable.h"

namespace vornic {

namespace {

void reportReason(RepairReport& report, const SwapResult& swap, const std::string& source,
                  const std::string& copy) {
    switch (swap.end) {
        case SwapEnd::done:
        case SwapEnd::failed:
            return;
        case SwapEnd::trashFailed:
            return report.log("repair-trash-failed"_rule,
                              {{"path", source},
                               {"reason", swap.error ? swap.error->localizedDescription() : ""},
                               {"copy", swap.repaired}});
        case SwapEnd::unsaved:
            return report.say("repair-copy-unsaved"_rule, {{"copy", copy}, {"path", source}});
        case SwapEnd::copyChanged:
            return report.say("repair-copy-foreign"_rule, {{"copy", copy}, {"path", source}});
        case SwapEnd::sourceChanged:
            return report.say("repair-source-changed"_rule, {{"path", source}});
    }
}

}  // namespace

void reportSwap(RepairReport& report, const SwapResult& swap, const std::string& source,
                const std::string& copy) {
    reportReason(report, swap, source, copy);
    const bool isMoved = swap.end != SwapEnd::done && swap.original != source;
    if (isMoved && !swap.original.empty()) {
        report.say("repair-original-place"_rule, {{"path", swap.original}});
    }
    if (swap.repaired.empty() && swap.end == SwapEnd::sourceChanged) {
        report.say("repair-copy-taken"_rule);
    } else if (swap.end == SwapEnd::sourceChanged || (isMoved && !swap.repaired.empty())) {
        report.say("repair-copy-place"_rule, {{"path", swap.repaired}});
    }
}

}  // namespace vornic
