#ifndef VORNIC_JOB_SOURCE_FILE_H
#define VORNIC_JOB_SOURCE_FILE_H

#include <cstdint>
#include <optional>
#include <string>

#include "platform/ContentDigest.h"
#include "platform/Error.h"
#include "platform/FileDescriptor.h"
#include "platform/FileVersion.h"

namespace vornic {

/// The user's file as a job has read it. Held open, so that its inode number is not given to
/// another file meanwhile.
struct SourceFile {
    std::string path;
    platform::FileDescriptor file;
    /// What stood at the path itself: the file, or a link that led to it.
    platform::FileIdentity entry;
    /// Of the file, when it was opened.
    platform::FileVersion version;
    /// Of the bytes that were read.
    std::optional<platform::ContentDigest::Value> digest;

    /// Opens a regular file, links followed, for reading.
    /// @return nothing, with the slot filled as for a file that cannot be copied.
    [[nodiscard]] static std::optional<SourceFile> open(const std::string& path, ErrorSlot& error);

    /// Whether the same entry, with whatever contents, stands at `place`.
    [[nodiscard]] bool hasEntryAt(const std::string& place) const {
        return platform::fileIdentity(place) == entry;
    }
    /// Whether the same entry stands at `place`, where it may have been moved within its folder,
    /// and leads to the same file with the very bytes that were read. False also when that cannot
    /// be told.
    [[nodiscard]] bool isAt(const std::string& place) const;
};

}  // namespace vornic

#endif
