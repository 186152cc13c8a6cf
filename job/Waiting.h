#ifndef VORNIC_JOB_WAITING_H
#define VORNIC_JOB_WAITING_H

#include <functional>
#include <string>

#include "base/StopToken.h"

namespace vornic {

/// What a job does while another one uses its file. Both are called on the thread of the job.
struct Waiting {
    /// Told once for a wait, a second after it has begun: another run, of this program or of
    /// another one, uses the file at the path.
    std::function<void(const std::string& path)> tell;
    /// Ends the wait.
    StopToken stop{};
};

}  // namespace vornic

#endif
