#include "foundation/files/FolderEntries.h"

#include "platform/files/FileSystem.h"

namespace vornic {

std::vector<std::string> folderEntries(const std::string& folder) {
    ErrorSlot unreadable;
    return platform::namesInFolder(folder, unreadable).value_or(std::vector<std::string>());
}

}  // namespace vornic
