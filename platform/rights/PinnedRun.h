#ifndef VORNIC_PLATFORM_RIGHTS_PINNED_RUN_H
#define VORNIC_PLATFORM_RIGHTS_PINNED_RUN_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "platform/rights/AuthorizationProtocol.h"
#include "platform/rights/AuthorizationServices.h"
#include "platform/rights/HeldPath.h"
#include "platform/rights/PrivilegedTools.h"

namespace vornic::platform {

/// What the helper keeps its hands off, whoever asks for it, besides what `isProtectedEntry` knows.
/// Each function says of an absolute path that it is forbidden.
struct PathGuards {
    /// To remove it or to move it away.
    std::function<bool(const std::string& path)> takingAway;
    /// To write over it or into it.
    std::function<bool(const std::string& path)> replacing;
    /// Folders that are neither taken away nor replaced as themselves, whatever name leads there.
    std::vector<FileIdentity> folders;
};

/// An entry of a folder, both held open: what it was when it was looked at.
struct PinnedItem {
    HeldPath place;
    /// What stands there, held as a place (O_PATH); empty when nothing does.
    FileDescriptor node;
    FileIdentity identity;
    /// The type of the file.
    mode_t type = 0;
    [[nodiscard]] bool exists() const { return static_cast<bool>(node); }
};

/// A request that has passed every check, bound to the folders and items that were checked.
struct PinnedRun {
    PrivilegedAction action = PrivilegedAction::touch;
    std::string tool;
    /// What the tool is given before paths.
    std::vector<std::string> options;
    /// What is removed, moved, copied or touched.
    PinnedItem source;
    /// Where it is moved or copied to; in a folder that stands at the path given, under its own
    /// name.
    PinnedItem destination;
    /// The folder in which folders are made, and their names from there.
    FileDescriptor folder;
    std::vector<std::string> newFolders;
};

/// Checks a request: its form, that its paths still lead to what its sender saw there, and the
/// guards. Changes nothing.
/// @return success, with `run` filled; a denial; or a failure when a folder cannot be reached.
[[nodiscard]] AuthorizationStatus pinRun(const ToolRequest& request, const PathGuards& guards,
                                         PinnedRun& run);

}  // namespace vornic::platform

#endif
