#ifndef VORNIC_JOB_SAVED_COPY_H
#define VORNIC_JOB_SAVED_COPY_H

#include <string>

#include "platform/ContentDigest.h"
#include "platform/FileDescriptor.h"
#include "platform/FileVersion.h"

namespace vornic {

/// A file that a job has written, held open, with what was written.
struct SavedCopy {
    std::string path;
    platform::FileDescriptor file;
    /// When the last byte and all attributes had been written.
    platform::FileVersion version;
    platform::ContentDigest::Value digest{};

    /// Whether the open file still has the bytes that were written, whatever its name is now.
    [[nodiscard]] bool isIntact() const {
        int ignored = 0;
        const auto now = platform::versionOf(file.get(), ignored);
        return now && now->size == version.size &&
               platform::ContentDigest::ofFile(file.get(), ignored) == digest;
    }
    /// Whether this very file stands at its path.
    [[nodiscard]] bool isAt(const std::string& place) const {
        return platform::fileIdentity(place) == version.identity;
    }
};

}  // namespace vornic

#endif
