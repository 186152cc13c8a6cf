#ifndef VORNIC_PLATFORM_ITEM_STATUS_H
#define VORNIC_PLATFORM_ITEM_STATUS_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace vornic::platform {

/// What the system tells of an item. A link is told of by itself, not by its target.
struct ItemStatus {
    using Date = std::chrono::system_clock::time_point;

    bool isFolder = false;
    bool isLink = false;
    /// Bytes; of a link the length of its target's path.
    std::uint64_t size = 0;
    Date modified;
    /// Nothing on a volume that does not keep it.
    std::optional<Date> created;
};

/// The status of what stands at the path, or nothing. Any thread.
[[nodiscard]] std::optional<ItemStatus> itemStatus(const std::string& path);

}  // namespace vornic::platform

#endif
