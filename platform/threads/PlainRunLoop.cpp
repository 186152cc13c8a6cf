#include <algorithm>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <utility>

#include "platform/threads/MainThread.h"

namespace vornic::platform {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

/// The moment that lies `span` ahead, within the reach of the clock, which is shorter than that of
/// the parameter.
Clock::time_point momentAfter(milliseconds span) {
    constexpr milliseconds kLongest = std::chrono::hours(24 * 365);
    return Clock::now() + std::clamp(span, milliseconds::zero(), kLongest);
}

}  // namespace

struct PlainRunLoop::State {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> pending;
    std::multimap<Clock::time_point, std::function<void()>> later;

    /// Puts what has become due behind what is pending, so that neither keeps the other waiting.
    void queueDue() {
        const auto end = later.upper_bound(Clock::now());
        for (auto due = later.begin(); due != end; due = later.erase(due)) {
            pending.push_back(std::move(due->second));
        }
    }

    /// Waits until something is pending. @return false when the moment came first.
    bool waitForPending(std::unique_lock<std::mutex>& lock, Clock::time_point end) {
        for (queueDue(); pending.empty(); queueDue()) {
            if (Clock::now() >= end) {
                return false;
            }
            changed.wait_until(lock, later.empty() ? end : std::min(end, later.begin()->first));
        }
        return true;
    }
};

PlainRunLoop::PlainRunLoop() : state_(std::make_unique<State>()) {}
PlainRunLoop::~PlainRunLoop() = default;

void PlainRunLoop::post(std::function<void()> function) {
    const std::lock_guard lock(state_->mutex);
    state_->pending.push_back(std::move(function));
    // Under the lock, so that the loop cannot be gone before the call returns.
    state_->changed.notify_one();
}

void PlainRunLoop::postAfter(milliseconds delay, std::function<void()> function) {
    const std::lock_guard lock(state_->mutex);
    state_->later.emplace(momentAfter(delay), std::move(function));
    state_->changed.notify_one();
}

bool PlainRunLoop::dispatchOne(milliseconds limit) {
    std::function<void()> function;
    {
        std::unique_lock lock(state_->mutex);
        if (!state_->waitForPending(lock, momentAfter(limit))) {
            return false;
        }
        function = std::move(state_->pending.front());
        state_->pending.pop_front();
    }
    function();
    return true;
}

}  // namespace vornic::platform
