#ifndef VORNIC_FOUNDATION_LIBRARY_QM_OS_DETECT_H
#define VORNIC_FOUNDATION_LIBRARY_QM_OS_DETECT_H

#include <cstdint>
#include <string>

#include "platform/processes/ProcessInfo.h"

namespace vornic {

/// The running operating system's version, read anew on every call. Any thread.
class QMOSDetect {
  public:
    /// Major, minor and patch; zeros when the platform gives none.
    [[nodiscard]] static platform::OperatingSystemVersion version();
    /// Compares `version` part by part, the major number first.
    [[nodiscard]] static bool isOSVersionAtLeast(std::int64_t major, std::int64_t minor,
                                                 std::int64_t bugfix);
    /// "10.15.0": all three numbers, always.
    [[nodiscard]] static std::string osVersionString();
    /// The same as `osVersionString`.
    [[nodiscard]] static std::string osxVersion();

    [[nodiscard]] static bool isLeopardOrHigher();
    [[nodiscard]] static bool isSnowLeopardOrHigher();
    [[nodiscard]] static bool isLionOrHigher();
    [[nodiscard]] static bool isMountainLionOrHigher();
    [[nodiscard]] static bool isMavericksOrHigher();
    [[nodiscard]] static bool isYosemiteOrHigher();
    [[nodiscard]] static bool isElCapitanOrHigher();
    [[nodiscard]] static bool isSierraOrHigher();
};

}  // namespace vornic

#endif
