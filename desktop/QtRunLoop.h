#ifndef VORNIC_DESKTOP_QT_RUN_LOOP_H
#define VORNIC_DESKTOP_QT_RUN_LOOP_H

#include <QObject>

#include "platform/threads/MainThread.h"

namespace vornic {

/// The toolkit's event loop as the loop of the main thread. Made on the main thread before other
/// threads run.
class QtRunLoop : public platform::MainThreadLoop {
  public:
    void post(std::function<void()> function) override;
    void postAfter(std::chrono::milliseconds delay, std::function<void()> function) override;
    /// Handles what is pending, which the toolkit does in one go; waits when nothing is.
    bool dispatchOne(std::chrono::milliseconds limit) override;

  private:
    // Events for it are events for the main thread.
    QObject receiver_;
};

}  // namespace vornic

#endif
