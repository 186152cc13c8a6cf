#include "platform/processes/PipeReader.h"

#include <cerrno>
#include <utility>

#include <sys/eventfd.h>

#include "base/Error.h"
#include "base/Exception.h"
#include "platform/processes/Pipe.h"

namespace vornic::platform {

PipeReader::PipeReader(FileDescriptor readingEnd)
    : readingEnd_(std::move(readingEnd)), wakeUp_(eventfd(0, EFD_CLOEXEC)) {
    if (!wakeUp_) {
        throw Exception("NSFileHandleOperationException",
                        posixError("A stream cannot be waited for", errno).description);
    }
    wakeUp_ = aboveStandardStreams(std::move(wakeUp_));
}

std::string PipeReader::readAvailable() {
    {
        const std::lock_guard lock(mutex_);
        if (closed_) {
            return "";
        }
        isBeingRead_ = true;
    }
    std::string bytes;
    try {
        if (!waitUntilReadable(readingEnd_.get(), wakeUp_.get()).second) {
            bytes = platform::readAvailable(readingEnd_.get());
        }
    } catch (...) {
        finishReading();
        throw;
    }
    finishReading();
    return bytes;
}

void PipeReader::close() {
    const std::lock_guard lock(mutex_);
    if (std::exchange(closed_, true)) {
        return;
    }
    if (isBeingRead_) {
        // The reader closes the descriptor: its number must not become another file's before.
        static_cast<void>(eventfd_write(wakeUp_.get(), 1));
    } else {
        static_cast<void>(readingEnd_.close());
    }
}

void PipeReader::finishReading() {
    const std::lock_guard lock(mutex_);
    isBeingRead_ = false;
    if (closed_) {
        static_cast<void>(readingEnd_.close());
    }
}

}  // namespace vornic::platform
