#ifndef VORNIC_DESKTOP_DOCUMENT_THREAD_H
#define VORNIC_DESKTOP_DOCUMENT_THREAD_H

#include <QPointer>
#include <cerrno>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "base/Exception.h"
#include "desktop/DocumentMainWindow.h"
#include "foundation/log/QMLog.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"

namespace vornic {

/// Who changes a file, for the journal.
[[nodiscard]] inline std::string programName() {
    return program_invocation_short_name;
}

template <typename Result>
void DocumentMainWindow::runOnThread(std::function<Result()> work,
                                     std::function<void(const Result&)> then) {
    setActing(true);
    try {
        platform::detachNewThread([self = QPointer<DocumentMainWindow>(this),
                                   work = std::move(work), then = std::move(then)] {
            auto result = std::make_shared<Result>();
            try {
                *result = work();
            } catch (const std::bad_alloc&) {
                QMLog::appendLog("%@", "There is not enough memory.");
            }
            platform::MainThread::perform([self, result, then] {
                if (self && !self->isClosed_) {
                    self->setActing(false);
                    then(*result);
                }
            });
        });
    } catch (const platform::Exception&) {
        setActing(false);
        tellNoThread();
    }
}

}  // namespace vornic

#endif
