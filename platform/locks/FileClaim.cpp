#include "platform/locks/FileClaim.h"

#include <cerrno>

#include <sys/file.h>

namespace vornic::platform {
namespace {

int lockNow(int descriptor, int kind) {
    int result = 0;
    do {
        result = flock(descriptor, kind | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    return result == 0 ? 0 : errno;
}

}  // namespace

ErrnoOr<Claim> claimFile(int descriptor) {
    int result = lockNow(descriptor, LOCK_EX);
    if (result == EBADF) {
        // Network volumes make an exclusive lock of one for writing.
        result = lockNow(descriptor, LOCK_SH);
    }
    if (result == 0) {
        return Claim::held;
    }
    if (result == EWOULDBLOCK) {
        return Claim::busy;
    }
    if (result == ENOSYS || result == EOPNOTSUPP) {
        return Claim::unavailable;
    }
    return Errno{result};
}

}  // namespace vornic::platform
