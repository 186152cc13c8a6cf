#ifndef VORNIC_JOB_BATCH_BATCH_FILTER_H
#define VORNIC_JOB_BATCH_BATCH_FILTER_H

#include <string>

#include "job/batch/BatchRow.h"

namespace vornic {

/// Which rows a user wants to see.
struct BatchFilter {
    /// Looked for in name, folder, result and reason, in any case of the letters; "" for all.
    std::string text = {};
    bool onlyFailures = false;

    [[nodiscard]] bool shows(const BatchRow& row) const;
};

}  // namespace vornic

#endif
