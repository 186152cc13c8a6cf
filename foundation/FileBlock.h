#ifndef VORNIC_FOUNDATION_FILE_BLOCK_H
#define VORNIC_FOUNDATION_FILE_BLOCK_H

#include <cstddef>
#include <memory>
#include <new>

namespace vornic {

/// Files are read and written in blocks of this many bytes.
inline constexpr std::size_t kFileBlockSize = std::size_t{64} * 1024;

using FileBlock = std::unique_ptr<char[]>;

/// Room for one block; null when memory is short.
[[nodiscard]] inline FileBlock makeFileBlock() {
    return FileBlock(new (std::nothrow) char[kFileBlockSize]);
}

}  // namespace vornic

#endif
