#ifndef VORNIC_APP_CLI_INTERRUPTED_RUNS_H
#define VORNIC_APP_CLI_INTERRUPTED_RUNS_H

#include <string>
#include <vector>

namespace vornic {

/// Finishes, or takes back, what a program was doing with a file of the user's when it was killed
/// or the power failed. For the start of every program that changes files in their place. Any
/// thread.
/// @return a sentence for each run, which the log has, too.
std::vector<std::string> settleInterruptedRuns();

}  // namespace vornic

#endif
