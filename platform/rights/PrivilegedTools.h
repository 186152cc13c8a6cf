#ifndef VORNIC_PLATFORM_RIGHTS_PRIVILEGED_TOOLS_H
#define VORNIC_PLATFORM_RIGHTS_PRIVILEGED_TOOLS_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vornic::platform {

/// What the few tools that may have root's rights do.
enum class PrivilegedAction { remove, move, copy, makeFolder, touch };

/// A run of one of them: which of its arguments name what.
struct PrivilegedRun {
    PrivilegedAction action = PrivilegedAction::touch;
    /// The first argument that is a path, as all after it are.
    std::size_t firstPath = 0;
    /// What it removes or moves away; nothing for one that only adds or touches.
    std::optional<std::size_t> takenAway;
    /// What it writes over where something stands; nothing for one that replaces nothing.
    std::optional<std::size_t> replaced;
};

/// Checks a tool and its arguments against the list of what may run with root's rights: rm, mv, cp,
/// mkdir and touch, each with its fixed options and absolute paths, so that no path is taken for an
/// option or depends on a working folder.
/// @return nothing for anything else.
[[nodiscard]] std::optional<PrivilegedRun> allowedPrivilegedRun(
    const std::string& tool, const std::vector<std::string>& arguments);

}  // namespace vornic::platform

#endif
