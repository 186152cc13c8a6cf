#ifndef VORNIC_PLATFORM_FILES_FILE_SNAPSHOT_H
#define VORNIC_PLATFORM_FILES_FILE_SNAPSHOT_H

#include <optional>
#include <string>

#include "base/Error.h"
#include "platform/files/ContentDigest.h"
#include "platform/files/ContentsWatcher.h"
#include "platform/files/FileVersion.h"

namespace vornic::platform {

/// What a file was when it was read: which version of which file, and what was in it.
struct FileSnapshot {
    FileVersion version;
    ContentDigest::Value digest{};
    friend bool operator==(const FileSnapshot&, const FileSnapshot&) = default;
};

/// What stands at a path itself; a link is not followed. Any thread.
/// @return nothing when that is no file that can be read, or there is too little memory to read it.
[[nodiscard]] std::optional<FileSnapshot> snapshotAt(const std::string& path);

/// `readFile` that also returns which version was read. A file that another program changes or
/// replaces meanwhile gives a snapshot that matches it no more. Any thread.
/// @param snapshot filled unless the reading fails
[[nodiscard]] std::optional<std::string> readFileForChange(const std::string& path,
                                                           FileSnapshot& snapshot,
                                                           ErrorSlot& error);
/// The same. @param watcher is shown what is read
[[nodiscard]] std::optional<std::string> readFileForChange(const std::string& path,
                                                           ContentsWatcher& watcher,
                                                           FileSnapshot& snapshot,
                                                           ErrorSlot& error);

}  // namespace vornic::platform

#endif
