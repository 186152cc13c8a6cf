#include "platform/FileMetadata.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "platform/ExtendedAttributes.h"

namespace vornic::platform {
namespace {

/// @return true when owner and group are now as in `status`.
bool copyOwner(const struct stat& status, int to) {
    struct stat own {};
    if (fstat(to, &own) == 0 && own.st_uid == status.st_uid && own.st_gid == status.st_gid) {
        return true;
    }
    if (fchown(to, status.st_uid, status.st_gid) == 0) {
        return true;
    }
    // Only the super-user gives files away, but anyone may choose among the groups they are in.
    static_cast<void>(fchown(to, static_cast<uid_t>(-1), status.st_gid) == 0);
    return false;
}

/// A new file takes an access control list over from its folder; where `from` has none the mode
/// alone must count.
void dropInheritedAccessList(int from, int to) {
    const std::string name = "system.posix_acl_access";
    const std::vector<std::string> names = extendedAttributeNames(from);
    if (std::find(names.begin(), names.end(), name) == names.end()) {
        static_cast<void>(fremovexattr(to, name.c_str()) == 0);
    }
}

}  // namespace

int copyOwnerAttributesAndMode(int from, const struct stat& status, int to) {
    const bool ownerKept = copyOwner(status, to);
    copyExtendedAttributes(from, to);
    dropInheritedAccessList(from, to);
    // The mode comes last, because a change of the owner clears some of its bits.
    const mode_t kept = ownerKept ? 07777 : 01777;
    return fchmod(to, status.st_mode & kept) == 0 ? 0 : errno;
}

int copyTimes(const struct stat& status, int to) {
    const std::array<struct timespec, 2> times{status.st_atim, status.st_mtim};
    return futimens(to, times.data()) == 0 ? 0 : errno;
}

}  // namespace vornic::platform
