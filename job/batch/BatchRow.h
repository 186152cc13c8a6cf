#ifndef VORNIC_JOB_BATCH_BATCH_ROW_H
#define VORNIC_JOB_BATCH_BATCH_ROW_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "formats/FileKind.h"

namespace vornic {

/// What a batch does with its files.
enum class BatchAction { check, repair, mend, convert, relink, restore };

/// What came of a file.
enum class BatchResult {
    /// Nothing was done with it yet.
    none,
    /// Nothing of weight was found, and the file is as it was.
    sound,
    /// Something was found that has to be looked at, and the file is as it was.
    findings,
    /// The result of an action took the file's place, or was written beside it.
    repaired,
    mended,
    converted,
    relinked,
    restored,
    /// The action has nothing that it can do for the file, which is as it was.
    unable,
    /// The file could not be read, or nothing written.
    failed,
    /// The batch was cancelled while the action was at work, and the file is as it was.
    cancelled,
};
inline constexpr std::size_t kBatchResultCount = 11;

enum class BatchState { idle, waiting, working };

/// One file of a batch, under whatever names.
struct BatchRow {
    /// Absolute; of a bundle, that of the `Info.fcpxml` in it.
    std::string path;
    /// As a user sees them: a bundle has its own name.
    std::string name;
    std::string folder;
    /// Other paths of the same file that were added: links, symbolic and hard.
    std::vector<std::string> otherPaths = {};
    /// By the name until the file has been read, then by its contents.
    FileKind kind = FileKind::none;
    BatchState state = BatchState::idle;
    /// What of the work is done, from 0 to 1; 0 where that is not known.
    double progress = 0;
    /// Of the last action that has ended.
    BatchResult result = BatchResult::none;
    /// Why, for results that need a word, as a sentence; "" otherwise.
    std::string reason = {};
    /// What was found: in a file that was mended what is left, in one that was converted what was
    /// lost.
    std::uint64_t errors = 0;
    std::uint64_t warnings = 0;
    std::uint64_t notes = 0;
    /// Where that is which stood at the path before the action, and the path of a new file that it
    /// has written; "" for none.
    std::string replaced = {};
    std::string written = {};

    /// Errors and warnings.
    [[nodiscard]] std::uint64_t problems() const { return errors + warnings; }
};

/// "sound", "problems", "repaired", ..., "" for none.
[[nodiscard]] std::string_view nameOf(BatchResult result);

/// True for a result that a user has to look at: problems, what could not be done, what failed.
[[nodiscard]] bool isFailure(BatchResult result);

}  // namespace vornic

#endif
