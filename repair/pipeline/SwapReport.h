#ifndef VORNIC_REPAIR_PIPELINE_SWAP_REPORT_H
#define VORNIC_REPAIR_PIPELINE_SWAP_REPORT_H

#include <string>

#include "job/SwapResult.h"
#include "repair/pipeline/RepairReport.h"

namespace vornic {

/// Says what a user has to know of a swap that did not come to its end: why, and where the files
/// are.
void reportSwap(RepairReport& report, const SwapResult& swap, const std::string& source,
                const std::string& copy);

}  // namespace vornic

#endif
