#ifndef VORNIC_PLATFORM_FILES_DAMAGED_FILE_H
#define VORNIC_PLATFORM_FILES_DAMAGED_FILE_H

#include <optional>
#include <string>

#include "base/Error.h"

namespace vornic::platform {

/// Copies a property list that cannot be made out, and is about to be written anew, to a free name
/// beside it: "a-damaged.plist" for "a.plist", then "a-damaged-2.plist" and so on. Any thread.
/// @return the copy's path; nothing, with the slot filled, when there is none, and then the file
///     must stay as it is.
[[nodiscard]] std::optional<std::string> keepDamagedList(const std::string& path, ErrorSlot& error);

}  // namespace vornic::platform

#endif
