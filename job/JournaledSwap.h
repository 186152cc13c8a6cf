#ifndef VORNIC_JOB_JOURNALED_SWAP_H
#define VORNIC_JOB_JOURNALED_SWAP_H

#include <optional>
#include <string>

#include "job/Journal.h"
#include "job/SwapObserver.h"

namespace vornic {

/// Writes a swap into the user's journal, so that it can be undone, and finished when it is
/// interrupted. Meanwhile the file is claimed, so that no undo and no recovery moves it. A journal
/// that cannot be written, and a claim that cannot be had for seconds, keep no file from being
/// repaired; the log says why. One swap.
class JournaledSwap : public SwapObserver {
  public:
    /// @param program,version who makes the swap
    /// @param action what brings the new file
    JournaledSwap(std::string program, std::string version,
                  JournalEntry::Action action = JournalEntry::Action::repair);

    [[nodiscard]] bool willSwap(const SwapIntent& intent, ErrorSlot& error) override;
    void didSwap(const SwapIntent& intent, const std::string& original) override;
    void didNotSwap(const SwapIntent& intent) override;

    /// Whether the swap was made and can be undone.
    [[nodiscard]] bool isWrittenDown() const { return isWrittenDown_; }

  private:
    std::string program_;
    std::string version_;
    JournalEntry::Action action_;
    std::optional<Journal> journal_;
    std::optional<Journal::Run> run_;
    std::optional<platform::ByteLock> claim_;
    bool isWrittenDown_ = false;
};

}  // namespace vornic

#endif
