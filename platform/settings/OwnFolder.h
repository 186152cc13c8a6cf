#ifndef VORNIC_PLATFORM_SETTINGS_OWN_FOLDER_H
#define VORNIC_PLATFORM_SETTINGS_OWN_FOLDER_H

#include <string>

#include "base/Error.h"

/// Folders under names that others could have taken before, as in a temporary folder that users
/// share. Any thread.
namespace vornic::platform {

/// True when the user of this process (its effective id) owns what stands at the path. A link
/// belongs to nobody.
[[nodiscard]] bool isOwnItem(const std::string& path);

/// True for a folder that is the user's own in that sense and in which nobody else can put files in
/// this user's way (mode 0700).
[[nodiscard]] bool isPrivateFolder(const std::string& path);

/// Makes a folder for this user alone, with mode 0700, and all folders above it. It must be new:
/// whatever stands at the path, a dangling link too, is a failure and is left alone.
[[nodiscard]] bool createPrivateFolder(const std::string& path, ErrorSlot& error);

}  // namespace vornic::platform

#endif
