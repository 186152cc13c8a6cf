#include "platform/Workspace.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <string_view>

#include <sys/stat.h>

#include "platform/ExtendedAttributes.h"
#include "platform/Failure.h"
#include "platform/FileAttributes.h"
#include "platform/FileDescriptor.h"
#include "platform/FileSystem.h"
#include "platform/FileTransfer.h"
#include "platform/PathText.h"

namespace vornic::platform {
namespace {

bool makeTrash(const std::string& path, ErrorSlot& error) {
    if (!path.starts_with('/') || path.find('\0') != std::string::npos) {
        return failFolder(error, path, "used as the Trash", EINVAL);
    }
    // Only the Trash itself is made: a home folder that isn't there must not come to be by this.
    const int errorNumber = mkdir(path.c_str(), 0700) == 0 ? 0 : errno;
    return errorNumber == 0 || isDirectory(path) || failFolder(error, path, "made", errorNumber);
}

/// "Cut.xml", then "Cut 2.xml", "Cut 3.xml" and so on, each short enough for a folder entry.
std::string numberedName(const std::string& name, long attempt) {
    if (attempt == 1) {
        return name;
    }
    constexpr std::size_t kLongestExtension = 64;
    SplitName parts = splitExtension(name);
    if (parts.extension.size() > kLongestExtension) {
        parts = {.stem = name, .extension = ""};
    }
    const std::string ending = " " + std::to_string(attempt) + parts.extension;
    return std::string(truncateUTF8(parts.stem, kLongestName - ending.size())) + ending;
}

constexpr std::array<std::string_view, 17> kPackageExtensions{
    ".app",  ".bundle", ".component", ".download",  ".fcpbundle",    ".imovielibrary",
    ".kext", ".mpkg",   ".pkg",       ".plugin",    ".prefpane",     ".qlgenerator",
    ".rtfd", ".saver",  ".workflow",  ".xcodeproj", ".photoslibrary"};

bool hasPackageExtension(const std::string& path) {
    std::string extension = splitExtension(lastComponent(path)).extension;
    std::transform(extension.begin(), extension.end(), extension.begin(), [](char character) {
        return static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    });
    return std::find(kPackageExtensions.begin(), kPackageExtensions.end(), extension) !=
           kPackageExtensions.end();
}

/// The flag is in bytes 8 and 9 of the structure, most significant byte first.
bool hasBundleFlag(const std::string& path) {
    constexpr std::size_t kFlagsOffset = 8;
    constexpr unsigned kHasBundle = 0x20;
    int errorNumber = 0;
    const FileDescriptor folder = openForMetadata(path, true, errorNumber);
    if (!folder) {
        return false;
    }
    const std::string info =
        extendedAttribute(folder.get(), kFinderInfoAttribute, errorNumber).value_or("");
    return info.size() > kFlagsOffset &&
           (static_cast<unsigned char>(info[kFlagsOffset]) & kHasBundle) != 0;
}

}  // namespace

bool recycle(const std::string& sourceFolder, const std::string& destination,
             const std::vector<std::string>& files, ErrorSlot& error) {
    if (!makeTrash(destination, error)) {
        return false;
    }
    return std::all_of(files.begin(), files.end(), [&](const std::string& name) {
        if (!isPlainName(name)) {
            return failFile(error, name, "moved to the Trash", EINVAL);
        }
        return moveInto(
            joinPath(sourceFolder, name), destination,
            [&name](long attempt) { return std::optional(numberedName(name, attempt)); }, error);
    });
}

bool isFilePackage(const std::string& path) {
    return isDirectory(path) && (hasPackageExtension(path) || hasBundleFlag(path));
}

}  // namespace vornic::platform
