#include "platform/files/FileSnapshot.h"

#include <new>

#include "base/PathText.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"

namespace vornic::platform {

std::optional<FileSnapshot> snapshotAt(const std::string& path) {
    try {
        const ErrnoOr<FileDescriptor> file = openRegularFile(path, false);
        if (!file) {
            return std::nullopt;
        }
        const ErrnoOr<FileVersion> version = versionOf(file->get());
        const ErrnoOr<ContentDigest::Value> digest = ContentDigest::ofFile(file->get());
        return version && digest ? std::optional(FileSnapshot{*version, *digest}) : std::nullopt;
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

namespace {

std::optional<std::string> readWatched(const std::string& path, ContentsWatcher* watcher,
                                       FileSnapshot& snapshot, ErrorSlot& error) {
    // The version comes first: what changes after this look shows later.
    const ErrnoOr<std::string> target = resolveFinalLink(path);
    const ErrnoOr<FileVersion> version = versionAt(target ? *target : path);
    DigestedContents digested(watcher);
    std::optional<std::string> bytes = readFile(path, digested, error);
    if (bytes) {
        snapshot = {version.value().value_or(FileVersion()), digested.digest()};
    }
    return bytes;
}

}  // namespace

std::optional<std::string> readFileForChange(const std::string& path, FileSnapshot& snapshot,
                                             ErrorSlot& error) {
    return readWatched(path, nullptr, snapshot, error);
}

std::optional<std::string> readFileForChange(const std::string& path, ContentsWatcher& watcher,
                                             FileSnapshot& snapshot, ErrorSlot& error) {
    return readWatched(path, &watcher, snapshot, error);
}

}  // namespace vornic::platform
