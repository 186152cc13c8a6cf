#ifndef VORNIC_APP_WINDOW_PATIENCE_H
#define VORNIC_APP_WINDOW_PATIENCE_H

#include <functional>
#include <string>
#include <utility>

#include "foundation/log/QMLog.h"
#include "job/Waiting.h"

namespace vornic {

/// How an action of a window waits for a program that has the file: as long as that takes, unless
/// it is stopped.
class Patience final : public Waiting {
  public:
    /// @param isStopped asked while it waits; none for never
    explicit Patience(std::function<bool()> isStopped = {}) : isStopped_(std::move(isStopped)) {}

    void waitsFor(const std::string& path) override {
        QMLog::appendLog("Another program uses the file %@; waiting.", path);
    }
    [[nodiscard]] bool isCancelled() override { return isStopped_ && isStopped_(); }

  private:
    std::function<bool()> isStopped_;
};

}  // namespace vornic

#endif
