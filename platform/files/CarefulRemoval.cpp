#include "platform/files/CarefulRemoval.h"

#include <cerrno>
#include <optional>

#include <unistd.h>

#include "base/PathText.h"
#include "platform/files/FileVersion.h"
#include "platform/files/Rename.h"
#include "platform/files/TemporaryName.h"

namespace vornic::platform {
namespace {

/// Gives a file that was renamed aside its name back, or the first numbered one that is free.
void giveNameBack(const std::string& aside, const std::string& path) {
    const SplitName parts = splitExtension(lastComponent(path));
    std::string name = path;
    for (long number = 2; renameWithoutReplacing(aside, name) == EEXIST; ++number) {
        name = joinPath(parentFolder(path),
                        parts.stem + " " + std::to_string(number) + parts.extension);
    }
}

}  // namespace

Removal removeWhileIs(const std::string& path, const FileIdentity& identity, int& errorNumber) {
    return removeWhileIs(path, identity,
                         joinPath(parentFolder(path), temporaryName(lastComponent(path))),
                         errorNumber);
}

Removal removeWhileIs(const std::string& path, const FileIdentity& identity,
                      const std::string& aside, int& errorNumber) {
    const std::optional<FileIdentity> found = fileIdentity(path);
    if (found && *found != identity) {
        return Removal::another;
    }
    errorNumber = renameWithoutReplacing(path, aside);
    // A network volume may rename and report an error all the same.
    if (errorNumber != 0 && fileIdentity(aside) != identity) {
        return Removal::failed;
    }
    const std::optional<FileVersion> taken = versionAt(aside, errorNumber);
    if (taken && taken->identity == identity) {
        if (unlink(aside.c_str()) == 0) {
            return Removal::removed;
        }
        errorNumber = errno;
    }
    giveNameBack(aside, path);
    return taken && taken->identity != identity ? Removal::another : Removal::failed;
}

}  // namespace vornic::platform
