#ifndef VORNIC_PLATFORM_PROCESSES_OPERATING_SYSTEM_RELEASE_H
#define VORNIC_PLATFORM_PROCESSES_OPERATING_SYSTEM_RELEASE_H

#include <string>
#include <string_view>

#include "platform/processes/ProcessInfo.h"

namespace vornic::platform {

/// What an os-release(5) file says.
struct OperatingSystemRelease {
    OperatingSystemVersion version;
    std::string prettyName;
};

/// Reads the text of an os-release file. A `VERSION_ID` that is missing or begins with no number
/// yields zeros, a missing `PRETTY_NAME` "Linux".
[[nodiscard]] OperatingSystemRelease readRelease(std::string_view text);

}  // namespace vornic::platform

#endif
