#ifndef VORNIC_JOB_BATCH_BATCH_SUMMARY_H
#define VORNIC_JOB_BATCH_BATCH_SUMMARY_H

#include <array>
#include <cstddef>
#include <string>

#include "job/batch/BatchRow.h"

namespace vornic {

/// How one run of an action over the files of a batch ended.
struct BatchSummary {
    BatchAction action = BatchAction::check;
    /// The files that the action was asked for.
    std::size_t files = 0;
    /// How many of them ended with each result. A cancelled run has not begun them all.
    std::array<std::size_t, kBatchResultCount> results{};
    bool isCancelled = false;
    /// What went wrong besides, as a sentence; "" otherwise.
    std::string complaint = {};

    [[nodiscard]] std::size_t count(BatchResult result) const {
        return results[static_cast<std::size_t>(result)];
    }
    /// For an alert and a notification: "10 files checked: 7 sound, 2 with problems, 1 failed."
    [[nodiscard]] std::string sentence() const;
};

}  // namespace vornic

#endif
