#include "platform/HeldPath.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/PathText.h"

namespace vornic::platform {
namespace {

/// "" for a folder that has been removed, or lies outside the process's root.
std::string pathOfFolder(const FileDescriptor& folder) {
    struct stat status {};
    std::error_code error;
    std::string path = std::filesystem::read_symlink(descriptorPath(folder.get()), error).string();
    const bool isThere = fstat(folder.get(), &status) == 0 && status.st_nlink > 0;
    return !error && isThere && path.starts_with('/') ? std::move(path) : std::string();
}

}  // namespace

std::string HeldPath::path() const {
    return joinPath(folderPath, name);
}

std::optional<HeldPath> holdPath(const std::string& path) {
    const std::string last = lastComponent(path);
    if (path.find('\0') != std::string::npos || last.empty() || last == "." || last == "..") {
        return std::nullopt;
    }
    HeldPath held;
    held.folder =
        FileDescriptor(::open(parentFolder(path).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!held.folder) {
        return std::nullopt;
    }
    held.folderPath = pathOfFolder(held.folder);
    held.name = last;
    return held.folderPath.empty() ? std::nullopt : std::optional(std::move(held));
}

}  // namespace vornic::platform
