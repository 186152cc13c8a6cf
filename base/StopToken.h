#ifndef VORNIC_BASE_STOP_TOKEN_H
#define VORNIC_BASE_STOP_TOKEN_H

#include <functional>
#include <utility>

namespace vornic {

/// Asked by a job, again and again, whether it should end. A copy asks the same.
class StopToken {
  public:
    /// Of a job that nobody stops.
    StopToken() = default;
    /// @param isRequested may be called from the job's thread at any time and costs next to nothing
    explicit StopToken(std::function<bool()> isRequested) : isRequested_(std::move(isRequested)) {}

    /// True once the user, or a signal, has asked the job to end.
    [[nodiscard]] bool stopRequested() const { return isRequested_ && isRequested_(); }

  private:
    std::function<bool()> isRequested_;
};

}  // namespace vornic

#endif
