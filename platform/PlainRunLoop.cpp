#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

#include "platform/MainThread.h"

namespace vornic::platform {

struct PlainRunLoop::State {
    std::mutex mutex;
    std::condition_variable posted;
    std::deque<std::function<void()>> pending;
};

PlainRunLoop::PlainRunLoop() : state_(std::make_unique<State>()) {}
PlainRunLoop::~PlainRunLoop() = default;

void PlainRunLoop::post(std::function<void()> function) {
    const std::lock_guard lock(state_->mutex);
    state_->pending.push_back(std::move(function));
    // Under the lock, so that the loop cannot be gone before the call returns.
    state_->posted.notify_one();
}

bool PlainRunLoop::dispatchOne(std::chrono::milliseconds limit) {
    // The clock's reach is shorter than that of the parameter.
    constexpr std::chrono::milliseconds kLongestWait = std::chrono::hours(24);
    std::function<void()> function;
    {
        std::unique_lock lock(state_->mutex);
        state_->posted.wait_for(lock, std::clamp(limit, {}, kLongestWait),
                                [this] { return !state_->pending.empty(); });
        if (state_->pending.empty()) {
            return false;
        }
        function = std::move(state_->pending.front());
        state_->pending.pop_front();
    }
    function();
    return true;
}

}  // namespace vornic::platform
