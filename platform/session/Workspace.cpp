#include "platform/session/Workspace.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

#include <fcntl.h>

#include "base/PathText.h"
#include "base/Text.h"
#include "platform/files/Failure.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"
#include "platform/items/ExtendedAttributes.h"
#include "platform/items/FileAttributes.h"
#include "platform/rights/HeldPath.h"
#include "platform/volumes/Trash.h"

namespace vornic::platform {
namespace {

/// The folder that the files are in, whatever is put in its place later.
bool hold(const std::string& folder, HeldPath& held, ErrorSlot& error) {
    held.folder = FileDescriptor(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!held.folder || folder.find('\0') != std::string::npos) {
        return failFolder(error, folder, "opened", held.folder ? EINVAL : errno);
    }
    std::error_code unknown;
    const std::string path =
        std::filesystem::read_symlink(descriptorPath(held.folder.get()), unknown).string();
    held.folderPath =
        !unknown && path.starts_with('/') ? path : absolutePath(folder).value_or(folder);
    return true;
}

constexpr std::array<std::string_view, 17> kPackageExtensions{
    ".app",  ".bundle", ".component", ".download",  ".fcpbundle",    ".imovielibrary",
    ".kext", ".mpkg",   ".pkg",       ".plugin",    ".prefpane",     ".qlgenerator",
    ".rtfd", ".saver",  ".workflow",  ".xcodeproj", ".photoslibrary"};

bool hasPackageExtension(const std::string& path) {
    const std::string extension = lowercased(splitExtension(lastComponent(path)).extension);
    return std::find(kPackageExtensions.begin(), kPackageExtensions.end(), extension) !=
           kPackageExtensions.end();
}

/// The flag is in bytes 8 and 9 of the structure, most significant byte first.
bool hasBundleFlag(const std::string& path) {
    constexpr std::size_t kFlagsOffset = 8;
    constexpr unsigned kHasBundle = 0x20;
    const ErrnoOr<FileDescriptor> folder = openForMetadata(path, true);
    if (!folder) {
        return false;
    }
    const std::string info =
        extendedAttribute(folder->get(), kFinderInfoAttribute).value().value_or("");
    return info.size() > kFlagsOffset &&
           (static_cast<unsigned char>(info[kFlagsOffset]) & kHasBundle) != 0;
}

}  // namespace

bool recycle(const std::string& sourceFolder, const std::string& destination,
             const std::vector<std::string>& files, ErrorSlot& error) {
    const std::optional<Trash> trash = Trash::open(destination, error);
    HeldPath item;
    if (!trash || !hold(sourceFolder, item, error)) {
        return false;
    }
    return std::all_of(files.begin(), files.end(), [&](const std::string& name) {
        item.name = name;
        return trash->take(item, name, error).has_value();
    });
}

bool isFilePackage(const std::string& path) {
    return isDirectory(path) && (hasPackageExtension(path) || hasBundleFlag(path));
}

}  // namespace vornic::platform
