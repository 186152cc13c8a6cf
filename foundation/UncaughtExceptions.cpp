#include "foundation/UncaughtExceptions.h"

#include <atomic>
#include <cstdlib>
#include <exception>

#include "foundation/QMLog.h"
#include "platform/ExceptionReason.h"

namespace vornic {

namespace {

std::terminate_handler previousHandler = nullptr;

void logAndDie() {
    // A second fault while the first is being logged must not start over.
    static std::atomic<bool> isLogging = false;
    if (!isLogging.exchange(true)) {
        QMLog::appendLogAndPrint("%@", platform::reasonOf(std::current_exception()));
        QMLog::finishWriting();
    }
    if (previousHandler != nullptr) {
        previousHandler();
    }
    std::abort();
}

}  // namespace

void logUncaughtExceptions() {
    static const bool kInstalled = [] {
        previousHandler = std::set_terminate(logAndDie);
        return true;
    }();
    static_cast<void>(kInstalled);
}

}  // namespace vornic
