#ifndef VORNIC_PLATFORM_HELD_PATH_H
#define VORNIC_PLATFORM_HELD_PATH_H

#include <optional>
#include <string>

#include "platform/FileDescriptor.h"

namespace vornic::platform {

/// An entry of a folder that is held open: whatever is renamed or linked anew above it, the folder
/// stays the one that was looked at.
struct HeldPath {
    FileDescriptor folder;
    /// Where the folder lies, links resolved.
    std::string folderPath;
    /// The entry itself, which may be a link, whether or not the path ended in a slash.
    std::string name;

    /// The path of the entry as it was when it was taken hold of.
    [[nodiscard]] std::string path() const;
};

/// Takes hold of the folder of an absolute path's last component. Needs no right but to reach it.
/// @return nothing when it cannot be reached, or the last component is none ("/", ".", "..").
[[nodiscard]] std::optional<HeldPath> holdPath(const std::string& path);

}  // namespace vornic::platform

#endif
