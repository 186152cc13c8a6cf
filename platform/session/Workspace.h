#ifndef VORNIC_PLATFORM_SESSION_WORKSPACE_H
#define VORNIC_PLATFORM_SESSION_WORKSPACE_H

#include <string>
#include <vector>

#include "base/Error.h"

namespace vornic::platform {

/// Moves the named files (last path components) out of `sourceFolder` into the Trash at
/// `destination`, as `Trash` finds or makes it and takes items. A symbolic link is moved as a link.
/// @return true when every file was moved. On failure the file concerned is still in its place,
/// what had been moved before stays moved, and the slot says why.
[[nodiscard]] bool recycle(const std::string& sourceFolder, const std::string& destination,
                           const std::vector<std::string>& files, ErrorSlot& error);

/// Whether a folder (links followed) is shown to users as one file: its name has one of the
/// extensions of bundles and libraries ("app", "fcpbundle" and others, in any case), or its Finder
/// flags say that it has a bundle. Any thread.
[[nodiscard]] bool isFilePackage(const std::string& path);

}  // namespace vornic::platform

#endif
