#include "foundation/copies/BlockDigester.h"

#include <system_error>
#include <utility>

#include "platform/crash/CrashStack.h"

namespace vornic {

bool BlockDigester::allocate(std::size_t blocks) {
    while (free_.size() < blocks) {
        FileBlock block = makeFileBlock();
        if (!block) {
            return false;
        }
        free_.push_back(std::move(block));
    }
    return true;
}

void BlockDigester::start() {
    try {
        thread_ = std::thread([this] { run(); });
    } catch (const std::system_error&) {
        // Slower, but no less right.
        thread_ = std::thread();
    }
}

FileBlock BlockDigester::take() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !free_.empty(); });
    FileBlock block = std::move(free_.back());
    free_.pop_back();
    return block;
}

void BlockDigester::giveBack(FileBlock block, std::size_t count, platform::Digest* digest) {
    if (digest != nullptr && !thread_.joinable()) {
        digest->update(block.get(), count);
        digest = nullptr;
    }
    const std::lock_guard lock(mutex_);
    if (digest == nullptr) {
        free_.push_back(std::move(block));
        return;
    }
    waiting_.push_back({.block = std::move(block), .count = count, .digest = digest});
    changed_.notify_one();
}

void BlockDigester::finish() {
    if (!thread_.joinable()) {
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
        changed_.notify_one();
    }
    thread_.join();
}

void BlockDigester::run() {
    const platform::CrashStack crashStack;
    std::vector<Work> taken;
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return !waiting_.empty() || ending_; });
        if (waiting_.empty()) {
            return;
        }
        // All at once, for each hand-over may cost a switch between threads.
        taken.swap(waiting_);
        lock.unlock();
        for (const Work& work : taken) {
            work.digest->update(work.block.get(), work.count);
        }
        lock.lock();
        for (Work& work : taken) {
            free_.push_back(std::move(work.block));
        }
        taken.clear();
        changed_.notify_one();
    }
}

}  // namespace vornic
