#ifndef VORNIC_JOB_SOURCE_FILE_H
#define VORNIC_JOB_SOURCE_FILE_H

#include <cstdint>
#include <optional>
#include <string>

#include "base/Error.h"
#include "job/Standing.h"
#include "platform/files/ContentDigest.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileVersion.h"

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
    /// What stands at `place` of the same folder. `asExpected` is the same entry, which leads to
    /// the same file with the very bytes that were read; a link that leads to another file counts
    /// as written.
    /// @return the errno value when it cannot be determined.
    [[nodiscard]] ErrnoOr<Standing> standingAt(const std::string& place) const;

  private:
    /// Opens what stands at `path`. @return 0 or the errno value.
    [[nodiscard]] int openFile();
};

}  // namespace vornic

#endif
