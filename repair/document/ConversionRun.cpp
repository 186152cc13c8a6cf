#include "repair/document/ConversionRun.h"

namespace vornic {

void ConversionRun::stop() {
    const std::lock_guard lock(mutex_);
    isStopped_ = true;
}

bool ConversionRun::isStopped() const {
    const std::lock_guard lock(mutex_);
    return isStopped_;
}

bool ConversionRun::beginWriting() {
    const std::lock_guard lock(mutex_);
    isWriting_ = !isStopped_;
    return isWriting_;
}

void ConversionRun::endWriting() {
    const std::lock_guard lock(mutex_);
    isWriting_ = false;
    written_.notify_all();
}

void ConversionRun::waitUntilWritten() const {
    std::unique_lock lock(mutex_);
    written_.wait(lock, [this] { return !isWriting_; });
}

void ConversionRun::end() {
    const std::lock_guard lock(mutex_);
    hasEnded_ = true;
}

bool ConversionRun::hasEnded() const {
    const std::lock_guard lock(mutex_);
    return hasEnded_;
}

bool ConversionRun::mayWrite() const {
    const std::lock_guard lock(mutex_);
    return isWriting_ || (!isStopped_ && !hasEnded_);
}

}  // namespace vornic
