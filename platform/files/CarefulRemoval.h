#ifndef VORNIC_PLATFORM_FILES_CAREFUL_REMOVAL_H
#define VORNIC_PLATFORM_FILES_CAREFUL_REMOVAL_H

#include <string>

#include "platform/files/FileSystem.h"

namespace vornic::platform {

/// What came of a removal.
enum class Removal {
    removed,
    /// Something else stands at the path and was left there.
    another,
    failed,
};

/// Removes a file from a path, but only while that very file stands there: it is renamed out of
/// everybody's reach and looked at before it is unlinked. What another program has put in its place
/// is never removed; it gets its name back, or a number added to it when the name was taken anew
/// meanwhile. Any thread.
/// @param errorNumber set to the errno value when it failed (ENOENT: nothing stands there)
[[nodiscard]] Removal removeWhileIs(const std::string& path, const FileIdentity& identity,
                                    int& errorNumber);

/// The same without a need for memory, unless another program's file is found.
/// @param aside a path of the same folder at which nothing stands, and which nobody else knows
[[nodiscard]] Removal removeWhileIs(const std::string& path, const FileIdentity& identity,
                                    const std::string& aside, int& errorNumber);

}  // namespace vornic::platform

#endif
