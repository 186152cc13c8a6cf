#include "platform/threads/Thread.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "base/Exception.h"
#include "platform/crash/CrashStack.h"
#include "platform/threads/MainThread.h"

namespace vornic::platform {
namespace {

struct RunningThread {
    std::thread thread;
    /// Empty when the thread cannot be asked, or has been.
    std::function<void()> askToEnd;
};

struct Registry {
    std::mutex mutex;
    std::condition_variable changed;
    std::list<RunningThread> running;
    /// Their functions have returned; joining them takes no time.
    std::list<RunningThread> finished;
    /// How many callers wait in `joinDetachedThreads`.
    int joiners = 0;
};

/// Never destroyed: a thread that outlived its limit must not find it gone.
Registry& registry() {
    static Registry* const instance = new Registry;  // NOLINT(cppcoreguidelines-owning-memory)
    return *instance;
}

void joinFinished(Registry& threads) {
    std::list<RunningThread> ended;
    {
        const std::lock_guard lock(threads.mutex);
        ended.swap(threads.finished);
    }
    for (RunningThread& entry : ended) {
        entry.thread.join();
    }
}

void askToEnd(Registry& threads) {
    std::vector<std::function<void()>> requests;
    {
        const std::lock_guard lock(threads.mutex);
        for (RunningThread& entry : threads.running) {
            if (entry.askToEnd) {
                requests.push_back(std::exchange(entry.askToEnd, nullptr));
            }
        }
    }
    for (const std::function<void()>& request : requests) {
        request();
    }
}

void noteEnd(Registry& threads, std::list<RunningThread>::iterator self) {
    // What the request keeps alive goes while the thread still counts as running.
    std::function<void()> request;
    {
        const std::lock_guard lock(threads.mutex);
        request.swap(self->askToEnd);
    }
    request = nullptr;
    bool wakeMainThread = false;
    {
        const std::lock_guard lock(threads.mutex);
        threads.finished.splice(threads.finished.end(), threads.running, self);
        wakeMainThread = threads.joiners > 0;
        threads.changed.notify_all();
    }
    if (wakeMainThread) {
        MainThread::perform([] {});
    }
}

/// Makes ending threads wake the main thread while someone waits for them.
class Joining {
  public:
    explicit Joining(Registry& threads) : threads_(threads) { count(1); }
    ~Joining() { count(-1); }
    Joining(const Joining&) = delete;
    Joining& operator=(const Joining&) = delete;

  private:
    void count(int change) {
        const std::lock_guard lock(threads_.mutex);
        threads_.joiners += change;
    }
    Registry& threads_;
};

/// Waits a moment for a thread to end. @return true when none runs any more.
bool waitForEnd(Registry& threads, std::chrono::milliseconds limit) {
    askToEnd(threads);
    if (MainThread::isCurrent()) {
        MainThread::dispatchOne(limit);
    }
    std::unique_lock lock(threads.mutex);
    if (!MainThread::isCurrent()) {
        threads.changed.wait_for(lock, limit, [&] { return threads.running.empty(); });
    }
    return threads.running.empty();
}

}  // namespace

void detachNewThread(std::function<void()> function) {
    detachNewThread(std::move(function), nullptr);
}

void detachNewThread(std::function<void()> function, std::function<void()> askToEnd) {
    Registry& threads = registry();
    joinFinished(threads);
    // The new thread finds its own entry complete, because it needs the lock to look.
    const std::lock_guard lock(threads.mutex);
    const auto self = threads.running.emplace(threads.running.end());
    try {
        self->askToEnd = std::move(askToEnd);
        self->thread = std::thread([&threads, self, function = std::move(function)]() mutable {
            const CrashStack crashStack;
            function();
            function = nullptr;
            noteEnd(threads, self);
        });
    } catch (const std::system_error& failure) {
        threads.running.erase(self);
        throw Exception("NSGenericException",
                        std::string("A new thread cannot be started: ") + failure.what());
    }
}

void startUnattendedThread(std::function<void()> function) {
    try {
        std::thread([function = std::move(function)] {
            const CrashStack crashStack;
            function();
        }).detach();
    } catch (const std::system_error& failure) {
        throw Exception("NSGenericException",
                        std::string("A new thread cannot be started: ") + failure.what());
    }
}

bool performWhileDispatching(const std::function<void()>& function) {
    if (!MainThread::isCurrent()) {
        function();
        return true;
    }
    constexpr std::chrono::milliseconds kLongestEventWait(10);
    const auto hasEnded = std::make_shared<std::atomic<bool>>(false);
    try {
        detachNewThread([function, hasEnded] {
            function();
            *hasEnded = true;
        });
    } catch (const Exception&) {
        function();
        return true;
    }
    while (!*hasEnded && !MainThread::isShutDown()) {
        MainThread::dispatchOne(kLongestEventWait);
    }
    return *hasEnded;
}

bool joinDetachedThreads(std::chrono::milliseconds limit) {
    // Longer than any program waits, and within reach of the clock.
    constexpr std::chrono::milliseconds kLongestWait = std::chrono::hours(24);
    constexpr std::chrono::milliseconds kStep{50};
    Registry& threads = registry();
    const auto deadline = std::chrono::steady_clock::now() + std::min(limit, kLongestWait);
    const Joining joining(threads);
    bool ended = waitForEnd(threads, std::chrono::milliseconds(0));
    while (!ended && std::chrono::steady_clock::now() < deadline) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        ended = waitForEnd(threads, std::clamp(left, std::chrono::milliseconds(1), kStep));
    }
    joinFinished(threads);
    return ended;
}

}  // namespace vornic::platform
