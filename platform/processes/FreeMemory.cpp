#include "platform/processes/FreeMemory.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <malloc.h>
#include <sys/resource.h>

#include "platform/files/FileDescriptor.h"

namespace vornic::platform {
namespace {

/// The number behind a line's name, in KiB there and in bytes here.
std::optional<std::uint64_t> valueOf(std::string_view table, std::string_view name) {
    constexpr std::uint64_t kUnit = 1024;
    const std::size_t line = table.find(name);
    const std::size_t digits =
        line == std::string_view::npos ? line : table.find_first_of("0123456789", line);
    if (digits == std::string_view::npos) {
        return std::nullopt;
    }
    std::uint64_t value = 0;
    std::from_chars(table.data() + digits, table.data() + table.size(), value);
    return value * kUnit;
}

}  // namespace

std::optional<std::uint64_t> freeMemory() {
    constexpr std::size_t kMost = 16384;
    const FileDescriptor file(::open("/proc/meminfo", O_RDONLY | O_CLOEXEC));
    std::string table(kMost, '\0');
    table.resize(file ? readBlock(file.get(), table.data(), table.size()).length : 0);
    std::optional<std::uint64_t> free = valueOf(table, "MemAvailable:");
    if (free) {
        *free += valueOf(table, "SwapFree:").value_or(0);
    }
    struct rlimit limit {};
    if (getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY) {
        free = std::min<std::uint64_t>(free.value_or(limit.rlim_cur), limit.rlim_cur);
    }
    return free;
}

void giveFreedMemoryBack() {
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

}  // namespace vornic::platform
