#ifndef VORNIC_APP_WINDOW_LOGGED_WAITING_H
#define VORNIC_APP_WINDOW_LOGGED_WAITING_H

#include <string>
#include <utility>

#include "foundation/log/QMLog.h"
#include "job/Waiting.h"
#include "platform/threads/MainThread.h"

namespace vornic {

/// Asks an action to end once the program quits.
[[nodiscard]] inline StopToken untilTheEnd() {
    return StopToken([] { return platform::MainThread::isShutDown(); });
}

/// How an action of a window waits for a program that has the file: until it is stopped or the
/// program quits. The log says so.
[[nodiscard]] inline Waiting loggedWaiting(StopToken stop = untilTheEnd()) {
    return {.tell =
                [](const std::string& path) {
                    QMLog::appendLog("Another program uses the file %@; waiting.", path);
                },
            .stop = std::move(stop)};
}

}  // namespace vornic

#endif
