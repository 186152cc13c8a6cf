#include "foundation/log/LocalTimeStamp.h"

#include <array>
#include <chrono>
#include <ctime>
#include <thread>

#include "platform/files/FileSystem.h"

namespace vornic {

std::string localTimeStamp() {
    const std::time_t now = std::time(nullptr);
    struct tm date {};
    localtime_r(&now, &date);
    std::array<char, 32> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y%m%d%H%M%S", &date);
    return {text.data(), length};
}

std::string freeStampedPath(const std::function<std::string()>& stampedPath) {
    constexpr std::chrono::milliseconds kStep(20);
    constexpr int kMostSteps = 100;
    std::string path = stampedPath();
    for (int step = 0; step < kMostSteps && platform::nodeExists(path); ++step) {
        std::this_thread::sleep_for(kStep);
        path = stampedPath();
    }
    return path;
}

}  // namespace vornic
