#include "foundation/UncaughtExceptions.h"

#include <atomic>
#include <cstdlib>
#include <exception>
#include <string>

#include "foundation/QMLog.h"
#include "platform/Exception.h"

namespace vornic {

namespace {

std::terminate_handler previousHandler = nullptr;

std::string reasonOf(const std::exception_ptr& pointer) {
    if (!pointer) {
        return "terminated without an exception";
    }
    try {
        std::rethrow_exception(pointer);
    } catch (const platform::Exception& exception) {
        return exception.reason();
    } catch (const std::exception& exception) {
        return exception.what();
    } catch (...) {
        return "exception of an unknown type";
    }
}

void logAndDie() {
    // A second fault while the first is being logged must not start over.
    static std::atomic<bool> isLogging = false;
    if (!isLogging.exchange(true)) {
        QMLog::appendLogAndPrint("%@", reasonOf(std::current_exception()));
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
