#ifndef VORNIC_FOUNDATION_LOG_QUEUE_H
#define VORNIC_FOUNDATION_LOG_QUEUE_H

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace vornic {

/// Texts that wait to be written one after the other, in the order in which they were queued. One
/// thread at a time writes: a worker thread of the queue's own, started when it is first needed, or
/// a thread that waits in `finish`, which then writes in place instead of waiting for a change of
/// threads. The worker rests while there is nothing to do and never keeps a process from ending.
///
/// A text queued by the running writer itself goes ahead of all that wait, right behind the text
/// being written. The queue must outlive its worker, so it is never destroyed before `close`. No
/// operation throws, and none needs memory while it holds the queue's lock but `add`, which does
/// without. Any thread.
class LogQueue {
  public:
    struct Entry {
        std::string_view text;
        /// The text's length in UTF-16 units.
        std::size_t units = 0;
    };
    /// Writes one or more of the entries, from the front, and returns how many. There is at least
    /// one. When it throws, the first entry counts as lost and the others as not yet written.
    using Writer = std::function<std::size_t(std::span<const Entry>)>;

    explicit LogQueue(Writer writer) : writer_(std::move(writer)) {}
    LogQueue(const LogQueue&) = delete;
    LogQueue& operator=(const LogQueue&) = delete;

    /// Queues a text. After `close` it is dropped.
    /// @param wakesWorker false when the caller calls `finish` or `wake` right after.
    /// @return false when there is no memory for it: the text is lost.
    bool add(std::string_view text, std::size_t units, bool wakesWorker) noexcept;
    /// Sees to it that what is queued is written soon.
    void wake() noexcept;
    /// Returns when everything queued before the call is written; at once when called by the
    /// running writer, which cannot wait for itself.
    void finish() noexcept;
    /// True on the thread whose writer is running.
    [[nodiscard]] bool isWriter();
    /// The number of texts not yet written, the one being written included.
    [[nodiscard]] std::size_t count();
    /// Drops every text whose writing has not begun.
    void cancelAll() noexcept;
    /// Ends the worker, waiting for a write that runs (a second at most), and drops what is or will
    /// be queued.
    void close() noexcept;

    /// Before fork(2): returns with the queue's lock held and nothing being written, but for what
    /// the calling thread itself writes. One of the next two must follow on the same thread.
    void holdForFork() noexcept;
    /// After fork(2), in the process that called it.
    void goOnAfterFork() noexcept { mutex_.unlock(); }
    /// After fork(2), in the copy: it has no worker until a text starts one, and leaves what waits
    /// to the process that it was copied from.
    void goOnInForkedCopy() noexcept;

  private:
    using Lock = std::unique_lock<std::mutex>;

    /// Texts in one piece of memory, so that queuing one costs a copy and no allocation of its own.
    struct Texts {
        struct Length {
            std::size_t bytes = 0;
            std::size_t units = 0;
        };
        std::string bytes;
        std::vector<Length> lengths;
        /// @return false, with nothing added, when there is no memory for it.
        [[nodiscard]] bool add(std::string_view text, std::size_t units) noexcept;
        void clear() noexcept;
    };

    void run();
    void startWorker();
    [[nodiscard]] bool isRunner() const {
        return isRunning_ && runner_ == std::this_thread::get_id();
    }
    [[nodiscard]] bool hasWork() const { return !waiting_.lengths.empty(); }
    void drain(Lock& lock, std::uint64_t target);
    void writeAll(Lock& lock, const Texts& texts, bool counts);
    [[nodiscard]] std::size_t handToWriter(std::span<const Entry> entries) noexcept;
    void writeUrgent(Lock& lock);
    void dropWaiting();

    Writer writer_;
    std::mutex mutex_;
    std::condition_variable workToDo_;
    std::condition_variable progress_;
    Texts waiting_;
    Texts urgent_;
    /// How many texts were queued and how many of them are written or dropped, since the beginning;
    /// those that the writer queued itself do not count.
    std::uint64_t queued_ = 0;
    std::uint64_t done_ = 0;
    bool isRunning_ = false;
    std::thread::id runner_;
    std::size_t cancellations_ = 0;
    std::size_t waiters_ = 0;
    bool hasWorker_ = false;
    bool workerStarts_ = false;
    bool workerSleeps_ = false;
    bool isClosed_ = false;
};

}  // namespace vornic

#endif
