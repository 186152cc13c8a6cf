#ifndef VORNIC_PLATFORM_FILES_FILE_VERSION_H
#define VORNIC_PLATFORM_FILES_FILE_VERSION_H

#include <cstdint>
#include <string>

#include "base/ErrnoOr.h"
#include "platform/files/FileSystem.h"

namespace vornic::platform {

/// A time as a volume keeps it, since 1970-01-01 UTC.
struct FileTime {
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;
    friend bool operator==(const FileTime&, const FileTime&) = default;
};

/// Which version of which file something is.
struct FileVersion {
    FileIdentity identity;
    /// Bytes.
    std::uint64_t size = 0;
    /// When the contents were last written.
    FileTime modified;
    /// When contents, name, mode or attributes were last changed. A rename counts as well, so that
    /// a file which this process has renamed shows another one.
    FileTime changed;
    friend bool operator==(const FileVersion&, const FileVersion&) = default;
};

enum class VersionMatch {
    /// The two cannot be told apart. A volume's clock ticks in milliseconds: contents that were
    /// written twice within one tick, the same number of bytes, are told apart by their digest
    /// alone.
    same,
    /// The same file with the same size, whose times alone differ: it was written, renamed or given
    /// another attribute. Whether the contents are the same is for `ContentDigest` to say.
    timesDiffer,
    /// Another file, or another size.
    different,
};

/// How two versions stand to each other. Any thread.
[[nodiscard]] VersionMatch compareVersions(const FileVersion& one, const FileVersion& another);

/// The version of an open file as it is now.
/// @return the errno value when the system does not say.
[[nodiscard]] ErrnoOr<FileVersion> versionOf(int descriptor);

/// The version of what stands at a path itself; a link is not followed.
/// @return the errno value when there is none (ENOENT: nothing stands there).
[[nodiscard]] ErrnoOr<FileVersion> versionAt(const std::string& path);

}  // namespace vornic::platform

#endif
