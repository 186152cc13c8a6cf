#ifndef VORNIC_FOUNDATION_COPIES_BLOCK_DIGESTER_H
#define VORNIC_FOUNDATION_COPIES_BLOCK_DIGESTER_H

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <new>
#include <thread>
#include <vector>

#include "platform/files/Digest.h"

namespace vornic {

/// Files are read and written in blocks of this many bytes.
inline constexpr std::size_t kFileBlockSize = std::size_t{64} * 1024;

using FileBlock = std::unique_ptr<char[]>;

/// Room for one block; null when memory is short.
[[nodiscard]] inline FileBlock makeFileBlock() {
    return FileBlock(new (std::nothrow) char[kFileBlockSize]);
}

/// Feeds blocks to digests on a thread of its own, while its caller reads and writes the next ones.
/// The blocks are its own, a fixed number, taken and given back. Blocks of one digest are fed in
/// the order in which they were given back. One calling thread.
class BlockDigester {
  public:
    /// Sets the blocks aside. @return false when memory is short.
    [[nodiscard]] bool allocate(std::size_t blocks);
    /// Starts the thread. Without it, and where none can be had, the caller's own does the work.
    void start();
    BlockDigester() = default;
    ~BlockDigester() { finish(); }
    BlockDigester(const BlockDigester&) = delete;
    BlockDigester& operator=(const BlockDigester&) = delete;

    /// A block that is free, waited for when none is. At most all but one may be held at a time.
    [[nodiscard]] FileBlock take();
    /// Gives a block back.
    /// @param digest is fed the block's first `count` bytes, at the latest in `finish`; null: none.
    void giveBack(FileBlock block, std::size_t count, platform::Digest* digest);
    /// Waits until all that was given back is digested, and ends the thread.
    void finish();

  private:
    struct Work {
        FileBlock block;
        std::size_t count = 0;
        platform::Digest* digest = nullptr;
    };
    void run();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<FileBlock> free_;
    std::vector<Work> waiting_;
    bool ending_ = false;
    std::thread thread_;
};

}  // namespace vornic

#endif
