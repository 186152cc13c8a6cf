#ifndef VORNIC_PLATFORM_ARCHIVES_ARCHIVE_H
#define VORNIC_PLATFORM_ARCHIVES_ARCHIVE_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "base/Error.h"

/// Zip archives. Names are kept byte for byte and marked as UTF-8 where they are; modes,
/// modification times (whole seconds) and links are kept; archives and files may be larger than
/// 4 GB. Any thread.
namespace vornic::platform {

/// Makes an archive of a file, or of a folder with everything in it, sorted by name. What another
/// process adds to a file while it is read is left out.
/// @param destination the archive; nothing may exist there, and nothing is there after a failure
/// @param includeParent whether the folder itself is the archive's top entry; without, the archive
///     holds its contents alone. A file stands at the top in both cases.
[[nodiscard]] bool compressItem(const std::string& source, const std::string& destination,
                                bool includeParent, ErrorSlot& error);

/// How much an archive may make of itself.
struct ArchiveLimits {
    /// Files, folders and links, also folders that have no entry of their own.
    std::uint64_t entries = 500'000;
    /// All contents together, in bytes; or so many times the archive's own size, if that is more.
    std::uint64_t bytes = std::uint64_t{8} << 30U;
    std::uint64_t timesItsSize = 200;
    /// Bytes of a name with its folders, and of what a link says: what the system takes.
    std::size_t textLength = 4095;
    /// Folders above one another.
    std::size_t depth = 256;
    /// Bytes of all names and links together.
    std::size_t allText = std::size_t{64} << 20U;
};

/// Extracts an archive into a new folder, which is made with all folders above it and appears when
/// everything is in it. An archive with an absolute name, a ".." in a name, an entry below a link,
/// or a link that leads out of the folder, directly or through other links, is refused, and so is
/// one that goes beyond the limits (code EFBIG where they are of number or size). No link is
/// followed on the way to an entry. Set-user-id and set-group-id bits are left out.
/// @param destination nothing may exist there, and nothing is there after a failure
[[nodiscard]] bool extractArchive(const std::string& archive, const std::string& destination,
                                  ErrorSlot& error, const ArchiveLimits& limits = {});

}  // namespace vornic::platform

#endif
