#include "app/cli/InterruptedRuns.h"

#include <optional>

#include "base/FormatString.h"
#include "foundation/log/QMLog.h"
#include "foundation/places/QMLocalPaths.h"
#include "job/Journal.h"
#include "job/JournalRecovery.h"

namespace vornic {

namespace {

std::string placeOfOldFile(const RecoveredRun& run) {
    if (run.original.empty()) {
        return "";
    }
    return formatString(run.isUndo ? " What was there is %@." : " The original is %@.",
                        run.original);
}

std::string sentenceAbout(const RecoveredRun& run) {
    const std::string beginning =
        formatString(run.isUndo ? "An earlier undo for the file %@ was interrupted"
                                : "An earlier run with the file %@ was interrupted",
                     run.file);
    switch (run.end) {
        case RecoveredRun::End::takenBack:
            return beginning + " and has been taken back.";
        case RecoveredRun::End::finished:
            return beginning + " and has been finished." + placeOfOldFile(run);
        case RecoveredRun::End::lost:
            break;
    }
    return beginning + (run.isUndo ? ". What was there is neither in its place nor in the Trash."
                                   : ". Its original is neither in its place nor in the Trash.");
}

}  // namespace

std::vector<std::string> settleInterruptedRuns() {
    std::vector<std::string> sentences;
    const std::optional<Journal> journal = Journal::ofUser();
    if (!journal) {
        return sentences;
    }
    for (const RecoveredRun& run :
         recoverInterrupted(*journal, QMLocalPaths::trashDirectory().value_or(""))) {
        sentences.push_back(sentenceAbout(run));
        QMLog::appendLog("%@", sentences.back());
    }
    return sentences;
}

}  // namespace vornic
