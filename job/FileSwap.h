#ifndef VORNIC_JOB_FILE_SWAP_H
#define VORNIC_JOB_FILE_SWAP_H

#include <optional>
#include <string>

#include "job/SavedCopy.h"
#include "job/SourceFile.h"
#include "job/SwapObserver.h"
#include "job/SwapResult.h"

namespace vornic {

struct SeenFile;

/// Puts a saved working copy in the place of the file that it was made from, and that one in the
/// Trash. The copy first gets a name that no other program knows. Then the two exchange their names
/// in one step, so that at no moment nothing stands at the source's path, and only then is looked
/// at what came out and at what stands at the path. Where names cannot be exchanged the source is
/// renamed aside first. In either case nothing is replaced and nothing but the program's own copy
/// is removed; a step that fails is taken back. One thread; an object makes one swap.
///
/// Other programs may write the user's file at any moment. Whatever is newest keeps the path:
///
///     came out           at the path
///                        the copy as saved     the copy, written into,     nothing
///                                              or another file
///     as it was read     it goes to the Trash  it goes to the Trash        it goes to the Trash
///     written into, or
///     another file       it gets the path back it goes to the Trash        it goes to the Trash
///     cannot be read     it gets the path back it goes to the Trash        it goes to the Trash
///
/// A copy that cannot be read is taken for one as saved, and the swap is taken back. Only the
/// first cell is a swap that is done. When what came out gets the path back, what comes out for it
/// is looked at in its turn: if that is not the copy as saved, it was put there meanwhile, is
/// newer, and gets the path. What cannot go to the Trash stays aside, or comes back to a path at
/// which nothing stands, and the result says where it is.
class FileSwap {
  public:
    FileSwap(const SourceFile& source, const SavedCopy& copy, SwapObserver& observer);

    SwapResult run() &&;

    /// Where one of the two files is during the swap of a source: ".<name>.vornic.swap" in its
    /// folder. What is there without being claimed (`claimFile`) was left by a run that was killed.
    [[nodiscard]] static std::string asidePath(const std::string& source);

  private:
    [[nodiscard]] SwapIntent intent() const;
    SwapResult swap();
    SwapResult swapByExchange();
    SwapResult judgeExchange();
    SwapResult takeBack(SwapEnd end, ErrorSlot error);
    SwapResult returnNewest(const SeenFile& placed, SwapResult result);
    SwapResult swapInSteps(const std::string& from);
    SwapResult moveIn();
    SwapResult withdraw(SwapEnd end, ErrorSlot error);
    SwapResult bringBack(SwapEnd end, ErrorSlot error);
    SwapResult giveWay(SwapResult result);
    SwapResult recycleOriginal(SwapResult (FileSwap::*undo)(SwapEnd, ErrorSlot));
    SwapResult finish(const std::string& original);
    [[nodiscard]] SwapResult untouched(SwapEnd end, ErrorSlot error) const;
    [[nodiscard]] SwapResult notRenamed(int errorNumber) const;
    [[nodiscard]] SwapResult copyDiffers(const ErrnoOr<Standing>& standing) const;
    [[nodiscard]] std::optional<std::string> recycle(const std::string& path,
                                                     ErrorSlot& error) const;
    SwapResult settleCopy(SwapResult result) const;
    ErrorSlot dropCopyName();
    void restoreNames();

    const SourceFile& source_;
    const SavedCopy& copy_;
    SwapObserver& observer_;
    std::string aside_;
    // Where the copy waits in a swap of several steps.
    std::string hidden_;
    // What is told although the swap is done.
    ErrorSlot remark_;
};

}  // namespace vornic

#endif
