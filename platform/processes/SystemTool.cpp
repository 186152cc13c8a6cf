#include "platform/processes/SystemTool.h"

#include <algorithm>
#include <array>

#include "base/PathText.h"
#include "platform/files/FileSystem.h"

namespace vornic::platform {

std::string systemToolPath(const std::string& tool) {
    constexpr std::array kFolders{"/usr/bin", "/bin", "/usr/sbin", "/sbin"};
    const bool isSystems =
        std::find(kFolders.begin(), kFolders.end(), parentFolder(tool)) != kFolders.end();
    if (!isSystems || fileExists(tool)) {
        return tool;
    }
    for (const char* folder : kFolders) {
        std::string candidate = joinPath(folder, lastComponent(tool));
        if (isExecutableFile(candidate)) {
            return candidate;
        }
    }
    return tool;
}

}  // namespace vornic::platform
