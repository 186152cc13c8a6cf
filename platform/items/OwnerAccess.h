#ifndef VORNIC_PLATFORM_ITEMS_OWNER_ACCESS_H
#define VORNIC_PLATFORM_ITEMS_OWNER_ACCESS_H

#include <functional>

namespace vornic::platform {

/// Runs a change of an open file's metadata and, where the file's mode forbids it (EACCES), once
/// more with a mode that lets the owner read and write, after which the mode is put back.
/// @param change returns 0 or the errno value
/// @return what the last run returned.
[[nodiscard]] int withOwnerAccess(int descriptor, const std::function<int()>& change);

}  // namespace vornic::platform

#endif
