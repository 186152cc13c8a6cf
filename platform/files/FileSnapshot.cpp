#include "platform/files/FileSnapshot.h"

#include <new>

#include "base/PathText.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"

namespace vornic::platform {

std::optional<FileSnapshot> snapshotAt(const std::string& path) {
    int ignored = 0;
    try {
        const FileDescriptor file = openRegularFile(path, false, ignored);
        const auto version = file ? versionOf(file.get(), ignored) : std::nullopt;
        const auto digest = version ? ContentDigest::ofFile(file.get(), ignored) : std::nullopt;
        return digest ? std::optional(FileSnapshot{*version, *digest}) : std::nullopt;
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

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
