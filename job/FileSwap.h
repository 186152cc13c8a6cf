#ifndef VORNIC_JOB_FILE_SWAP_H
#define VORNIC_JOB_FILE_SWAP_H

#include <optional>
#include <string>

#include "job/SavedCopy.h"
#include "job/SourceFile.h"
#include "job/SwapObserver.h"
#include "job/SwapResult.h"

namespace vornic {

/// Puts a saved working copy in the place of the file that it was made from, and that one in the
/// Trash. The two exchange their names in one step, so that at no moment nothing stands at the
/// source's path, and only then is what came out compared with what was read: what another program
/// has written meanwhile gets its place back. Where names cannot be exchanged the source is renamed
/// aside first. In either case nothing is replaced and nothing but the program's own copy is
/// removed; a step that fails is taken back. One thread; an object makes one swap.
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
    SwapResult swapInSteps();
    SwapResult takeBack(SwapEnd end, ErrorSlot error);
    SwapResult giveWay(SwapEnd end, ErrorSlot error);
    SwapResult bringBack(SwapEnd end, ErrorSlot error);
    SwapResult withdraw(SwapEnd end, ErrorSlot error);
    SwapResult finish(const std::string& original, ErrorSlot error);
    [[nodiscard]] SwapResult untouched(SwapEnd end, ErrorSlot error) const;
    [[nodiscard]] SwapResult notRenamed(int errorNumber) const;
    [[nodiscard]] std::optional<std::string> recycleAside(ErrorSlot& error) const;
    ErrorSlot dropCopyName();
    void restoreNames();

    const SourceFile& source_;
    const SavedCopy& copy_;
    SwapObserver& observer_;
    std::string aside_;
};

}  // namespace vornic

#endif
