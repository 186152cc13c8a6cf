#ifndef VORNIC_PLATFORM_ITEMS_ITEM_STATUS_H
#define VORNIC_PLATFORM_ITEMS_ITEM_STATUS_H

#include <cstdint>
#include <optional>
#include <string>

#include "base/Error.h"
#include "platform/items/FileDates.h"

namespace vornic::platform {

/// What the system says about an item. A link is described itself, not its target.
struct ItemStatus {
    bool isFolder = false;
    bool isLink = false;
    /// Bytes; of a link the length of its target's path.
    std::uint64_t size = 0;
    /// When it was made; nothing on a volume that does not keep it.
    std::optional<FileDate> created;
};

/// The status of what stands at the path, or nothing. Any thread.
[[nodiscard]] std::optional<ItemStatus> itemStatus(const std::string& path);

/// Why a look at the path, links followed, says nothing about it: a folder that this user may not
/// look into, a dead server, links that lead to each other. Nothing when something is there, and
/// when the answer is that nothing is. Any thread.
[[nodiscard]] ErrorSlot failedLook(const std::string& path);

}  // namespace vornic::platform

#endif
