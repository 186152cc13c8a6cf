#ifndef VORNIC_REPAIR_REPAIR_PIPELINE_H
#define VORNIC_REPAIR_REPAIR_PIPELINE_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "formats/FileKind.h"
#include "job/Events.h"
#include "job/NamedSources.h"
#include "job/StopToken.h"
#include "job/SwapObserver.h"
#include "job/Waiting.h"
#include "job/WorkingCopy.h"
#include "platform/Error.h"
#include "repair/RepairReport.h"
#include "repair/RepairResult.h"
#include "repair/Stage.h"
#include "xml/XMLDocument.h"
#include "xml/XMLReader.h"

namespace vornic {

/// One repair of one file: makes a working copy beside it, loads, filters, checks and mends that,
/// and puts it in the file's place when, and only when, faults were found and all of them mended.
/// The user's file itself is never written; it ends untouched or in the Trash. An object makes one
/// run, on one thread.
class RepairPipeline : private Waiting {
  public:
    /// @param path the user's file, best absolute: it is stored in the preferences as it stands
    /// @param events told what is to be seen meanwhile; must outlive the run
    /// @param observer told when the repaired file takes the file's place; must outlive the run
    RepairPipeline(const std::string& path, Events& events, StopToken stop, SwapObserver& observer);

    /// Runs the whole repair. `platform::Exception` is caught and logged; other exceptions, such as
    /// a lack of memory, which is reported, pass on.
    [[nodiscard]] RepairResult run() &&;

    /// The path of the working copy: the file's path with "-backup.fcpxml" for FCPXML, else
    /// "-backup.xml", in place of its extension.
    [[nodiscard]] static std::string workingCopyPath(const std::string& path, FileKind kind);

  private:
    // The text of the file, or what is left of it.
    struct SourceText {
        std::string text;
        // The offset in the file of the first byte; nothing when that can't be told.
        std::optional<std::size_t> start;
        // For a text with mends in it: the text as it was, and the mends.
        std::string source{};
        std::vector<XMLEdit> edits{};

        [[nodiscard]] SourcePlaces places() const;
    };
    struct Loaded {
        SourceText text;
        bool hasDocument = false;
        // Of the text as it is, where it has no fault and nothing was mended in it.
        std::optional<XMLReading> reading{};
    };
    struct Filtered {
        SourceText text;
        bool isChanged = true;
    };
    // Null where there is none.
    using Tree = std::unique_ptr<XMLDocument>;

    void waitsFor(const std::string& path) override;
    [[nodiscard]] bool isCancelled() override { return stop_.stopRequested(); }

    // The stages of a run in their order.
    Stage<Done> judge();
    Stage<Done> begin();
    Stage<Done> clearWorkingCopyPath();
    Stage<Done> makeWorkingCopy();
    Stage<SourceText> readText();
    Stage<SourceText> readRawBytes();
    Stage<Loaded> load(SourceText text);
    Stage<Loaded> filterAfterFailedLoad(SourceText text);
    Stage<Done> mend(Loaded loaded);
    Stage<Tree> filterAndParse(Loaded loaded);
    Stage<Tree> checkHeader(Tree document);
    Stage<Tree> repairEvents(Tree document);
    Stage<Done> save(Tree document);
    Stage<Done> updateCodes();
    void finish(RepairResult& result);

    void finishSound(RepairResult& result);
    void finishUnable(RepairResult& result);
    void finishRepaired(RepairResult& result);
    void complete(RepairResult& result);

    // Each is the value, unless the run was stopped meanwhile.
    template <typename Value>
    Stage<Value> unlessCancelled(Value value);
    Stage<Filtered> filterText(SourceText text);
    [[nodiscard]] static SourceText mended(SourceText text, const std::vector<XMLEdit>& edits);
    Stage<Done> reportMends(const std::vector<XMLMend>& mends, SourcePlaces& places);
    void countFault(const XMLReading& reading, SourcePlaces& places);
    void reportNotes();
    void reportReason();
    void reportUnremovedCopy();
    void reportMemoryEnd();
    [[nodiscard]] RunEnd uncleared(WorkingCopy::Clearing clearing, const ErrorSlot& reason);
    [[nodiscard]] RunEnd uncreated(const std::string& why);
    [[nodiscard]] RunEnd criticalEnd();

    void removeWorkingCopy();
    void dropWorkingCopy(RepairOutcome outcome);
    [[nodiscard]] FoundInRepair reporting();
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
};

}  // namespace vornic

#endif
