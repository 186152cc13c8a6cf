#ifndef VORNIC_TESTS_FOUNDATION_COPIES_RECORDING_COPY_DELEGATE_H
#define VORNIC_TESTS_FOUNDATION_COPIES_RECORDING_COPY_DELEGATE_H

#include <algorithm>
#include <cstdint>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "foundation/copies/FileCopyDelegate.h"
#include "foundation/copies/FileCopySettings.h"

namespace vornic::test {

/// Notes what a copy tells its delegate, and answers that it is to go on.
class RecordingCopyDelegate {
  public:
    RecordingCopyDelegate() {
        delegate->fileCopyBytesWritten = [this](std::uint64_t bytes, const auto& settings) {
            const std::lock_guard lock(mutex_);
            totals_.push_back(bytes);
            copies_.insert(settings);
        };
        delegate->fileCopyShouldContinue = [this](const auto& settings) {
            const std::lock_guard lock(mutex_);
            ++questions_;
            copies_.insert(settings);
            return true;
        };
        delegate->fileCopyVerificationFailed = [this](const auto& settings,
                                                      const std::string& file) {
            const std::lock_guard lock(mutex_);
            mismatches.push_back(file);
            mismatchedChecksums.push_back(
                settings->template valueForKey<std::string>("destChecksum").value_or("none"));
            copies_.insert(settings);
        };
        delegate->fileCopyFinished = [this](const auto& settings) {
            const std::lock_guard lock(mutex_);
            ++finished;
            copies_.insert(settings);
        };
    }

    // Ask when no call is under way any more.

    /// All totals that were told, smallest first.
    [[nodiscard]] std::vector<std::uint64_t> totals() const {
        std::vector<std::uint64_t> sorted = totals_;
        std::sort(sorted.begin(), sorted.end());
        return sorted;
    }
    [[nodiscard]] int questions() const { return questions_; }
    /// The settings of the one copy that the delegate was told about; null when there was none or
    /// more than one.
    [[nodiscard]] std::shared_ptr<FileCopySettings> settings() const {
        return copies_.size() == 1 ? *copies_.begin() : nullptr;
    }

    std::shared_ptr<FileCopyDelegate> delegate = std::make_shared<FileCopyDelegate>();
    std::vector<std::string> mismatches;
    std::vector<std::string> mismatchedChecksums;
    int finished = 0;

  private:
    std::mutex mutex_;
    std::vector<std::uint64_t> totals_;
    std::set<std::shared_ptr<FileCopySettings>> copies_;
    int questions_ = 0;
};

}  // namespace vornic::test

#endif
