#ifndef VORNIC_REPAIR_PIPELINE_REPAIR_RESULT_H
#define VORNIC_REPAIR_PIPELINE_REPAIR_RESULT_H

#include <optional>
#include <string>

#include "formats/FileKind.h"
#include "job/Events.h"
#include "job/SwapResult.h"
#include "repair/pipeline/ClosingMessage.h"
#include "report/Findings.h"

namespace vornic {

/// How a run ended.
enum class RepairOutcome {
    /// Nothing was wrong; the user's file is as it was.
    sound,
    /// The user's file is in the Trash and the repaired one has its path.
    repairedAndSwapped,
    /// The file counts as repaired, but nothing took its place; `RepairResult` says why, and where
    /// the files are.
    repairedNotSwapped,
    /// Something could not be mended; the user's file is as it was.
    unable,
    /// The user or a signal cancelled; the user's file is as it was.
    cancelled,
    /// The run ended, by an exception perhaps, before it could judge the file; the user's file is
    /// as it was.
    stopped,
};

/// How a run ended, what it has found, and where that has left the files.
struct RepairResult {
    RepairOutcome outcome = RepairOutcome::stopped;
    /// By the file's extension.
    FileKind kind = FileKind::xmeml;
    /// When the run ended; neither flag for one that could not read the file.
    Verdict verdict{};
    /// Exact counts by rule and severity, and the first findings of each rule with their places in
    /// the user's file.
    Findings findings = Findings();
    /// The message of the first finding that could not be mended; empty when there was none.
    std::string obstacle{};
    /// Nothing after a cancellation and after an exception.
    std::optional<ClosingMessage> closing{};
    /// Where the file that was to be repaired is now: at its own path, unless a repaired one took
    /// that. Empty when another program has taken it away.
    std::string original{};
    /// Where the run has left its working copy: a cancelled one, and one whose repaired file could
    /// not take the place of the original. Else empty.
    std::string workingCopy{};
    /// Of a repaired file: how the swap ended, and where the files are. Else it says nothing.
    SwapResult swap{};
    /// Where a file that stood at the working copy's path before the run lies in the Trash; empty
    /// when there was none.
    std::string oldCopy{};

    /// Whether the journal knows of the swap, so that it can be undone.
    bool isUndoable = false;
};

}  // namespace vornic

#endif
