#ifndef VORNIC_JOB_BATCH_BATCH_JOB_H
#define VORNIC_JOB_BATCH_BATCH_JOB_H

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/StopToken.h"
#include "job/Journal.h"
#include "job/MendedBytes.h"
#include "job/Relink.h"
#include "job/Undo.h"
#include "job/Waiting.h"
#include "job/batch/BatchRow.h"
#include "report/Report.h"

namespace vornic {

/// What a batch is to do.
struct BatchRequest {
    BatchAction action = BatchAction::check;
    /// How files are checked, in a check and in mends. The file's name is filled in.
    CheckOptions check = {};
    /// A file in which nothing weighs as much as this counts as sound.
    Severity failOn = Severity::error;
    /// For `mend`: rules whose mends are made although they ask.
    std::vector<RuleId> asked = {};
    /// For `convert`: the version, and whether XMEML loses what it has no place for.
    std::string version = {};
    bool strips = false;
    /// For `relink`.
    RelinkRequest relink = {};
    /// For `convert` and `relink`: whether the result takes the file's place; else it is a new file
    /// beside it, or in the folder.
    bool isInPlace = false;
    std::optional<std::string> folder = {};
    /// For `restore`: whether files that have changed since are brought back as well.
    bool evenIfChanged = false;
};

/// Who works, for the journal.
struct BatchProgram {
    std::string name;
    std::string version;
};

/// How the work on one file ended.
struct BatchOutcome {
    BatchResult result = BatchResult::failed;
    std::string reason = {};
    /// Of the file as it is afterwards, or as it was converted. Nothing where there is none.
    std::optional<Report> report = {};
    /// What a repair has said, line by line.
    std::vector<std::string> lines = {};
    /// What else a user should know, a sentence each.
    std::vector<std::string> notes = {};
    /// Where that is which stood at the path before, and the path of a new file; "" for none.
    std::string replaced = {};
    std::string written = {};
};

/// Does what a batch is asked for with one file after the other, by what the command-line programs
/// do it with. `perform` may be called on several threads at once.
class BatchJob {
  public:
    /// All must outlive this.
    BatchJob(const BatchRequest& request, const BatchProgram& program, StopToken stop);

    /// To be called first, with all files: what relinking searches for.
    /// @return a sentence about what could not be searched; "" otherwise.
    [[nodiscard]] std::string prepare(const std::vector<std::string>& paths);

    /// Raises nothing; a lack of memory is a reason.
    /// @param progress told of a part from 0 to 1, on this thread
    /// @param usesThreads whether other processors are idle
    [[nodiscard]] BatchOutcome perform(const std::string& path,
                                       const std::function<void(double)>& progress,
                                       bool usesThreads);

  private:
    [[nodiscard]] BatchOutcome act(const std::string& path,
                                   const std::function<void(double)>& progress, bool usesThreads);
    [[nodiscard]] CheckOptions checkOptions(const std::string& path, bool usesThreads) const;
    [[nodiscard]] BatchOutcome check(const std::string& path, bool usesThreads) const;
    [[nodiscard]] BatchOutcome repair(const std::string& path,
                                      const std::function<void(double)>& progress) const;
    [[nodiscard]] BatchOutcome mend(const std::string& path, bool usesThreads) const;
    [[nodiscard]] BatchOutcome convert(const std::string& path) const;
    [[nodiscard]] BatchOutcome relink(const std::string& path);
    [[nodiscard]] BatchOutcome writeRelinked(const std::string& path, const std::string& oldBytes,
                                             RelinkedBytes relinked) const;
    [[nodiscard]] BatchOutcome restore(const std::string& path);
    [[nodiscard]] Waiting waiting() const;

    const BatchRequest& request_;
    const BatchProgram& program_;
    StopToken stop_;
    // Relinker and undo are for one thread at a time.
    std::mutex mutex_;
    Relinker relinker_;
    std::optional<Journal> journal_;
    std::optional<Undo> undo_;
};

}  // namespace vornic

#endif
