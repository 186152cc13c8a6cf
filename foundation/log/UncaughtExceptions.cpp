#include "foundation/log/UncaughtExceptions.h"

#include <atomic>
#include <cstdlib>
#include <exception>
#include <string_view>

#include <unistd.h>

#include "foundation/log/QMLog.h"
#include "platform/crash/ExceptionReason.h"

namespace vornic {

namespace {

std::terminate_handler previousHandler = nullptr;

// Where memory has run out there may be none for the words either.
void logReason() noexcept {
    try {
        QMLog::appendLogAndPrint("%@", platform::reasonOf(std::current_exception()));
        QMLog::finishWriting();
    } catch (...) {
        static constexpr std::string_view kNothingLeft =
            "The program ends: there is not even the memory to say why.\n";
        static_cast<void>(write(STDERR_FILENO, kNothingLeft.data(), kNothingLeft.size()));
    }
}

void logAndDie() {
    // A second fault while the first is being logged must not start over.
    static std::atomic<bool> isLogging = false;
    if (!isLogging.exchange(true)) {
        logReason();
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
