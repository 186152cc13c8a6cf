#ifndef VORNIC_PLATFORM_VOLUMES_VOLUME_STATISTICS_H
#define VORNIC_PLATFORM_VOLUMES_VOLUME_STATISTICS_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "base/Error.h"

namespace vornic::platform {

/// What a volume reports about itself.
struct VolumeStatistics {
    /// The label that the volume was given; "" when it has none or does not tell.
    std::string label;
    std::uint64_t totalBytes = 0;
    /// What may still be written, without what is kept back for the super-user.
    std::uint64_t freeBytes = 0;
    bool isWritable = false;
};

/// Asks the volume that a path lies on. A volume that does not answer (a server that has gone) is
/// given up after `limit`; the thread that waits for it ends when it does answer. Any thread.
/// @return nothing when the volume cannot be asked, with the slot filled, or did not answer in
/// time,
///     with the slot as it was.
[[nodiscard]] std::optional<VolumeStatistics> volumeStatistics(const std::string& path,
                                                               std::chrono::milliseconds limit,
                                                               ErrorSlot& error);

}  // namespace vornic::platform

#endif
