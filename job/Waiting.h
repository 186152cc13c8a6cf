#ifndef VORNIC_JOB_WAITING_H
#define VORNIC_JOB_WAITING_H

#include <string>

namespace vornic {

/// Who is told that a job waits for another one, and may end the waiting. The thread of the job.
class Waiting {
  public:
    virtual ~Waiting() = default;

    /// Another run, of this program or of another one, has used the file for a second by now.
    /// Called once for a wait.
    virtual void waitsFor(const std::string& path) = 0;
    /// Asked again and again; true ends the wait.
    [[nodiscard]] virtual bool isCancelled() = 0;
};

}  // namespace vornic

#endif
