#ifndef VORNIC_REPAIR_REPAIR_PIPELINE_H
#define VORNIC_REPAIR_REPAIR_PIPELINE_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Error.h"
#include "repair/RepairHost.h"
#include "repair/WorkingCopy.h"
#include "xml/XMLDocument.h"
#include "xml/XMLReader.h"

namespace vornic {

/// How a run ended.
enum class RepairOutcome {
    /// Nothing was wrong; the user's file is as it was.
    sound,
    /// The user's file is in the Trash and the repaired one has its path.
    repairedAndSwapped,
    /// The file counts as repaired, but nothing took its place: the user's file could not be moved
    /// to the Trash, the repaired one not to its path, or none was saved. Neither is lost.
    repairedNotSwapped,
    /// Something could not be mended; the user's file is as it was.
    unable,
    /// The user or a signal cancelled; the user's file is as it was.
    cancelled,
    /// The run ended, by an exception perhaps, before it could judge the file; the user's file is
    /// as it was.
    stopped,
};

/// One repair of one file: makes a working copy beside it, loads, filters, checks and mends that,
/// and puts it in the file's place when, and only when, faults were found and all of them mended.
/// The user's file itself is never written; it ends untouched or in the Trash. An object makes one
/// run.
class RepairPipeline {
  public:
    explicit RepairPipeline(RepairHost& host) : host_(host) {}

    /// Runs the whole repair on the calling thread. `platform::Exception` is caught and logged;
    /// other exceptions pass on after the progress sheet has been ended.
    /// @param path the user's file, best absolute: it is stored in the preferences as it stands.
    RepairOutcome run(const std::string& path) &&;

    /// The path of the working copy: the file's path with "-backup.xml", or "-backup.fcpxml" when
    /// `xmlType` is 1, in place of its extension.
    [[nodiscard]] static std::string workingCopyPath(const std::string& path, int xmlType);

  private:
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
    void removeWorkingCopy();

    bool cancelled();
    void reportAndLabel(const char* text);
    bool stopCritically(const std::string& reason);
    bool stopBeforeCopy(const std::string& report, const char* alert, const std::string& info);
    void reportAttributeError(const char* format);
    void reportUnremovedCopy();
    [[nodiscard]] std::string slotDescription() const;

    RepairHost& host_;
    RepairOutcome outcome_ = RepairOutcome::stopped;
    std::string path_;
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
