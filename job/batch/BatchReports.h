#ifndef VORNIC_JOB_BATCH_BATCH_REPORTS_H
#define VORNIC_JOB_BATCH_BATCH_REPORTS_H

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "base/Error.h"
#include "platform/files/FileDescriptor.h"

namespace vornic {

/// What was reported on each file of a batch, in a nameless file of the temporary folder, so that
/// thousands of reports take no memory. Any thread.
class BatchReports {
  public:
    /// Keeps a report in place of an older one of the row.
    /// @return false, with the slot filled, when it could not be kept; then there is none.
    bool keep(std::size_t row, std::string_view report, ErrorSlot& error);
    [[nodiscard]] bool has(std::size_t row) const;
    /// The report on a row; "" when there is none or it cannot be read.
    [[nodiscard]] std::string of(std::size_t row) const;
    /// Forgets all.
    void clear();

  private:
    struct Span {
        std::uint64_t offset = 0;
        std::size_t length = 0;
    };

    [[nodiscard]] int open();

    mutable std::mutex mutex_;
    platform::FileDescriptor file_;
    std::uint64_t end_ = 0;
    std::unordered_map<std::size_t, Span> spans_;
};

}  // namespace vornic

#endif
