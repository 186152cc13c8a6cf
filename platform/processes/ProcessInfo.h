#ifndef VORNIC_PLATFORM_PROCESSES_PROCESS_INFO_H
#define VORNIC_PLATFORM_PROCESSES_PROCESS_INFO_H

#include <cstdint>
#include <string>

namespace vornic::platform {

/// An operating-system version; zeros where nothing is known.
struct OperatingSystemVersion {
    std::int64_t major = 0;
    std::int64_t minor = 0;
    std::int64_t patch = 0;
    friend bool operator==(const OperatingSystemVersion&, const OperatingSystemVersion&) = default;
};

/// `VERSION_ID` of os-release(5) as major, minor and patch; zeros when there is none.
[[nodiscard]] OperatingSystemVersion operatingSystemVersion();
/// The readable name and version of the system: `PRETTY_NAME` of os-release(5), else "Linux".
[[nodiscard]] std::string operatingSystemVersionString();
/// Processors that are online, at least 1.
[[nodiscard]] long processorCount();
/// Physical memory in bytes.
[[nodiscard]] std::uint64_t physicalMemory();
/// A string that no other call, process or machine yields (a random UUID of RFC 4122 in upper
/// case).
[[nodiscard]] std::string globallyUniqueString();
/// The current date and time, "2026-11-21 07:05:00 +0000", always UTC.
[[nodiscard]] std::string currentDateDescription();

}  // namespace vornic::platform

#endif
