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

Claim claimFile(int descriptor, int& errorNumber) {
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
    errorNumber = result;
    return result == ENOSYS || result == EOPNOTSUPP ? Claim::unavailable : Claim::failed;
}

}  // namespace vornic::platform
