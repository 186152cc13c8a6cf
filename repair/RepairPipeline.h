#ifndef VORNIC_REPAIR_REPAIR_PIPELINE_H
#define VORNIC_REPAIR_REPAIR_PIPELINE_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "job/NamedSources.h"
#include "job/SwapObserver.h"
#include "job/Waiting.h"
#include "job/WorkingCopy.h"
#include "platform/Error.h"
#include "repair/RepairHost.h"
#include "repair/RepairResult.h"
#include "xml/XMLDocument.h"
#include "xml/XMLReader.h"

namespace vornic {

/// One repair of one file: makes a working copy beside it, loads, filters, checks and mends that,
/// and puts it in the file's place when, and only when, faults were found and all of them mended.
/// The user's file itself is never written; it ends untouched or in the Trash. An object makes one
/// run.
class RepairPipeline : private Waiting {
  public:
    explicit RepairPipeline(RepairHost& host) : host_(host), observer_(&noObserver_) {}
    /// @param observer told when the repaired file takes the file's place; must outlive the run
    RepairPipeline(RepairHost& host, SwapObserver& observer) : host_(host), observer_(&observer) {}

    /// Runs the whole repair on the calling thread. `platform::Exception` is caught and logged;
    /// other exceptions, such as a lack of memory, which is reported, pass on after the progress
    /// sheet has been ended.
    /// @param path the user's file, best absolute: it is stored in the preferences as it stands.
    RepairResult run(const std::string& path) &&;

    /// The path of the working copy: the file's path with "-backup.xml", or "-backup.fcpxml" when
    /// `xmlType` is 1, in place of its extension.
    [[nodiscard]] static std::string workingCopyPath(const std::string& path, int xmlType);

  private:
    void waitsFor(const std::string& path) override;
    [[nodiscard]] bool isCancelled() override { return host_.progressCancelled(); }

    // The stages of a run in their order; each is true when the next one is to follow.
    bool begin();
    bool clearWorkingCopyPath();
    bool makeWorkingCopy();
    bool readText();
    bool readRawBytes();
    bool load();
    bool reportMends(const std::vector<XMLMend>& mends);
    bool filterAfterFailedLoad();
    bool filterText();
    bool filterAndParse();
    bool checkHeader();
    bool repairEvents();
    bool save();
    bool updateCodes();
    void finish();

    void finishSound();
    void finishUnable();
    void finishRepaired();
    void reportSwap(const SwapResult& swap);
    void removeWorkingCopy();
    void dropWorkingCopy();
    void reportNotes();

    bool cancelled();
    void reportAndLabel(const char* text);
    bool stopCritically(const std::string& reason);
    bool endCancelled();
    bool stopUncleared(WorkingCopy::Clearing clearing, const ErrorSlot& reason);
    bool stopUncreated(const std::string& why);
    bool stopBeforeCopy(const char* alert, const std::string& info);
    void reportAttributeError(const char* format);
    void reportUnremovedCopy();
    void reportMemoryEnd();
    [[nodiscard]] std::string slotDescription() const;

    RepairHost& host_;
    SwapObserver noObserver_;
    SwapObserver* observer_;
    RepairResult result_;
    std::string path_;
    // For runs that nobody has named, or named under another path.
    std::optional<NamedSource> named_;
    std::optional<WorkingCopy> workingCopy_;
    // Shared by every step from the copy onwards. Cleared just before the copy and just before the
    // raw-bytes reload and nowhere else, so that an early fault is seen by all later steps.
    ErrorSlot error_;
    std::string text_;
    // Whether the last parse gave a document. Its tree is built by the last parse alone, the only
    // one whose tree is looked at.
    bool hasDocument_ = false;
    std::unique_ptr<XMLDocument> document_;
};

}  // namespace vornic

#endif
