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

ErrnoOr<Removal> removeWhileIs(const std::string& path, const FileIdentity& identity) {
    return removeWhileIs(path, identity,
                         joinPath(parentFolder(path), temporaryName(lastComponent(path))));
}

ErrnoOr<Removal> removeWhileIs(const std::string& path, const FileIdentity& identity,
                               const std::string& aside) {
    const std::optional<FileIdentity> found = fileIdentity(path);
    if (found && *found != identity) {
        return Removal::another;
    }
    const int renameError = renameWithoutReplacing(path, aside);
    // A network volume may rename and report an error all the same.
    if (renameError != 0 && fileIdentity(aside) != identity) {
        return Errno{renameError};
    }
    const ErrnoOr<FileVersion> taken = versionAt(aside);
    int errorNumber = taken.errorNumber();
    if (taken && taken->identity == identity) {
        if (unlink(aside.c_str()) == 0) {
            return Removal::removed;
        }
        errorNumber = errno;
    }
    giveNameBack(aside, path);
    if (taken && taken->identity != identity) {
        return Removal::another;
    }
    return Errno{errorNumber};
}

}  // namespace vornic::platform
