#ifndef VORNIC_FOUNDATION_LOG_BATCH_H
#define VORNIC_FOUNDATION_LOG_BATCH_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/log/LogQueue.h"

namespace vornic {

/// Log entries as the bytes of one write: each "DATE - TEXT\n" in UTF-8, bytes of a text that are
/// no UTF-8 replaced by U+FFFD.
class LogBatch {
  public:
    /// Takes the first entry and as many behind it as fit.
    /// @param room the batch ends with the entry that reaches this many bytes
    LogBatch(std::span<const LogQueue::Entry> entries, std::uint64_t room);

    [[nodiscard]] std::string_view bytes() const { return bytes_; }
    /// How many entries lie wholly within the first `byteCount` bytes.
    [[nodiscard]] std::size_t entriesWithin(std::size_t byteCount) const;
    /// The bytes of the first `entryCount` entries.
    [[nodiscard]] std::size_t bytesOf(std::size_t entryCount) const;

  private:
    std::string bytes_;
    /// Where each entry ends.
    std::vector<std::size_t> ends_;
};

}  // namespace vornic

#endif
