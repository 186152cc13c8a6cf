#include "job/JournalRecovery.h"

#include <chrono>
#include <optional>
#include <tuple>
#include <utility>

#include "base/PathText.h"
#include "job/JournalFiles.h"
#include "job/UndoRemains.h"
#include "platform/files/FileSystem.h"
#include "platform/files/Rename.h"
#include "platform/rights/HeldPath.h"
#include "platform/volumes/Trash.h"

namespace vornic {
namespace {

/// Settles one interrupted change.
class Recovery {
  public:
    Recovery(const JournalEntry& entry, std::string trash)
        : entry_(entry), trashPath_(std::move(trash)), target_(platform::holdPath(entry.file)) {
        result_.file = entry.file;
        result_.isUndo = entry.action == JournalEntry::Action::undo;
    }

    RecoveredRun run() && {
        settleFile();
        if (result_.isUndo && target_ && openTrash()) {
            settleRemains();
        }
        return std::move(result_);
    }

  private:
    void settleFile() {
        if (isSameFile(entry_.before, entry_.file)) {
            return;
        }
        if (entry_.before.identity.inode == 0) {
            // Nothing had stood at the path.
            result_.end = hasContentsOf(entry_.after, entry_.file) ? RecoveredRun::End::finished
                                                                   : RecoveredRun::End::takenBack;
            return;
        }
        const std::string waiting = placeBetweenMoves();
        if (waiting.empty()) {
            lookIntoTheTrash();
        } else if (platform::nodeExists(entry_.file) ||
                   platform::renameWithoutReplacing(waiting, entry_.file) != 0) {
            finish(waiting);
        }
    }

    [[nodiscard]] bool liesInTrash(const std::string& path) {
        return openTrash() && parentFolder(path) == trash_->folder();
    }

    bool openTrash() {
        ErrorSlot ignored;
        if (!trash_) {
            trash_ = platform::Trash::open(trashPath_, ignored);
        }
        return trash_.has_value();
    }

    /// Where the old file is neither in its place nor in the Trash yet.
    std::string placeBetweenMoves() {
        for (const std::string& path :
             {undoAsidePath(entry_.file), undoWaitingPath(entry_.file), entry_.workingCopy}) {
            if (isSameFile(entry_.before, path) && !liesInTrash(path)) {
                return path;
            }
        }
        return findHidden(entry_.before, parentFolder(entry_.file));
    }

    void finish(const std::string& waiting) {
        const std::optional<platform::HeldPath> item = platform::holdPath(waiting);
        ErrorSlot ignored;
        const auto trashed = openTrash() && item
                                 ? trash_->take(*item, lastComponent(entry_.file), ignored)
                                 : std::nullopt;
        result_.end = RecoveredRun::End::finished;
        result_.original = trashed ? trashed->path() : waiting;
        if (!trashed && !platform::nodeExists(waiting)) {
            // Another run was faster.
            lookIntoTheTrash();
        }
    }

    void lookIntoTheTrash() {
        result_.original.clear();
        if (openTrash() && liesInTrash(entry_.workingCopy)) {
            result_.original =
                findInTrash(entry_.before, trash_->folder(), lastComponent(entry_.workingCopy));
        }
        if (openTrash() && result_.original.empty()) {
            result_.original =
                findCopyInTrash(entry_.before, trash_->folder(), lastComponent(entry_.file));
        }
        result_.end =
            result_.original.empty() ? RecoveredRun::End::lost : RecoveredRun::End::finished;
    }

    /// What was on its way out of the Trash goes back there, or has its place twice.
    void settleRemains() {
        const std::string name = lastComponent(entry_.workingCopy);
        clearWaiting(*trash_, name, *target_);
        if (result_.end == RecoveredRun::End::finished && result_.original != entry_.workingCopy) {
            dropOriginal(*trash_, name, entry_.after, *target_);
        }
    }

    const JournalEntry& entry_;
    std::string trashPath_;
    std::optional<platform::HeldPath> target_;
    std::optional<platform::Trash> trash_;
    RecoveredRun result_;
};

}  // namespace

std::vector<RecoveredRun> recoverInterrupted(const Journal& journal, const std::string& trash) {
    std::vector<RecoveredRun> recovered;
    for (Journal::Run& run : journal.takeInterrupted()) {
        ErrorSlot ignored;
        const auto claim = journal.claim(run.entry().file, std::chrono::milliseconds(0), ignored);
        if (!claim) {
            // A living run is at work on the file; the next start comes back to this one.
            continue;
        }
        recovered.push_back(Recovery(run.entry(), trash).run());
        if (recovered.back().end == RecoveredRun::End::takenBack) {
            std::ignore = journal.takeBack(std::move(run), ignored);
        } else {
            std::ignore = journal.finish(std::move(run), recovered.back().original, ignored);
        }
    }
    return recovered;
}

}  // namespace vornic
