#include "platform/processes/Console.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <string>

#include <unistd.h>

#include "base/PathText.h"
#include "platform/files/FileDescriptor.h"
#include "platform/settings/Bundle.h"

namespace vornic::platform {
namespace {

std::string localTime() {
    constexpr long kNanosecondsAMillisecond = 1'000'000;
    struct timespec now {};
    clock_gettime(CLOCK_REALTIME, &now);
    struct tm date {};
    localtime_r(&now.tv_sec, &date);
    std::array<char, 64> second{};
    const std::size_t length =
        std::strftime(second.data(), second.size(), "%Y-%m-%d %H:%M:%S", &date);
    std::string millisecond = std::to_string(now.tv_nsec / kNanosecondsAMillisecond);
    millisecond.insert(0, 3 - millisecond.size(), '0');
    return std::string(second.data(), length) + "." + millisecond;
}

}  // namespace

void consoleLog(std::string_view text) {
    std::string line = localTime();
    line.append(" ").append(lastComponent(executablePath()));
    line.append("[").append(std::to_string(getpid())).append("] ");
    line.append(text).append("\n");
    // A console that cannot be written has nowhere to tell about it.
    static_cast<void>(writeAll(STDERR_FILENO, line.data(), line.size()));
}

}  // namespace vornic::platform
