#ifndef VORNIC_JOB_UNDO_H
#define VORNIC_JOB_UNDO_H

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/Error.h"
#include "job/ChangeHistory.h"
#include "job/Journal.h"
#include "job/UndoSwap.h"
#include "platform/volumes/Trash.h"

namespace vornic {

/// How one undo ended.
struct UndoResult {
    enum class End {
        /// The original has its place again and the result is in the Trash.
        undone,
        /// The journal knows no change of this file that could be taken back.
        nothingToUndo,
        /// The original is no longer in the Trash. Nothing was touched.
        emptied,
        /// The file is not what the change had left, and nobody has agreed to taking that back.
        /// Nothing was touched.
        changed,
        /// Something failed; the slot says what. Each file is where it was.
        failed,
    };
    End end = End::failed;
    /// The user's file.
    std::string file = {};
    /// Where that is which stood at the path: in the Trash, or beside the file. Empty when it is in
    /// its place, or nothing was there.
    std::string result = {};
    /// Whether it is beside the file, since it could not be moved to the Trash.
    bool isBeside = false;
    /// A sentence for everything that the original had and could not be given again.
    std::string losses = {};
    /// Whether the file that went to the Trash was not what the change had left.
    bool hadChanged = false;
    /// What failed; also after an undo that could not be written down.
    ErrorSlot error = {};
};

/// A change that can be taken back.
struct UndoableChange {
    JournalEntry entry;
    /// Where the original is now; empty when it is in the Trash no more.
    std::string original;
};

/// Takes back what the journal lists: the original comes out of the Trash and what stands in its
/// place goes there (`UndoSwap`). Several changes of one file go back one by one, newest first;
/// when all have gone back, the last undo is taken back itself. Of several runs that take one file
/// back at once, one does and the others are told. One thread.
class Undo {
  public:
    /// Asked when a file is not what the change had left. @return true to go on all the same.
    using Question = std::function<bool(const JournalEntry& entry)>;

    /// @param journal what has been done, and where each undo is written down
    /// @param trash the user's Trash ("~/.Trash")
    /// @param program,version who does it, for the journal
    Undo(const Journal& journal, std::string trash, std::string program, std::string version);

    /// What can be undone, newest first: of each file the next change.
    /// @param files as the journal may name them; none for all
    /// @return nothing, with the slot filled, when the journal cannot be read.
    [[nodiscard]] std::optional<std::vector<UndoableChange>> changes(
        ErrorSlot& error, const std::set<std::string>& files = {});

    /// Takes back the next change of a file. @param file absolute
    [[nodiscard]] UndoResult undo(const std::string& file, const Question& goOn);
    /// Takes back the newest change that has not been taken back yet, of whatever file.
    [[nodiscard]] UndoResult undoNewest(const Question& goOn);

    /// Called at each step. For tests, which come between.
    void setObserver(std::function<void(UndoStep)> observer) { observer_ = std::move(observer); }

  private:
    [[nodiscard]] UndoResult undoEntry(const JournalEntry& entry, const Question& goOn);
    [[nodiscard]] UndoResult undoClaimed(const JournalEntry& entry, const Question& goOn);
    [[nodiscard]] UndoResult bringBack(const JournalEntry& entry, const UndoPlaces& places);
    void tell(UndoStep step) const;
    [[nodiscard]] bool openTrash(ErrorSlot& error);
    [[nodiscard]] bool readJournal(ErrorSlot& error);

    const Journal& journal_;
    std::string trashPath_;
    std::string program_;
    std::string version_;
    std::optional<platform::Trash> trash_;
    // As much of the journal as has been read.
    ChangeHistory history_;
    Journal::Position position_;
    std::function<void(UndoStep)> observer_;
};

}  // namespace vornic

#endif
