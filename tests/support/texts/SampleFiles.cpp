#include "tests/support/texts/SampleFiles.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace vornic::test {

std::optional<std::string> samplesFolder() {
    const char* const folder = std::getenv("VORNIC_SAMPLES");
    return folder == nullptr || *folder == '\0' ? std::nullopt : std::optional<std::string>(folder);
}

std::vector<std::string> filesBelow(const std::string& folder) {
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            paths.push_back(entry.path().string());
        }
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

}  // namespace vornic::test
