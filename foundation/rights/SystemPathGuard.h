#ifndef VORNIC_FOUNDATION_RIGHTS_SYSTEM_PATH_GUARD_H
#define VORNIC_FOUNDATION_RIGHTS_SYSTEM_PATH_GUARD_H

#include <string>

namespace vornic {

/// Whether a destructive operation must keep its hands off a path: it is one of the standard or
/// system folders of `QMLocalPaths` (as itself, not what lies in it), or one of this platform's own
/// that `platform::isProtectedPath` knows, either as given or with the links of its parent folder
/// resolved. Looks at the disk; any thread.
[[nodiscard]] bool isGuardedSystemPath(const std::string& path);

}  // namespace vornic

#endif
