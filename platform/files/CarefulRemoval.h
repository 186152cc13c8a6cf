#ifndef VORNIC_PLATFORM_FILES_CAREFUL_REMOVAL_H
#define VORNIC_PLATFORM_FILES_CAREFUL_REMOVAL_H

#include <string>

#include "base/ErrnoOr.h"
#include "platform/files/FileSystem.h"

namespace vornic::platform {

/// What came of a removal.
enum class Removal {
    removed,
    /// Something else stands at the path and was left there.
    another,
};

/// Removes a file from a path, but only while that very file stands there: it is renamed out of
/// everybody's reach and looked at before it is unlinked. What another program has put in its place
/// is never removed; it gets its name back, or a number added to it when the name was taken anew
/// meanwhile. Any thread.
/// @return the errno value when it failed (ENOENT: nothing stands there).
[[nodiscard]] ErrnoOr<Removal> removeWhileIs(const std::string& path, const FileIdentity& identity);

/// The same without a need for memory, unless another program's file is found.
/// @param aside a path of the same folder at which nothing stands, and which nobody else knows
[[nodiscard]] ErrnoOr<Removal> removeWhileIs(const std::string& path, const FileIdentity& identity,
                                             const std::string& aside);

}  // namespace vornic::platform

#endif
