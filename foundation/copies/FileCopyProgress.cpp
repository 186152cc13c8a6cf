#include "foundation/copies/FileCopyProgress.h"

#include <algorithm>
#include <utility>

#include "platform/threads/BackgroundQueue.h"

namespace vornic {
namespace {

constexpr std::uint64_t kMostReports = 500;
constexpr std::uint64_t kShortestInterval = std::uint64_t{20} * 1024 * 1024;

}  // namespace

FileCopyProgress::FileCopyProgress(std::uint64_t sourceSize,
                                   std::shared_ptr<FileCopyDelegate> delegate,
                                   FileCopyDelegate::Settings settings)
    : interval_(std::max(sourceSize / kMostReports, kShortestInterval)),
      delegate_(std::move(delegate)),
      settings_(std::move(settings)) {}

void FileCopyProgress::advance(std::uint64_t total, bool isEnd) {
    if (total - lastReport_ < interval_ && !isEnd) {
        return;
    }
    lastReport_ = total;
    if (delegate_ && delegate_->fileCopyBytesWritten) {
        platform::BackgroundQueue::perform([delegate = delegate_, settings = settings_, total] {
            delegate->fileCopyBytesWritten(total, settings);
        });
    }
    if (delegate_ && delegate_->fileCopyShouldContinue) {
        platform::BackgroundQueue::perform(
            [delegate = delegate_, settings = settings_, cancelled = cancelled_] {
                if (!delegate->fileCopyShouldContinue(settings)) {
                    *cancelled = true;
                }
            });
    }
}

}  // namespace vornic
