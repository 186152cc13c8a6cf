#ifndef VORNIC_REPAIR_PIPELINE_REPAIR_PIPELINE_H
#define VORNIC_REPAIR_PIPELINE_REPAIR_PIPELINE_H

#include <memory>
#include <string>

#include "base/Error.h"
#include "base/StopToken.h"
#include "formats/FileKind.h"
#include "job/Events.h"
#include "job/NamedSources.h"
#include "job/SwapObserver.h"
#include "job/Waiting.h"
#include "job/WorkingCopy.h"
#include "repair/pipeline/MarkupStage.h"
#include "repair/pipeline/RepairReport.h"
#include "repair/pipeline/RepairResult.h"
#include "repair/pipeline/Stage.h"
#include "xml/tree/XMLDocument.h"

namespace vornic {

/// One repair of one file: makes a working copy beside it, loads, filters, checks and mends that,
/// and puts it in the file's place when, and only when, faults were found and all of them mended.
/// The user's file itself is never written; it ends untouched or in the Trash. An object makes one
/// run, on one thread.
class RepairPipeline {
  public:
    /// @param path the user's file, best absolute: it is stored in the preferences as it stands
    /// @param events receives what is to be shown meanwhile; must outlive the run
    /// @param observer told when the repaired file takes the file's place; must outlive the run
    RepairPipeline(const std::string& path, Events& events, StopToken stop, SwapObserver& observer);
    /// The same for a file that is to be taken for another kind than its name says.
    RepairPipeline(const std::string& path, FileKind kind, Events& events, StopToken stop,
                   SwapObserver& observer);

    /// Runs the whole repair. `platform::Exception` is caught and logged; other exceptions, such as
    /// a lack of memory, which is reported, pass on.
    [[nodiscard]] RepairResult run() &&;

    /// The path of the working copy: the file's path with "-backup.fcpxml" for FCPXML, else
    /// "-backup.xml", in place of its extension.
    [[nodiscard]] static std::string workingCopyPath(const std::string& path, FileKind kind);

  private:
    // Null where there is none.
    using Tree = std::unique_ptr<XMLDocument>;

    void tellWait(const std::string& path);
    [[nodiscard]] bool isCancelled() const { return stop_.stopRequested(); }

    // The stages of a run in their order.
    Stage<Done> judge();
    Stage<Done> begin();
    Stage<Done> clearWorkingCopyPath();
    Stage<Done> makeWorkingCopy();
    Stage<SourceText> readText();
    Stage<SourceText> readRawBytes();
    Stage<Done> mend(LoadedText loaded);
    Stage<Tree> checkHeader(Tree document);
    Stage<Tree> repairEvents(Tree document);
    Stage<Done> save(Tree document);
    Stage<Done> updateCodes();
    void finish(RepairResult& result);

    void finishSound(RepairResult& result);
    void finishUnable(RepairResult& result);
    void finishRepaired(RepairResult& result);
    void complete(RepairResult& result);

    void reportNotes();
    void reportUnremovedCopy();
    void reportMemoryEnd();
    [[nodiscard]] RunEnd uncleared(WorkingCopy::Clearing clearing, const ErrorSlot& reason);
    [[nodiscard]] RunEnd uncreated(const std::string& why);
    [[nodiscard]] RunEnd criticalEnd();

    void removeWorkingCopy();
    void dropWorkingCopy(RepairOutcome outcome);
    // For what is found in a document, or said in place of one that there is not.
    [[nodiscard]] FoundInRepair reporting(const Tree& document);
    [[nodiscard]] std::string slotDescription() const;

    const std::string path_;
    const FileKind kind_;
    RepairReport report_;
    const StopToken stop_;
    SwapObserver& observer_;
    // For runs that nobody has named, or named under another path.
    const NamedSource named_;
    WorkingCopy workingCopy_;
    // Shared by every step from the copy onwards. Cleared just before the copy and just before the
    // raw-bytes reload and nowhere else, so that an early fault is seen by all later steps.
    ErrorSlot error_;
    MarkupStage markup_;
};

}  // namespace vornic

#endif
