#ifndef VORNIC_APP_WINDOW_LOGGED_WAITING_H
#define VORNIC_APP_WINDOW_LOGGED_WAITING_H

#include <string>
#include <utility>

#include "foundation/log/QMLog.h"
#include "job/Waiting.h"

namespace vornic {

/// How an action of a window waits for a program that has the file: as long as that takes, unless
/// it is stopped. The log tells of it.
[[nodiscard]] inline Waiting loggedWaiting(StopToken stop = {}) {
    return {.tell =
                [](const std::string& path) {
                    QMLog::appendLog("Another program uses the file %@; waiting.", path);
                },
            .stop = std::move(stop)};
}

}  // namespace vornic

#endif
