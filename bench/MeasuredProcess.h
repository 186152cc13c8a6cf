#ifndef VORNIC_BENCH_MEASURED_PROCESS_H
#define VORNIC_BENCH_MEASURED_PROCESS_H

#include <string>
#include <vector>

namespace vornic::bench {

/// What one run of a program cost.
struct MeasuredProcess {
    /// From before the start to after the end, in seconds.
    double seconds = 0;
    /// What the processors worked for it, all threads and the system's part together, in seconds.
    double processorSeconds = 0;
    /// The most memory that was resident at once, in megabytes (of 1024 * 1024 bytes). Never less
    /// than what the measuring process itself had, so that has to stay small.
    double peakMegabytes = 0;
    /// The exit status; -1 when the program could not be started or was ended by a signal.
    int status = -1;
};

/// Runs a program, found by its path or in PATH, and waits for its end. Its standard output and
/// standard error go to the file at `output`, which is replaced.
[[nodiscard]] MeasuredProcess runMeasured(const std::vector<std::string>& arguments,
                                          const std::string& output);

}  // namespace vornic::bench

#endif
