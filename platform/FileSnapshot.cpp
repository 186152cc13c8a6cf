#include "platform/FileSnapshot.h"

#include "platform/PathText.h"

namespace vornic::platform {

std::optional<std::string> readFileForChange(const std::string& path, FileSnapshot& snapshot,
                                             ErrorSlot& error) {
    // The version comes first: what changes after this look shows later.
    int ignored = 0;
    const std::optional<std::string> target = resolveFinalLink(path, ignored);
    const std::optional<FileVersion> version = versionAt(target.value_or(path), ignored);
    std::optional<std::string> bytes = readFile(path, error);
    if (bytes) {
        snapshot = {version.value_or(FileVersion()), ContentDigest::of(*bytes)};
    }
    return bytes;
}

}  // namespace vornic::platform
