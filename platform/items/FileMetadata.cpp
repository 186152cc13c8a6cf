#include "platform/items/FileMetadata.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <tuple>
#include <vector>

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "base/Error.h"
#include "platform/items/ExtendedAttributes.h"

namespace vornic::platform {
namespace {

/// What of a file's metadata could not be given to another one: errno values, 0 where all was.
struct Losses {
    int owner = 0;
    int attributes = 0;
    int mode = 0;
};

/// @param kept set to true when owner and group are now as in `status`
/// @return 0, or the errno value when that is not for a lack of rights
int copyOwner(const struct stat& status, int to, bool& kept) {
    struct stat own {};
    kept = (fstat(to, &own) == 0 && own.st_uid == status.st_uid && own.st_gid == status.st_gid) ||
           fchown(to, status.st_uid, status.st_gid) == 0;
    if (kept) {
        return 0;
    }
    const int errorNumber = errno;
    // Only the super-user gives files away, but anyone may choose among the groups they are in.
    std::ignore = fchown(to, static_cast<uid_t>(-1), status.st_gid);
    const bool isExpected = errorNumber == EPERM || errorNumber == EINVAL ||
                            errorNumber == EOPNOTSUPP || errorNumber == ENOSYS;
    return isExpected ? 0 : errorNumber;
}

/// A new file takes an access control list over from its folder; where `from` has none the mode
/// alone must count.
void dropInheritedAccessList(int from, int to) {
    const std::string name = "system.posix_acl_access";
    const auto names = extendedAttributeNames(from);
    if (names && std::find(names->begin(), names->end(), name) == names->end()) {
        std::ignore = fremovexattr(to, name.c_str());
    }
}

Losses copyAll(int from, const struct stat& status, int to) {
    Losses losses;
    bool ownerKept = false;
    losses.owner = copyOwner(status, to, ownerKept);
    losses.attributes = copyExtendedAttributes(from, to);
    dropInheritedAccessList(from, to);
    // The mode comes last, because a change of the owner clears some of its bits.
    const mode_t kept = ownerKept ? 07777 : 01777;
    losses.mode = fchmod(to, status.st_mode & kept) == 0 ? 0 : errno;
    return losses;
}

void addLoss(std::string& sentences, const char* what, int errorNumber) {
    if (errorNumber != 0) {
        sentences += sentences.empty() ? "" : " ";
        sentences += posixError(what, errorNumber).description;
    }
}

}  // namespace

int copyOwnerAttributesAndMode(int from, const struct stat& status, int to) {
    return copyAll(from, status, to).mode;
}

int moveOwnerAttributesAndMode(int from, const struct stat& status, int to) {
    if (const auto names = extendedAttributeNames(from); !names) {
        return names.errorNumber();
    }
    const Losses losses = copyAll(from, status, to);
    for (const int errorNumber : {losses.owner, losses.attributes, losses.mode}) {
        if (errorNumber == EIO || errorNumber == ENOMEM) {
            return errorNumber;
        }
    }
    return 0;
}

std::string copyMetadata(int from, const struct stat& status, int to) {
    const Losses losses = copyAll(from, status, to);
    std::string sentences;
    addLoss(sentences, "The owner cannot be kept", losses.owner);
    addLoss(sentences, "The extended attributes cannot be kept", losses.attributes);
    addLoss(sentences, "The mode cannot be kept", losses.mode);
    return sentences;
}

int copyTimes(const struct stat& status, int to) {
    const std::array<struct timespec, 2> times{status.st_atim, status.st_mtim};
    return futimens(to, times.data()) == 0 ? 0 : errno;
}

}  // namespace vornic::platform
