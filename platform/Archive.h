#ifndef VORNIC_PLATFORM_ARCHIVE_H
#define VORNIC_PLATFORM_ARCHIVE_H

#include <string>

#include "platform/Error.h"

/// Zip archives. Names are kept byte for byte and marked as UTF-8 where they are; modes,
/// modification times (whole seconds) and links are kept; archives and files may be larger than
/// 4 GB. Any thread.
namespace vornic::platform {

/// Makes an archive of a file, or of a folder with everything in it, sorted by name. What another
/// process adds to a file while it is read is left out.
/// @param destination the archive; nothing may exist there, and nothing is there after a failure
/// @param includeParent whether the folder itself is the archive's top entry; without, the archive
///     holds its contents alone. A file stands at the top in both cases.
bool compressItem(const std::string& source, const std::string& destination, bool includeParent,
                  ErrorSlot& error);

/// Extracts an archive into a new folder, which is made with all folders above it and appears when
/// everything is in it. An archive with an absolute name, a ".." in a name, or a link that leads
/// out of the folder, directly or through other links, is refused; no entry is written through a
/// link. Set-user-id and set-group-id bits are left out.
/// @param destination nothing may exist there, and nothing is there after a failure
bool extractArchive(const std::string& archive, const std::string& destination, ErrorSlot& error);

}  // namespace vornic::platform

#endif
