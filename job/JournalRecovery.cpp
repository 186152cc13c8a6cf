#include "job/JournalRecovery.h"

#include <optional>
#include <utility>

#include "job/JournalFiles.h"
#include "platform/FileSystem.h"
#include "platform/HeldPath.h"
#include "platform/PathText.h"
#include "platform/Rename.h"
#include "platform/Trash.h"

namespace vornic {
namespace {

using platform::joinPath;
using platform::lastComponent;
using platform::parentFolder;

/// Settles one interrupted change.
class Recovery {
  public:
    Recovery(const JournalEntry& entry, std::string trash)
        : entry_(entry), trash_(std::move(trash)) {
        result_.file = entry.file;
    }

    RecoveredRun run() && {
        if (isSameFile(entry_.before, entry_.file)) {
            putResultAway();
            return std::move(result_);
        }
        const std::string waiting = placeBetweenMoves();
        if (waiting.empty()) {
            lookIntoTheTrash();
        } else if (!platform::nodeExists(entry_.file) &&
                   platform::renameWithoutReplacing(waiting, entry_.file) == 0) {
            putResultAway();
        } else {
            finish(waiting);
        }
        return std::move(result_);
    }

  private:
    [[nodiscard]] bool liesInTrash(const std::string& path) {
        return openTrash() && parentFolder(path) == folder_->folder();
    }

    bool openTrash() {
        ErrorSlot ignored;
        if (!folder_) {
            folder_ = platform::Trash::open(trash_, ignored);
        }
        return folder_.has_value();
    }

    /// Where the old file is neither in its place nor in the Trash yet.
    std::string placeBetweenMoves() {
        for (const std::string& path : {undoAsidePath(entry_.file), entry_.workingCopy}) {
            if (isSameFile(entry_.before, path) && !liesInTrash(path)) {
                return path;
            }
        }
        return "";
    }

    void finish(const std::string& waiting) {
        result_.end = RecoveredRun::End::finished;
        result_.original = recycle(waiting).value_or(waiting);
    }

    std::optional<std::string> recycle(const std::string& path) {
        const std::optional<platform::HeldPath> item = platform::holdPath(path);
        ErrorSlot ignored;
        const auto trashed = openTrash() && item
                                 ? folder_->take(*item, lastComponent(entry_.file), ignored)
                                 : std::nullopt;
        return trashed ? std::optional(trashed->path()) : std::nullopt;
    }

    void lookIntoTheTrash() {
        if (openTrash()) {
            const std::string name = liesInTrash(entry_.workingCopy)
                                         ? lastComponent(entry_.workingCopy)
                                         : lastComponent(entry_.file);
            result_.original = findInTrash(entry_.before, folder_->folder(), name);
        }
        result_.end =
            result_.original.empty() ? RecoveredRun::End::lost : RecoveredRun::End::finished;
    }

    /// An original on its way out of the Trash goes back there.
    void putResultAway() {
        result_.end = RecoveredRun::End::takenBack;
        const std::string waiting = undoWaitingPath(entry_.file);
        if (entry_.action == JournalEntry::Action::undo && hasContentsOf(entry_.after, waiting)) {
            static_cast<void>(recycle(waiting));
        }
    }

    const JournalEntry& entry_;
    std::string trash_;
    std::optional<platform::Trash> folder_;
    RecoveredRun result_;
};

}  // namespace

std::vector<RecoveredRun> recoverInterrupted(const Journal& journal, const std::string& trash) {
    std::vector<RecoveredRun> recovered;
    for (Journal::Run& run : journal.takeInterrupted()) {
        recovered.push_back(Recovery(run.entry(), trash).run());
        ErrorSlot ignored;
        if (recovered.back().end == RecoveredRun::End::takenBack) {
            journal.takeBack(std::move(run), ignored);
        } else {
            journal.finish(std::move(run), recovered.back().original, ignored);
        }
    }
    return recovered;
}

}  // namespace vornic
