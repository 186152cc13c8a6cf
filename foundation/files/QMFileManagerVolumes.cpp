#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string_view>
#include <vector>

#include "base/PathText.h"
#include "base/Text.h"
#include "foundation/files/QMFileManager.h"
#include "foundation/log/QMLog.h"
#include "platform/files/FileSystem.h"
#include "platform/volumes/MountTable.h"
#include "platform/volumes/VolumeStatistics.h"

namespace vornic {
namespace {

using platform::MountedVolume;

constexpr std::string_view kVolumes = "/Volumes";

/// "/Volumes/Media" of "/Volumes/Media/a/b"; nothing for a path of fewer components.
QMFileManager::Path volumeRoot(const std::string& path) {
    std::string root;
    std::size_t components = 0;
    for (std::size_t start = 0; start < path.size() && components < 2;) {
        const std::size_t begin = path.find_first_not_of('/', start);
        if (begin == std::string::npos) {
            break;
        }
        start = std::min(path.find('/', begin), path.size());
        root += "/" + path.substr(begin, start - begin);
        ++components;
    }
    return components == 2 ? QMFileManager::Path(root) : QMFileManager::Path();
}

bool isMountedUnlessBelow(std::string_view prefix, const std::string& path) {
    const QMFileManager::Path root =
        path.starts_with(prefix) ? volumeRoot(path) : QMFileManager::Path();
    return !root || platform::fileExists(*root);
}

bool holds(const MountedVolume& volume, std::string_view path) {
    return volume.mountPoint != "/" &&
           (path == volume.mountPoint || path.starts_with(volume.mountPoint + "/"));
}

std::optional<MountedVolume> volumeAt(const std::string& mountPoint) {
    for (const MountedVolume& volume : platform::mountedVolumes()) {
        if (volume.mountPoint == mountPoint) {
            return volume;
        }
    }
    return std::nullopt;
}

std::string deviceIdentifier(const std::string& device) {
    constexpr std::string_view kDevices = "/dev/";
    return device.starts_with(kDevices) ? device.substr(kDevices.size()) : device;
}

}  // namespace

bool QMFileManager::isDriveMountedForPath(const std::string& path) {
    return isMountedUnlessBelow(std::string(kVolumes) + "/", path);
}

bool QMFileManager::isVolumeMountedForPath(const std::string& path) {
    return isMountedUnlessBelow(kVolumes, path);
}

QMFileManager::Path QMFileManager::volumeMountPointForPath(const std::string& path) {
    for (const MountedVolume& volume : platform::mountedVolumes()) {
        if (holds(volume, path)) {
            return volume.mountPoint;
        }
    }
    return path.starts_with(kVolumes) ? Path() : Path("/");
}

std::optional<QMFileManager::Dictionary> QMFileManager::infoForDiskAtMountpoint(
    const std::string& mountPoint) {
    const std::optional<MountedVolume> volume = volumeAt(withoutTrailingSlashes(mountPoint));
    if (!volume) {
        return std::nullopt;
    }
    ErrorSlot error;
    const std::optional<platform::VolumeStatistics> statistics =
        platform::volumeStatistics(volume->mountPoint, std::chrono::seconds(5), error);
    if (error) {
        QMLog::appendLog("Error converting diskutil output: %@", error->localizedDescription());
    }
    if (!statistics) {
        return std::nullopt;
    }
    using Value = platform::PropertyList::Value;
    const std::string& label = statistics->label;
    const std::string name = !label.empty()              ? label
                             : volume->mountPoint == "/" ? "/"
                                                         : lastComponent(volume->mountPoint);
    return Dictionary{{"VolumeName", Value(name)},
                      {"MountPoint", Value(volume->mountPoint)},
                      {"FilesystemType", Value(volume->filesystemType)},
                      {"TotalSize", Value(static_cast<std::int64_t>(statistics->totalBytes))},
                      {"FreeSpace", Value(static_cast<std::int64_t>(statistics->freeBytes))},
                      {"DeviceIdentifier", Value(deviceIdentifier(volume->device))},
                      {"WritableVolume", Value(statistics->isWritable)}};
}

std::optional<std::string> QMFileManager::filesystemForPath(const std::string& path) {
    const Path mountPoint = volumeMountPointForPath(path);
    const std::optional<MountedVolume> volume = mountPoint ? volumeAt(*mountPoint) : std::nullopt;
    return volume ? std::optional(volume->filesystemType) : std::nullopt;
}

bool QMFileManager::isMacFilesystemAtPath(const std::string& path) {
    const std::string type = lowercased(filesystemForPath(path).value_or(""));
    return type == "hfs" || type == "hfs+" || type == "apfs";
}

}  // namespace vornic
