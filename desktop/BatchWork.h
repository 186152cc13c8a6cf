#ifndef VORNIC_DESKTOP_BATCH_WORK_H
#define VORNIC_DESKTOP_BATCH_WORK_H

#include <QPointer>
#include <atomic>
#include <vector>

#include "desktop/BatchWindow.h"
#include "desktop/SureCall.h"
#include "platform/threads/MainThread.h"

namespace vornic {

// Brings what a batch reports to the main thread.
class BatchWindow::Feed : public BatchObserver {
  public:
    explicit Feed(BatchWindow* window) : window_(window) {}

    void rowsChanged(const std::vector<std::size_t>& rows) override {
        platform::MainThread::perform([window = window_, rows] {
            if (window) {
                window->takeChanges(rows);
            }
        });
    }
    void ended(const BatchSummary& summary) override {
        performSurely([&] {
            return [window = window_, summary] {
                if (window) {
                    window->takeEnd(summary);
                }
            };
        });
    }

  private:
    QPointer<BatchWindow> window_;
};

// What the window shares with its threads.
struct BatchWindow::Work {
    explicit Work(BatchWindow* window);

    Feed feed;
    Batch batch;
    std::atomic<bool> isStopped = false;
    BatchAction action = BatchAction::check;
};

}  // namespace vornic

#endif
