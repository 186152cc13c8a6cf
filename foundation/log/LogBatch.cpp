#include "foundation/log/LogBatch.h"

#include <algorithm>

#include "base/Utf8.h"
#include "platform/processes/ProcessInfo.h"

namespace vornic {

namespace {

/// Entries are gathered up to this many bytes.
constexpr std::size_t kLargestBatch = std::size_t{1} << 16U;

}  // namespace

LogBatch::LogBatch(std::span<const LogQueue::Entry> entries, std::uint64_t room) {
    const std::string prefix = platform::currentDateDescription() + " - ";
    const std::uint64_t limit = std::min<std::uint64_t>(room, kLargestBatch);
    for (const LogQueue::Entry& entry : entries) {
        bytes_ += prefix;
        appendAsValidUtf8(bytes_, entry.text);
        bytes_ += '\n';
        ends_.push_back(bytes_.size());
        if (bytes_.size() >= limit) {
            break;
        }
    }
}

std::size_t LogBatch::entriesWithin(std::size_t byteCount) const {
    const auto end = std::upper_bound(ends_.begin(), ends_.end(), byteCount);
    return static_cast<std::size_t>(end - ends_.begin());
}

std::size_t LogBatch::bytesOf(std::size_t entryCount) const {
    return entryCount == 0 ? 0 : ends_[entryCount - 1];
}

}  // namespace vornic
