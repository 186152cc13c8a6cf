#ifndef VORNIC_JOB_UNDO_SWAP_H
#define VORNIC_JOB_UNDO_SWAP_H

#include <functional>
#include <optional>
#include <string>

#include "base/Error.h"
#include "job/JournalEntry.h"
#include "platform/files/FileSystem.h"
#include "platform/rights/HeldPath.h"
#include "platform/volumes/Trash.h"

namespace vornic {

/// The moments of an undo at which somebody else may come between.
enum class UndoStep {
    /// Everything has been looked at, nothing moved yet.
    looked,
    /// The original waits beside the file under a hidden name. Not where the two change places in
    /// one step.
    waiting,
    /// The original has its place; what stood there has another name.
    exchanged,
    /// What came out has been found to be what was looked at.
    compared,
    /// What came out is in the Trash, and so is the original still. Not where the two change places
    /// in one step.
    trashed,
};

/// Where the two files of an undo are. Both folders are held open.
struct UndoPlaces {
    /// The user's path, in a folder known by itself.
    platform::HeldPath target;
    /// The original's name in the Trash, and what it is known by.
    std::string name;
    JournalFile original;
    /// What stands at the path; nothing when that has gone.
    std::optional<JournalFile> present;
};

/// How the exchange of the two files ended.
struct [[nodiscard]] UndoSwapResult {
    /// Whether the original has its place.
    bool isDone = false;
    /// Where that is which stood in its place: in the Trash, or else beside the file. Empty when it
    /// still is there, or nothing was.
    std::string result = {};
    /// Whether `result` is beside the file, since it could not be moved to the Trash.
    bool isBeside = false;
    /// A sentence for everything that the original had and could not be given again.
    std::string losses = {};
    /// What failed, where something did.
    ErrorSlot error = {};
};

/// Brings an original from the Trash back to its path, and what stands there into the Trash. The
/// two exchange their names in one step. Where the Trash lies on another volume, the path exchanges
/// its file with a verified copy beside it, and the original in the Trash goes last. Only what was
/// looked at before stays away from the path; anything else that comes out gets its place back. At
/// no moment does nothing stand at the path, but where the volume knows no exchange of names. One
/// thread; an object makes one swap.
class UndoSwap {
  public:
    using Observer = std::function<void(UndoStep)>;

    UndoSwap(const platform::Trash& trash, const UndoPlaces& places, const Observer& observer);

    UndoSwapResult run() &&;

  private:
    UndoSwapResult swapAtOnce();
    UndoSwapResult swapBeside();
    UndoSwapResult swapInSteps();
    UndoSwapResult restore();
    bool placeBeside();
    void dropWaiting();
    void giveBack(const std::string& other, std::optional<platform::FileIdentity> own);
    UndoSwapResult giveAsideBack(int errorNumber);
    UndoSwapResult finish(const std::string& result);
    UndoSwapResult leaveBeside(const std::string& path);
    UndoSwapResult failed(int errorNumber);
    UndoSwapResult changed();
    [[nodiscard]] Error cannotPutBack(int errorNumber) const;
    [[nodiscard]] std::string userPath(const std::string& path) const;
    void tell(UndoStep step) const;

    const platform::Trash& trash_;
    const UndoPlaces& places_;
    const Observer& observer_;
    // Paths into the open folders: of the file, of the original in the Trash, of the original
    // beside the file, and of the file where names cannot be exchanged.
    std::string target_;
    std::string trashed_;
    std::string waiting_;
    std::string aside_;
    // What was put beside the file.
    std::optional<platform::FileIdentity> own_;
    UndoSwapResult result_;
};

}  // namespace vornic

#endif
