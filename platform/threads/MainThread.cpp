#include "platform/threads/MainThread.h"

#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <set>
#include <thread>
#include <utility>

namespace vornic::platform {
namespace {

std::atomic<std::thread::id>& mainThreadId() {
    static std::atomic<std::thread::id> identifier{std::this_thread::get_id()};
    return identifier;
}

/// Static objects are initialised by the main thread, whoever asks first later on.
[[maybe_unused]] const std::thread::id kInitialisingThread = mainThreadId().load();

/// One call that waits for the main thread. The caller's function is touched only in the states
/// `pending` and `running`, in which the caller is still there.
class HandOver {
  public:
    explicit HandOver(const std::function<void()>& function) : function_(&function) {}

    /// On the main thread.
    void run() {
        if (!enter(Phase::running)) {
            return;
        }
        std::exception_ptr exception;
        try {
            (*function_)();
        } catch (...) {
            exception = std::current_exception();
        }
        const std::lock_guard lock(mutex_);
        exception_ = std::move(exception);
        phase_ = Phase::done;
        changed_.notify_all();
    }

    /// Ends the waiting unless the function runs already.
    void cancel() { static_cast<void>(enter(Phase::done)); }

    void wait() {
        std::exception_ptr exception;
        {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [this] { return phase_ == Phase::done; });
            exception = std::move(exception_);
        }
        if (exception) {
            std::rethrow_exception(std::move(exception));
        }
    }

  private:
    enum class Phase { pending, running, done };

    /// @return false when the call is no longer pending.
    bool enter(Phase phase) {
        const std::lock_guard lock(mutex_);
        if (phase_ != Phase::pending) {
            return false;
        }
        phase_ = phase;
        changed_.notify_all();
        return true;
    }

    const std::function<void()>* function_;
    std::mutex mutex_;
    std::condition_variable changed_;
    Phase phase_ = Phase::pending;
    std::exception_ptr exception_;
};

/// The loop in place and the calls that wait for it.
class Hub {
  public:
    void setLoop(std::shared_ptr<MainThreadLoop> loop) {
        const std::lock_guard lock(mutex_);
        loop_ = std::move(loop);
    }

    [[nodiscard]] std::shared_ptr<MainThreadLoop> loop() {
        const std::lock_guard lock(mutex_);
        if (!loop_) {
            loop_ = std::make_shared<PlainRunLoop>();
        }
        return loop_;
    }

    /// @return false after the shutdown, when nothing may wait any more.
    bool enrol(const std::shared_ptr<HandOver>& handOver) {
        const std::lock_guard lock(mutex_);
        return !down_ && waiting_.insert(handOver).second;
    }

    void dismiss(const std::shared_ptr<HandOver>& handOver) {
        const std::lock_guard lock(mutex_);
        waiting_.erase(handOver);
    }

    void setDown(bool down) {
        const std::lock_guard lock(mutex_);
        down_ = down;
        for (const std::shared_ptr<HandOver>& handOver : waiting_) {
            if (down) {
                handOver->cancel();
            }
        }
    }

    [[nodiscard]] bool isDown() {
        const std::lock_guard lock(mutex_);
        return down_;
    }

  private:
    std::mutex mutex_;
    std::shared_ptr<MainThreadLoop> loop_;
    std::set<std::shared_ptr<HandOver>> waiting_;
    bool down_ = false;
};

/// Never destroyed: threads may still hand over while static objects go.
Hub& hub() {
    static Hub* const instance = new Hub;  // NOLINT(cppcoreguidelines-owning-memory)
    return *instance;
}

/// Takes a call off the hub's list, also when its function threw.
class Enrolment {
  public:
    explicit Enrolment(std::shared_ptr<HandOver> handOver) : handOver_(std::move(handOver)) {}
    ~Enrolment() { hub().dismiss(handOver_); }
    Enrolment(const Enrolment&) = delete;
    Enrolment& operator=(const Enrolment&) = delete;

  private:
    std::shared_ptr<HandOver> handOver_;
};

}  // namespace

void MainThread::adopt() {
    mainThreadId().store(std::this_thread::get_id());
}

bool MainThread::isCurrent() {
    return mainThreadId().load() == std::this_thread::get_id();
}

void MainThread::setLoop(std::shared_ptr<MainThreadLoop> loop) {
    hub().setLoop(std::move(loop));
}

void MainThread::performAndWait(const std::function<void()>& function) {
    if (isCurrent()) {
        function();
        return;
    }
    const auto handOver = std::make_shared<HandOver>(function);
    if (!hub().enrol(handOver)) {
        return;
    }
    const Enrolment enrolment(handOver);
    hub().loop()->post([handOver] { handOver->run(); });
    handOver->wait();
}

void MainThread::perform(std::function<void()> function) {
    hub().loop()->post(std::move(function));
}

void MainThread::performAfter(std::chrono::milliseconds delay, std::function<void()> function) {
    hub().loop()->postAfter(delay, std::move(function));
}

bool MainThread::dispatchOne(std::chrono::milliseconds limit) {
    return hub().loop()->dispatchOne(limit);
}

void MainThread::shutdown() {
    hub().setDown(true);
}

bool MainThread::isShutDown() {
    return hub().isDown();
}

void MainThread::restart() {
    hub().setDown(false);
}

}  // namespace vornic::platform
