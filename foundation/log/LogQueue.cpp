#include "foundation/log/LogQueue.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <exception>
#include <memory>
#include <utility>

#include "platform/crash/CrashStack.h"

namespace vornic {

namespace {

/// How long the worker looks for more work before it sleeps until it is woken: waking it costs the
/// caller more than the queuing itself, so lines that follow each other closely must not pay it.
constexpr std::chrono::microseconds kLookAround{500};
constexpr int kLooksBeforeSleep = 20;
constexpr std::chrono::seconds kLongestClose{1};
/// Texts handed to the writer at a time.
constexpr std::size_t kLargestBatch = 256;
/// Buffers that a backlog has blown up beyond this are given back.
constexpr std::size_t kLargestKeptBuffer = std::size_t{1} << 20U;

/// Keeps signals meant for the program away from the thread that is started meanwhile; those that a
/// fault of the thread itself raises stay open.
class SignalsBlocked {
  public:
    SignalsBlocked() {
        sigset_t blocked;
        sigfillset(&blocked);
        for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
            sigdelset(&blocked, fault);
        }
        pthread_sigmask(SIG_SETMASK, &blocked, &previous_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

  private:
    sigset_t previous_{};
};

}  // namespace

bool LogQueue::Texts::add(std::string_view text, std::size_t units) noexcept {
    const std::size_t before = bytes.size();
    try {
        bytes += text;
        lengths.push_back({.bytes = text.size(), .units = units});
        return true;
    } catch (const std::exception&) {
        bytes.resize(before);
        return false;
    }
}

void LogQueue::Texts::clear() noexcept {
    bytes.clear();
    lengths.clear();
    if (bytes.capacity() > kLargestKeptBuffer) {
        std::string().swap(bytes);
    }
    if (lengths.capacity() * sizeof(Length) > kLargestKeptBuffer) {
        std::vector<Length>().swap(lengths);
    }
}

bool LogQueue::add(std::string_view text, std::size_t units, bool wakesWorker) noexcept {
    {
        const Lock lock(mutex_);
        if (isClosed_) {
            return true;
        }
        if (isRunner()) {
            return urgent_.add(text, units);
        }
        if (!waiting_.add(text, units)) {
            return false;
        }
        ++queued_;
        wakesWorker = wakesWorker && (workerSleeps_ || !hasWorker_);
    }
    if (wakesWorker) {
        wake();
    }
    return true;
}

void LogQueue::wake() noexcept {
    const Lock lock(mutex_);
    if (!hasWorker_ && !isClosed_) {
        startWorker();
    } else if (workerSleeps_) {
        workToDo_.notify_one();
    }
}

void LogQueue::startWorker() {
    const SignalsBlocked signalsBlocked;
    try {
        std::thread([this] { run(); }).detach();
        hasWorker_ = true;
        workerStarts_ = true;
    } catch (const std::exception&) {
        // Without a thread, or the memory for one, the texts wait for the next `finish`.
    }
}

void LogQueue::run() {
    const platform::CrashStack crashStack;
    Lock lock(mutex_);
    workerStarts_ = false;
    progress_.notify_all();
    int looks = 0;
    while (!isClosed_) {
        if (hasWork() && !isRunning_) {
            drain(lock, queued_);
            looks = 0;
        } else if (looks < kLooksBeforeSleep) {
            ++looks;
            workToDo_.wait_for(lock, kLookAround);
        } else {
            workerSleeps_ = true;
            workToDo_.wait(lock);
            workerSleeps_ = false;
            looks = 0;
        }
    }
    hasWorker_ = false;
    progress_.notify_all();
}

void LogQueue::finish() noexcept {
    Lock lock(mutex_);
    if (isRunner()) {
        return;
    }
    const std::uint64_t target = queued_;
    while (done_ < target) {
        if (!isRunning_) {
            drain(lock, target);
            continue;
        }
        ++waiters_;
        progress_.wait(lock);
        --waiters_;
    }
    if (hasWork() && workerSleeps_) {
        workToDo_.notify_one();
    }
}

bool LogQueue::isWriter() {
    const Lock lock(mutex_);
    return isRunner();
}

std::size_t LogQueue::count() {
    const Lock lock(mutex_);
    return static_cast<std::size_t>(queued_ - done_);
}

void LogQueue::cancelAll() noexcept {
    const Lock lock(mutex_);
    dropWaiting();
}

void LogQueue::dropWaiting() {
    done_ += waiting_.lengths.size();
    waiting_.clear();
    ++cancellations_;
}

void LogQueue::close() noexcept {
    Lock lock(mutex_);
    dropWaiting();
    isClosed_ = true;
    workToDo_.notify_all();
    if (isRunner()) {
        return;
    }
    ++waiters_;
    progress_.wait_for(lock, kLongestClose, [&] { return !hasWorker_ && !isRunning_; });
    --waiters_;
}

void LogQueue::holdForFork() noexcept {
    Lock lock(mutex_);
    ++waiters_;
    // A thread that starts may hold locks of the C library, or of a sanitizer, that the copy would
    // wait for.
    progress_.wait(lock, [this] { return (!isRunning_ || isRunner()) && !workerStarts_; });
    --waiters_;
    lock.release();
}

void LogQueue::goOnInForkedCopy() noexcept {
    // Threads that are not there any more wait for both: their destructors would wait for them.
    std::construct_at(&workToDo_);
    std::construct_at(&progress_);
    hasWorker_ = false;
    workerStarts_ = false;
    workerSleeps_ = false;
    waiters_ = 0;
    dropWaiting();
    mutex_.unlock();
}

/// Writes as the one runner until everything up to `target` is done.
void LogQueue::drain(Lock& lock, std::uint64_t target) {
    isRunning_ = true;
    runner_ = std::this_thread::get_id();
    Texts texts;
    while (done_ < target && hasWork()) {
        std::swap(texts, waiting_);
        writeAll(lock, texts, true);
        texts.clear();
    }
    isRunning_ = false;
    if (waiting_.bytes.capacity() == 0) {
        std::swap(texts, waiting_);
    }
    progress_.notify_all();
}

/// Hands the texts to the writer, some at a time, until they are written or cancelled.
void LogQueue::writeAll(Lock& lock, const Texts& texts, bool counts) {
    const std::size_t cancellations = cancellations_;
    std::array<Entry, kLargestBatch> entries;
    std::size_t next = 0;
    std::size_t position = 0;
    while (next < texts.lengths.size() && cancellations == cancellations_) {
        lock.unlock();
        const std::size_t count = std::min(texts.lengths.size() - next, kLargestBatch);
        std::size_t end = position;
        for (std::size_t i = 0; i < count; ++i) {
            const Texts::Length& length = texts.lengths[next + i];
            entries[i] = {.text = std::string_view(texts.bytes).substr(end, length.bytes),
                          .units = length.units};
            end += length.bytes;
        }
        const std::size_t written = handToWriter({entries.data(), count});
        for (std::size_t i = 0; i < written; ++i) {
            position += entries[i].text.size();
        }
        next += written;
        lock.lock();
        writeUrgent(lock);
        done_ += counts ? written : 0;
        if (waiters_ > 0) {
            progress_.notify_all();
        }
    }
    done_ += counts ? texts.lengths.size() - next : 0;
}

std::size_t LogQueue::handToWriter(std::span<const Entry> entries) noexcept {
    try {
        return writer_(entries);
    } catch (...) {
        return 1;
    }
}

/// Writes what the writer itself has queued, and what writing that queues in its turn.
void LogQueue::writeUrgent(Lock& lock) {
    while (!urgent_.lengths.empty()) {
        const Texts texts = std::exchange(urgent_, {});
        writeAll(lock, texts, false);
    }
}

}  // namespace vornic
