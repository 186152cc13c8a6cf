#ifndef VORNIC_FOUNDATION_COPIES_FILE_COPY_PROGRESS_H
#define VORNIC_FOUNDATION_COPIES_FILE_COPY_PROGRESS_H

#include <atomic>
#include <cstdint>
#include <memory>

#include "foundation/copies/FileCopyDelegate.h"

namespace vornic {

/// Tells a copy's delegate in the background how far the copy is and asks it whether to go on. Used
/// by the copy's thread.
class FileCopyProgress {
  public:
    /// @param sourceSize in bytes; decides how far apart the reports are: a 500th of it, and no
    /// less
    ///     than 20 MiB
    /// @param delegate may be null
    FileCopyProgress(std::uint64_t sourceSize, std::shared_ptr<FileCopyDelegate> delegate,
                     FileCopyDelegate::Settings settings);

    /// Takes note of all that is copied so far. @param isEnd reports it in any case.
    void advance(std::uint64_t total, bool isEnd);
    /// True once the delegate has answered that the copy is not to go on.
    [[nodiscard]] bool isCancelled() const { return *cancelled_; }

  private:
    std::uint64_t interval_;
    std::uint64_t lastReport_ = 0;
    std::shared_ptr<FileCopyDelegate> delegate_;
    FileCopyDelegate::Settings settings_;
    /// Outlives this object while an answer is still to come.
    std::shared_ptr<std::atomic<bool>> cancelled_ = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace vornic

#endif
