#include "platform/processes/ProcessInfo.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <optional>
#include <string_view>

#include <unistd.h>

#include "platform/files/FileSystem.h"
#include "platform/processes/OperatingSystemRelease.h"
#include "platform/processes/RandomBytes.h"

namespace vornic::platform {
namespace {

std::string releaseFile() {
    for (const char* path : {"/etc/os-release", "/usr/lib/os-release"}) {
        ErrorSlot ignored;
        if (std::optional<std::string> text = readFile(path, ignored)) {
            return std::move(*text);
        }
    }
    return "";
}

std::string describeDate(std::time_t second) {
    struct tm date {};
    if (gmtime_r(&second, &date) == nullptr) {
        return "";
    }
    std::array<char, 64> text{};
    const std::size_t length =
        std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S +0000", &date);
    return std::string(text.data(), length);
}

}  // namespace

OperatingSystemVersion operatingSystemVersion() {
    return readRelease(releaseFile()).version;
}

std::string operatingSystemVersionString() {
    return readRelease(releaseFile()).prettyName;
}

long processorCount() {
    return std::max(sysconf(_SC_NPROCESSORS_ONLN), 1L);
}

std::uint64_t physicalMemory() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGESIZE);
    return pages > 0 && pageSize > 0
               ? static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize)
               : 0;
}

std::string globallyUniqueString() {
    std::array<unsigned char, 16> bytes{};
    fillWithRandomBytes(bytes.data(), bytes.size());
    // Version 4 (random) of the variant that RFC 4122 describes.
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0FU) | 0x40U);
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3FU) | 0x80U);
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        if (index == 4 || index == 6 || index == 8 || index == 10) {
            text += '-';
        }
        text += kDigits[bytes[index] >> 4U];
        text += kDigits[bytes[index] & 0x0FU];
    }
    return text;
}

std::string currentDateDescription() {
    // Asked for with every log line, hence made anew only once a second and thread.
    // Kept in memory that every thread has from its beginning: the system ends a program that has
    // none left to note the end of an object with.
    thread_local std::time_t describedSecond = -1;
    thread_local std::array<char, 64> description{};
    struct timespec now {};
    clock_gettime(CLOCK_REALTIME, &now);
    if (now.tv_sec != describedSecond) {
        const std::string made = describeDate(now.tv_sec);
        description.fill('\0');
        made.copy(description.data(), description.size() - 1);
        describedSecond = now.tv_sec;
    }
    return description.data();
}

}  // namespace vornic::platform
