#ifndef VORNIC_JOB_SAVED_COPY_H
#define VORNIC_JOB_SAVED_COPY_H

#include <string>

#include "job/Standing.h"
#include "platform/files/ContentDigest.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileVersion.h"

namespace vornic {

/// A file that a job has written, held open, with what was written.
struct SavedCopy {
    std::string path;
    platform::FileDescriptor file;
    /// When the last byte and all attributes had been written.
    platform::FileVersion version;
    platform::ContentDigest::Value digest{};

    /// Whether this very file, with whatever contents, stands at `place`. Needs no memory.
    [[nodiscard]] bool isAt(const std::string& place) const {
        return platform::fileIdentity(place) == version.identity;
    }
    /// What stands at `place`, judged by size and time: two writings of as many bytes within a tick
    /// of the volume's clock look like one. Needs no memory.
    /// @return the errno value when it cannot be determined.
    [[nodiscard]] ErrnoOr<Standing> glanceAt(const std::string& place) const;
    /// The same, judged by all bytes.
    [[nodiscard]] ErrnoOr<Standing> standingAt(const std::string& place) const;
};

}  // namespace vornic

#endif
