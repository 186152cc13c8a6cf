#include "platform/threads/BackgroundQueue.h"

#include <deque>
#include <mutex>
#include <utility>

#include "base/Exception.h"
#include "platform/threads/Thread.h"

namespace vornic::platform {
namespace {

struct State {
    std::mutex mutex;
    std::deque<std::function<void()>> waiting;
    std::size_t threads = 0;
};

/// Never destroyed: a thread that outlives `main` must not find it gone.
State& state() {
    static State* const instance = new State;  // NOLINT(cppcoreguidelines-owning-memory)
    return *instance;
}

/// The next function, or an empty one, with which the calling thread counts as ended.
std::function<void()> takeNext(State& queue) {
    const std::lock_guard lock(queue.mutex);
    if (queue.waiting.empty()) {
        --queue.threads;
        return nullptr;
    }
    std::function<void()> next = std::move(queue.waiting.front());
    queue.waiting.pop_front();
    return next;
}

void work() {
    State& queue = state();
    while (const std::function<void()> function = takeNext(queue)) {
        function();
    }
}

/// @return true when a new thread is to be started for what was added.
bool add(State& queue, std::function<void()> function) {
    const std::lock_guard lock(queue.mutex);
    queue.waiting.push_back(std::move(function));
    if (queue.threads == BackgroundQueue::kMostThreads) {
        return false;
    }
    ++queue.threads;
    return true;
}

/// @return true when no other thread will do what is waiting.
bool noteMissingThread(State& queue) {
    const std::lock_guard lock(queue.mutex);
    if (queue.threads > 1) {
        --queue.threads;
        return false;
    }
    return true;
}

}  // namespace

void BackgroundQueue::perform(std::function<void()> function) {
    State& queue = state();
    if (!add(queue, std::move(function))) {
        return;
    }
    try {
        detachNewThread(work);
    } catch (const Exception&) {
        if (noteMissingThread(queue)) {
            work();
        }
    }
}

}  // namespace vornic::platform
