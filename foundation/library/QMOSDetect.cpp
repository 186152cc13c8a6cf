#include "foundation/library/QMOSDetect.h"

#include <tuple>

#include "base/FormatString.h"

namespace vornic {

platform::OperatingSystemVersion QMOSDetect::version() {
    return platform::operatingSystemVersion();
}

bool QMOSDetect::isOSVersionAtLeast(std::int64_t major, std::int64_t minor, std::int64_t bugfix) {
    const platform::OperatingSystemVersion running = version();
    return std::tie(running.major, running.minor, running.patch) >= std::tie(major, minor, bugfix);
}

std::string QMOSDetect::osVersionString() {
    const platform::OperatingSystemVersion running = version();
    return formatString("%li.%li.%li", running.major, running.minor, running.patch);
}

std::string QMOSDetect::osxVersion() {
    return osVersionString();
}

bool QMOSDetect::isLeopardOrHigher() {
    return isOSVersionAtLeast(10, 5, 0);
}

bool QMOSDetect::isSnowLeopardOrHigher() {
    return isOSVersionAtLeast(10, 6, 0);
}

bool QMOSDetect::isLionOrHigher() {
    return isOSVersionAtLeast(10, 7, 0);
}

bool QMOSDetect::isMountainLionOrHigher() {
    return isOSVersionAtLeast(10, 8, 0);
}

bool QMOSDetect::isMavericksOrHigher() {
    return isOSVersionAtLeast(10, 9, 0);
}

bool QMOSDetect::isYosemiteOrHigher() {
    return isOSVersionAtLeast(10, 10, 0);
}

bool QMOSDetect::isElCapitanOrHigher() {
    return isOSVersionAtLeast(10, 11, 0);
}

bool QMOSDetect::isSierraOrHigher() {
    return isOSVersionAtLeast(10, 12, 0);
}

}  // namespace vornic
